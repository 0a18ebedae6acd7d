// Calls that fill a buffer of the caller leave the bytes behind its room alone.

#include "bss/module.h"
#include "krtpal/error.h"
#include "krtpal/file.h"
#include "krtpal/guid.h"
#include "krtpal/module.h"
#include "krtpal/path.h"
#include "krtpal/process.h"
#include "krtpal/text.h"
#include "krtpal/user.h"
#include "krtpal/version.h"
#include "support/VersionModules.h"
#include "support/Wine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <vector>

namespace {

/// Fills a buffer that has room for so many characters, bytes or elements.
template <typename Element>
struct Writer {
    const char* name;
    void (*write)(Element* to, DWORD room);
};

/// Whether the byte behind any room up to `most` elements is touched.
template <typename Element>
void ExpectThatRoomIsKept(const Writer<Element>& writer, DWORD most) {
    constexpr unsigned char sentinel = 0xA5;
    for (DWORD room = 1; room <= most; ++room) {
        std::vector<unsigned char> buffer((most + 100) * sizeof(Element), sentinel);
        writer.write(reinterpret_cast<Element*>(buffer.data()), room);
        ASSERT_EQ(std::count(buffer.begin() + room * sizeof(Element), buffer.end(), sentinel),
                  buffer.size() - room * sizeof(Element))
            << writer.name << " with room for " << room;
    }
}

/// The user of this process; `information` may be null.
void GetUser(void* information, DWORD bytes) {
    HANDLE token = nullptr;
    DWORD needed = 0;
    OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token);
    GetTokenInformation(token, TokenUser, information, bytes, &needed);
    CloseHandle(token);
}

TEST(Room, OfWideTextIsKept) {
    const Writer<wchar_t> writers[] = {
        {"GetUserNameW", [](wchar_t* to, DWORD room) { GetUserNameW(to, &room); }},
        {"GetComputerNameW", [](wchar_t* to, DWORD room) { GetComputerNameW(to, &room); }},
        {"GetUserObjectInformationW",
         [](wchar_t* to, DWORD room) {
             GetUserObjectInformationW(GetThreadDesktop(GetCurrentThreadId()), UOI_NAME, to,
                                       room * static_cast<DWORD>(sizeof(wchar_t)), nullptr);
         }},
        {"GetModuleFileNameW", [](wchar_t* to, DWORD room) { GetModuleFileNameW(nullptr, to, room); }},
        {"K32GetModuleFileNameExW",
         [](wchar_t* to, DWORD room) { K32GetModuleFileNameExW(GetCurrentProcess(), nullptr, to, room); }},
        {"GetShortPathNameW",
         [](wchar_t* to, DWORD room) {
             GetShortPathNameW(std::filesystem::temp_directory_path().wstring().c_str(), to, room);
         }},
        {"LoadStringW",
         [](wchar_t* to, DWORD room) { LoadStringW(bss::GetBSSHandle(), 1001, to, static_cast<int>(room)); }},
        {"FormatMessageW",
         [](wchar_t* to, DWORD room) {
             FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                            ERROR_FILE_NOT_FOUND, 0, to, room, nullptr);
         }},
        {"MultiByteToWideChar",
         [](wchar_t* to, DWORD room) {
             MultiByteToWideChar(CP_UTF8, 0, "twelve bytes", 12, to, static_cast<int>(room));
         }},
        {"StringFromGUID2",
         [](wchar_t* to, DWORD room) { StringFromGUID2(GUID{}, to, static_cast<int>(room)); }},
        {"_wsplitpath_s",
         [](wchar_t* to, DWORD room) {
             _wsplitpath_s(L"/folder/name", nullptr, 0, to, room, nullptr, 0, nullptr, 0);
         }},
    };
    for (const Writer<wchar_t>& writer : writers) {
        ExpectThatRoomIsKept(writer, 60);
    }
    if (!RunsUnderWine()) { // which does not look at the room
        ExpectThatRoomIsKept<wchar_t>(
            {"_wcserror_s", [](wchar_t* to, DWORD room) { _wcserror_s(to, room, ENOENT); }}, 60);
    }
}

TEST(Room, OfBytesAndArraysIsKept) {
    const Writer<char> writers[] = {
        {"strerror_s", [](char* to, DWORD room) { strerror_s(to, room, ENOENT); }},
        {"WideCharToMultiByte",
         [](char* to, DWORD room) {
             WideCharToMultiByte(CP_UTF8, 0, L"\u20AC\u00FC\u20AC\u20AC\u20AC", 5, to, static_cast<int>(room),
                                 nullptr, nullptr);
         }},
        {"GetTokenInformation", [](char* to, DWORD room) { GetUser(to, room); }},
        {"CopySid",
         [](char* to, DWORD room) {
             TOKEN_USER user[8];
             GetUser(user, sizeof(user));
             CopySid(room, to, user[0].User.Sid);
         }},
        {"GetFileVersionInfoW",
         [](char* to, DWORD room) {
             GetFileVersionInfoW(ModuleFilePath("version_plain").wstring().c_str(), 0, room, to);
         }},
    };
    for (const Writer<char>& writer : writers) {
        ExpectThatRoomIsKept(writer, 100);
    }
    ExpectThatRoomIsKept<HMODULE>({"K32EnumProcessModules",
                                   [](HMODULE* to, DWORD room) {
                                       DWORD needed = 0;
                                       K32EnumProcessModules(GetCurrentProcess(), to,
                                                             room * static_cast<DWORD>(sizeof(HMODULE)),
                                                             &needed);
                                   }},
                                  20);
}

} // namespace
