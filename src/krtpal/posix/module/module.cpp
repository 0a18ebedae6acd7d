#include "krtpal/module.h"

#include "krtpal/common/text.h"
#include "krtpal/error.h"
#include "krtpal/posix/io/pathbytes.h"
#include "krtpal/posix/module/modulefile.h"
#include "krtpal/posix/module/modulelist.h"

#include <algorithm>
#include <climits>
#include <cwchar>
#include <dlfcn.h>
#include <link.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace krtpal {

namespace {

// Returns the module that contains an address, or null.
link_map* MapOfAddress(const void* address) {
    Dl_info info{};
    link_map* map = nullptr;
    return dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) != 0 ? map : nullptr;
}

link_map* FirstMap() {
    link_map* map = MapOfAddress(reinterpret_cast<const void*>(&FirstMap));
    while (map != nullptr && map->l_prev != nullptr) {
        map = map->l_prev;
    }
    return map;
}

struct Search {
    const link_map* wanted;
    std::string name;
    bool found;
};

// Call-back of dl_iterate_phdr: runs under the lock of the dynamic linker's list.
int FindInList(dl_phdr_info*, std::size_t, void* argument) {
    auto* const search = static_cast<Search*>(argument);
    for (const link_map* map = FirstMap(); map != nullptr; map = map->l_next) {
        if (map == search->wanted) {
            search->found = true;
            search->name = map->l_name == nullptr ? "" : map->l_name;
            break;
        }
    }
    return 1;
}

// Gets the linker's name of a module, which is empty for the program. Returns false if there is no such
// module.
bool FindModule(HMODULE module, std::string* name) {
    if (module == nullptr) {
        name->clear();
        return true;
    }
    Search search{reinterpret_cast<const link_map*>(module), {}, false};
    dl_iterate_phdr(&FindInList, &search);
    *name = search.name;
    return search.found;
}

std::string ProgramPath() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof(path));
    return length > 0 ? std::string(path, static_cast<std::size_t>(length)) : std::string();
}

// Completes a name, which the linker stores as it was given.
std::string AbsolutePath(const std::string& name) {
    char folder[PATH_MAX];
    if (name.empty() || name[0] == '/' || getcwd(folder, sizeof(folder)) == nullptr) {
        return name;
    }
    return std::string(folder) + "/" + name;
}

// Call-back of dl_iterate_phdr, as above.
int AppendList(dl_phdr_info*, std::size_t, void* argument) {
    auto* const modules = static_cast<std::vector<posix::ListedModule>*>(argument);
    for (const link_map* map = FirstMap(); map != nullptr; map = map->l_next) {
        modules->push_back({reinterpret_cast<HMODULE>(const_cast<link_map*>(map)),
                            map->l_name == nullptr ? std::string() : AbsolutePath(map->l_name)});
    }
    return 1;
}

} // namespace

std::vector<posix::ListedModule> posix::ListModules() {
    std::vector<ListedModule> modules;
    dl_iterate_phdr(&AppendList, &modules);
    if (!modules.empty()) {
        modules.front().file = ProgramPath();
    }
    return modules;
}

BOOL GetModuleHandleExW(DWORD flags, LPCWSTR address, HMODULE* module) {
    if (module == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    *module = nullptr;
    constexpr DWORD kSupported =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if ((flags & ~(kSupported | GET_MODULE_HANDLE_EX_FLAG_PIN)) != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (flags != kSupported) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return FALSE;
    }
    const link_map* const map = address == nullptr ? FirstMap() : MapOfAddress(address);
    if (map == nullptr) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return FALSE;
    }
    *module = reinterpret_cast<HMODULE>(const_cast<link_map*>(map));
    return TRUE;
}

DWORD GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size) {
    std::string name;
    if (!FindModule(module, &name)) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return 0;
    }
    const std::wstring wide = WideFromUtf8(name.empty() ? ProgramPath() : AbsolutePath(name));
    if (path == nullptr || size <= wide.size()) {
        if (path != nullptr && size != 0) {
            std::copy_n(wide.begin(), size - 1, path);
            path[size - 1] = L'\0';
        }
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return path == nullptr ? 0 : size;
    }
    std::copy(wide.begin(), wide.end(), path);
    path[wide.size()] = L'\0';
    return static_cast<DWORD>(wide.size());
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
    std::string file;
    if (!FindModule(module, &file)) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    constexpr std::uintptr_t kLastOrdinal = 0xFFFF;
    if (reinterpret_cast<std::uintptr_t>(name) <= kLastOrdinal) {
        SetLastError(name == nullptr ? ERROR_INVALID_PARAMETER : ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    void* address = nullptr;
    // dlsym needs a handle of dlopen for modules that were loaded at the start of the program.
    if (void* const handle = dlopen(file.empty() ? nullptr : file.c_str(), RTLD_LAZY | RTLD_NOLOAD)) {
        address = dlsym(handle, name);
        // dlsym also searches the libraries that the module needs, whose exports are not its own.
        if (address != nullptr && MapOfAddress(address) != handle) {
            address = nullptr;
        }
        dlclose(handle);
    }
    if (address == nullptr) {
        SetLastError(ERROR_PROC_NOT_FOUND);
    }
    return reinterpret_cast<FARPROC>(address);
}

HMODULE LoadLibraryW(LPCWSTR path) {
    if (path == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const std::string bytes = posix::PathBytes(path);
    void* const handle = bytes.empty() ? nullptr : dlopen(bytes.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const bool isThere = bytes.find('/') != std::string::npos && access(bytes.c_str(), F_OK) == 0;
        SetLastError(isThere ? ERROR_BAD_EXE_FORMAT : ERROR_MOD_NOT_FOUND);
    }
    return reinterpret_cast<HMODULE>(handle);
}

BOOL FreeLibrary(HMODULE module) {
    std::string file;
    if (module == nullptr || !FindModule(module, &file)) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return FALSE;
    }
    return dlclose(module) == 0 ? TRUE : FALSE;
}

int LoadStringW(HINSTANCE module, UINT number, LPWSTR text, int count) {
    if (text == nullptr || count < 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    if (count > 0) {
        *text = L'\0';
    }
    const auto* entry =
        reinterpret_cast<const StringTableEntry*>(GetProcAddress(module, "krtbss_string_table"));
    if (entry == nullptr) {
        if (GetLastError() == ERROR_PROC_NOT_FOUND) {
            SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
        }
        return 0;
    }
    while (entry->text != nullptr && entry->number != number) {
        ++entry;
    }
    if (entry->text == nullptr) {
        SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
        return 0;
    }
    const auto length = static_cast<int>(std::wcslen(entry->text));
    if (count == 0) {
        *reinterpret_cast<LPCWSTR*>(text) = entry->text;
        return length;
    }
    const int copied = std::min(length, count - 1);
    std::copy_n(entry->text, copied, text);
    text[copied] = L'\0';
    return copied;
}

} // namespace krtpal
