// Reads any bytes as the file of a module, or, where they begin like no such file, as the version block in
// one. Whatever they are, each answer lies within the block that was read.

#include "krtpal/version.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <elf.h>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace {

/// A module that is nothing but a version note.
std::string ModuleOf(const std::string& block) {
    Elf64_Ehdr header{};
    std::memcpy(header.e_ident, ELFMAG, SELFMAG);
    header.e_ident[EI_CLASS] = ELFCLASS64;
    header.e_ident[EI_DATA] = ELFDATA2LSB;
    header.e_phoff = sizeof(header);
    header.e_phentsize = sizeof(Elf64_Phdr);
    header.e_phnum = 1;
    const char owner[8] = "krtbss";
    Elf64_Nhdr note{7, static_cast<Elf64_Word>(block.size()), 1};
    Elf64_Phdr segment{};
    segment.p_type = PT_NOTE;
    segment.p_offset = sizeof(header) + sizeof(segment);
    segment.p_filesz = sizeof(note) + sizeof(owner) + block.size();
    const auto bytes = [](const auto& part) {
        return std::string(reinterpret_cast<const char*>(&part), sizeof(part));
    };
    return bytes(header) + bytes(segment) + bytes(note) + bytes(owner) + block;
}

/// A file in memory, by its path.
class MemoryFile {
public:
    explicit MemoryFile(const std::string& bytes) : m_descriptor(memfd_create("module", MFD_CLOEXEC)) {
        if (m_descriptor < 0 ||
            write(m_descriptor, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
            std::abort();
        }
    }
    ~MemoryFile() { close(m_descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::wstring Path() const { return L"/proc/self/fd/" + std::to_wstring(m_descriptor); }

private:
    int m_descriptor;
};

unsigned Touch(const std::vector<unsigned char>& block, const wchar_t* name, std::size_t unit) {
    void* value = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(block.data(), name, &value, &length)) {
        return 0;
    }
    const auto* const at = static_cast<const unsigned char*>(value);
    if (at < block.data() || at + length * unit > block.data() + block.size()) {
        std::abort();
    }
    unsigned sum = 0;
    for (std::size_t i = 0; i < length * unit; ++i) {
        sum += at[i];
    }
    return sum;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const bool isFile = bytes.substr(0, 2) == "MZ" || bytes.substr(0, SELFMAG) == ELFMAG;
    const MemoryFile file(isFile ? bytes : ModuleOf(bytes));
    const std::wstring path = file.Path();
    std::vector<unsigned char> block(GetFileVersionInfoSizeW(path.c_str(), nullptr));
    if (block.empty()) {
        return 0;
    }
    if (!GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data())) {
        std::abort();
    }
    constexpr std::array texts = {L"\\StringFileInfo\\040704e4\\ProductName",
                                  L"\\StringFileInfo\\040704e4\\KRTIOVer",
                                  L"\\StringFileInfo\\040c04b0\\ProductVersion"};
    for (const wchar_t* const name : texts) {
        Touch(block, name, sizeof(wchar_t));
    }
    for (const wchar_t* const name :
         {L"\\", L"\\VarFileInfo\\Translation", L"\\StringFileInfo", L"\\StringFileInfo\\040704e4"}) {
        Touch(block, name, 1);
    }
    return 0;
}
