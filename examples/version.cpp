// Reads the version resources of this program, which examples/CMakeLists.txt gives it, and of the library,
// and compares versions as packed numbers.

#include "bss/module.h"
#include "bss/serial/WVersion.h"
#include "bss/system/WVersionResource.h"

#include <cstdio>

namespace {

void Print(const char* what, const wchar_t* text) {
    std::printf("%-14s %ls\n", what, *text == 0 ? L"(none)" : text);
}

// Two programs understand each other's files if they have the same file version but for the last number.
bool IsSameFormat(const bss::WVersion& a, const bss::WVersion& b) {
    return a.GetProductVersion() == b.GetProductVersion() && a.GetMajorVersion() == b.GetMajorVersion() &&
           a.GetMinorVersion() == b.GetMinorVersion();
}

} // namespace

int main() {
    const bss::WVersionResource program(nullptr); // null: the program itself
    Print("product", program.GetProductName());
    Print("description", program.GetFileDescription());
    Print("module", program.GetModuleVersion());
    Print("product is", program.GetDisplayProductVersion());
    Print("file format", program.GetKRTFileVer());
    Print("company", program.GetCompanyName());
    Print("type", program.GetFileType());

    const bss::WVersionResource library(bss::GetBSSHandle());
    Print("library", library.GetProductName());

    const bss::WVersionResource::versionnumber file = program.GetKRTFileVersionNumber();
    const bss::WVersion format(static_cast<short>(file.product), static_cast<short>(file.major),
                               static_cast<short>(file.minor), static_cast<short>(file.build));
    const bss::WVersion older(5, 3, 0, 9);
    std::printf("packed         %ld, %s than 5.3.0.9 with %ld\n", static_cast<long>(format.GetVersion()),
                format.GetVersion() > older.GetVersion() ? "later" : "earlier",
                static_cast<long>(older.GetVersion()));
    std::printf("same format as 5.3.2.7: %s\n",
                IsSameFormat(format, bss::WVersion(5, 3, 2, 7)) ? "yes" : "no");
}
