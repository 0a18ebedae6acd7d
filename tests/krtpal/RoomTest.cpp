// Calls that fill a buffer of the caller leave the bytes behind its room alone.

#include "bss/module.h"
#include "krtpal/error.h"
#include "krtpal/file.h"
#include "krtpal/guid.h"
#include "krtpal/module.h"
#include "krtpal/path.h"
#include "krtpal/process.h"
#include "krtpal/security.h"
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

/// What a buffer has room for.
struct Room {
    DWORD units; ///< characters, bytes or elements
    int count;   ///< the same
    DWORD bytes;
};

template <typename Element>
struct Writer {
    const char* call;
    void (*write)(Element* to, Room room);
};

#define WRITER(Element, ...) (Writer<Element>{#__VA_ARGS__, [](Element* to, Room room) { __VA_ARGS__; }})

/// Whether the byte behind any room up to `most` elements is touched.
template <typename Element>
void ExpectThatRoomIsKept(const Writer<Element>& writer, DWORD most) {
    constexpr unsigned char sentinel = 0xA5;
    for (DWORD room = 1; room <= most; ++room) {
        std::vector<unsigned char> buffer((most + 100) * sizeof(Element), sentinel);
        writer.write(reinterpret_cast<Element*>(buffer.data()),
                     {room, static_cast<int>(room), room * static_cast<DWORD>(sizeof(Element))});
        ASSERT_EQ(std::count(buffer.begin() + room * sizeof(Element), buffer.end(), sentinel),
                  buffer.size() - room * sizeof(Element))
            << writer.call << " with room for " << room;
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
    const std::wstring folder = std::filesystem::temp_directory_path().wstring();
    static const wchar_t* path = folder.c_str();
    const Writer<wchar_t> writers[] = {
        WRITER(wchar_t, GetUserNameW(to, &room.units)),
        WRITER(wchar_t, GetComputerNameW(to, &room.units)),
        WRITER(wchar_t, GetUserObjectInformationW(GetThreadDesktop(GetCurrentThreadId()), UOI_NAME, to,
                                                  room.bytes, nullptr)),
        WRITER(wchar_t, GetModuleFileNameW(nullptr, to, room.units)),
        WRITER(wchar_t, K32GetModuleFileNameExW(GetCurrentProcess(), nullptr, to, room.units)),
        WRITER(wchar_t, GetShortPathNameW(path, to, room.units)),
        WRITER(wchar_t, LoadStringW(bss::GetBSSHandle(), 1001, to, room.count)),
        WRITER(wchar_t, FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                       ERROR_FILE_NOT_FOUND, 0, to, room.units, nullptr)),
        WRITER(wchar_t, MultiByteToWideChar(CP_UTF8, 0, "twelve bytes", 12, to, room.count)),
        WRITER(wchar_t, StringFromGUID2(GUID{}, to, room.count)),
        WRITER(wchar_t, _wsplitpath_s(L"/folder/name", nullptr, 0, to, room.units, nullptr, 0, nullptr, 0)),
    };
    for (const Writer<wchar_t>& writer : writers) {
        ExpectThatRoomIsKept(writer, 60);
    }
    if (!RunsUnderWine()) { // which does not look at the room
        ExpectThatRoomIsKept<wchar_t>(WRITER(wchar_t, _wcserror_s(to, room.units, ENOENT)), 60);
    }
}

TEST(Room, OfBytesAndArraysIsKept) {
    static const std::wstring module = ModuleFilePath("version_plain").wstring();
    static TOKEN_USER user[8];
    GetUser(user, sizeof(user));
    const Writer<char> writers[] = {
        WRITER(char, strerror_s(to, room.units, ENOENT)),
        WRITER(char, WideCharToMultiByte(CP_UTF8, 0, L"\u20AC\u00FC\u20AC\u20AC", 4, to, room.count, nullptr,
                                         nullptr)),
        WRITER(char, GetUser(to, room.units)),
        WRITER(char, CopySid(room.units, to, user[0].User.Sid)),
        WRITER(char, GetFileVersionInfoW(module.c_str(), 0, room.units, to)),
    };
    for (const Writer<char>& writer : writers) {
        ExpectThatRoomIsKept(writer, 100);
    }
    ExpectThatRoomIsKept<HMODULE>(WRITER(HMODULE, DWORD needed = 0;
                                         K32EnumProcessModules(GetCurrentProcess(), to, room.bytes, &needed)),
                                  20);
}

} // namespace
