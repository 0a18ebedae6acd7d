// The other instance: exclusion_child NAME KIND says whether it was alone, and stays.

#include "bss/system/WExclusion.h"

#include "krtpal/sync.h"
#include "krtpal/unqualified.h"

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
    if (argc != 3) {
        return 99;
    }
    const std::string narrow = argv[1];
    const std::wstring name(narrow.begin(), narrow.end());
    bss::WExclusion exclusion;
    const bool alone =
        exclusion.SetExclusion(name.c_str(), static_cast<bss::WExclusion::_kind>(std::atoi(argv[2])));
    std::puts(alone ? "alone" : "not alone");
    std::fflush(stdout);
    Sleep(INFINITE);
    return 0;
}
