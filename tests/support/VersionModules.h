// The modules that the build makes for these tests, their bytes, and changed copies of them.

#ifndef TESTS_SUPPORT_VERSIONMODULES_H
#define TESTS_SUPPORT_VERSIONMODULES_H

#include "krtpal/module.h"
#include "krtpal/process.h"
#include "krtpal/sync.h"
#include "krtpal/text.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

inline std::filesystem::path ModuleFilePath(const std::string& name) {
    return std::filesystem::path(MODULE_FOLDER) / (name + MODULE_SUFFIX);
}

/// The PE files of a module that were made beside it: where a resource compiler was there, and not on
/// Windows.
inline std::vector<std::filesystem::path> PeFiles([[maybe_unused]] const std::string& name) {
    std::vector<std::filesystem::path> files;
#ifdef PE_FOLDER
    for (const char* const triple : {"x86_64-w64-mingw32", "i686-w64-mingw32"}) {
        const auto file = std::filesystem::path(PE_FOLDER) / triple / (name + ".dll");
        if (std::filesystem::exists(file)) {
            files.push_back(file);
        }
    }
#endif
    return files;
}

inline std::string ReadBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("can't read " + path.string());
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Where the version block of a module begins in its bytes: at the header in front of its first key.
inline std::size_t FindBlock(const std::string& bytes) {
    constexpr char16_t key[] = u"VS_VERSION_INFO";
    const std::size_t at =
        bytes.find(std::string(reinterpret_cast<const char*>(key), sizeof(key) - sizeof(char16_t)));
    if (at == std::string::npos) {
        throw std::runtime_error("the module has no version block");
    }
    return at - 6;
}

/// The bytes of version_plain with other 32-bit fields of the fixed part, from the byte `at` on.
inline std::string WithFixedFields(std::size_t at, const std::vector<std::uint32_t>& fields) {
    constexpr std::size_t fixedPart = 40; // behind the header, the key and its padding
    std::string bytes = ReadBytes(ModuleFilePath("version_plain"));
    std::memcpy(&bytes[FindBlock(bytes) + fixedPart + at], fields.data(), fields.size() * 4);
    return bytes;
}

/// The module that holds an address; throws std::runtime_error if there is none.
inline HMODULE ModuleOf(const void* address) {
    constexpr DWORD flags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE module = nullptr;
    if (!GetModuleHandleExW(flags, static_cast<LPCWSTR>(address), &module)) {
        throw std::runtime_error("no module holds the address");
    }
    return module;
}

/// A file that is there as long as the object.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& bytes) {
        static int number = 0;
        m_path = std::filesystem::temp_directory_path() /
                 ("krtbss-version-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++number) +
                  MODULE_SUFFIX);
        std::ofstream(m_path, std::ios::binary) << bytes;
    }
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// A module that is loaded as long as the object.
class LoadedModule {
public:
    explicit LoadedModule(const std::filesystem::path& path)
        : m_handle(LoadLibraryW(path.wstring().c_str())) {
        if (m_handle == nullptr) {
            throw std::runtime_error("can't load " + path.string());
        }
    }
    ~LoadedModule() { FreeLibrary(m_handle); }
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    HMODULE Handle() const { return m_handle; }

private:
    HMODULE m_handle;
};

#endif
