#include "krtpal/path.h"
#include "krtpal/error.h"
#include "krtpal/text.h"
#include "support/Expect.h"

#include <cerrno>
#include <string>

namespace {

struct Parts {
    wchar_t folder[_MAX_DIR];
    wchar_t name[_MAX_FNAME];
    wchar_t extension[_MAX_EXT];
};

int Split(const wchar_t* path, Parts* parts) {
    return _wsplitpath_s(path, nullptr, 0, parts->folder, _MAX_DIR, parts->name, _MAX_FNAME, parts->extension,
                         _MAX_EXT);
}

TEST(SplitPath, PartsAreThoseOfTheLastSlashAndPoint) {
    const wchar_t* const rows[][4] = {
        {L"/opt/suite/Control.exe", L"/opt/suite/", L"Control", L".exe"},
        {L"a.b/c", L"a.b/", L"c", L""},
        {L"libx.so.1", L"", L"libx.so", L".1"},
        {L".profile", L"", L"", L".profile"},
        {L"folder/", L"folder/", L"", L""},
        {L"", L"", L"", L""},
    };
    for (const auto& [path, folder, name, extension] : rows) {
        Parts parts{};
        EXPECT_EQ(Split(path, &parts), 0) << path;
        EXPECT_STREQ(parts.folder, folder) << path;
        EXPECT_STREQ(parts.name, name) << path;
        EXPECT_STREQ(parts.extension, extension) << path;
    }
    Parts parts{L"f", L"n", L"e"};
    EXPECT_EQ(Split((L"x/" + std::wstring(_MAX_FNAME, L'n')).c_str(), &parts), ERANGE);
    EXPECT_STREQ(parts.folder, L"");
    EXPECT_STREQ(parts.name, L"");
}

TEST(ShortPath, IsThatOfAFileThatExists) {
    wchar_t path[MAX_PATH] = {};
    EXPECT_FAILS(GetShortPathNameW(L"there-is-no-such-file", path, MAX_PATH), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(GetShortPathNameW(L".", path, MAX_PATH), 1U);
    EXPECT_STREQ(path, L".");
    EXPECT_EQ(GetShortPathNameW(L".", path, 1), 2U); // with the NUL
}

TEST(UpperCase, CharactersOfAllScriptsWhateverTheLocale) {
    std::wstring text = L"az09\u00E4\u03C9\u0436\u00DF";
    EXPECT_EQ(CharUpperBuffW(text.data(), static_cast<DWORD>(text.size())), text.size());
    EXPECT_EQ(text, L"AZ09\u00C4\u03A9\u0416\u00DF");
}

} // namespace
