#include "support/Rows.h"
#include "support/VersionModules.h"

#include "bss/module.h"
#include "bss/system/WVersionResource.h"
#include "krtpal/common/text.h"

#include <gtest/gtest.h>

#include <ctime>
#include <iomanip>
#include <sstream>

namespace {

using bss::CStdStr;
using bss::WVersionResource;

/// Opens what derived classes may use.
class Resource : public WVersionResource {
public:
    using WVersionResource::GetValueByName;
    using WVersionResource::GetVersionNumber;
    using WVersionResource::ParseVersionString;
    using WVersionResource::WVersionResource;
};

std::wstring Numbers(const WVersionResource::versionnumber& number) {
    return std::to_wstring(number.product) + L" " + std::to_wstring(number.major) + L" " +
           std::to_wstring(number.minor) + L" " + std::to_wstring(number.build);
}

TEST(VersionResource, ReadsEveryFieldOfItsFirstLanguage) {
    const LoadedModule module(ModuleFilePath("version_full"));
    const Resource resource(module.Handle());
    EXPECT_EQ(std::filesystem::path(resource.GetModuleNameLong()).filename().string(),
              std::string("version_full") + MODULE_SUFFIX);
    EXPECT_FALSE(std::wstring(resource.GetModuleNameShort()).empty());
    EXPECT_STREQ(resource.GetModuleVersion(), L"65535.0.7.0");
    EXPECT_STREQ(resource.GetFileVersion(), L"65535.0.7.0");
    EXPECT_STREQ(resource.GetFileDescription(), L"\u00B5-meter \"C:\\x\"");
    EXPECT_STREQ(resource.GetFileOS(), L"Win32 API on Windows NT");
    EXPECT_STREQ(resource.GetFileType(), L"Dynamic link library");
    EXPECT_STREQ(resource.GetFileCreationDate(), L"");
    EXPECT_STREQ(resource.GetFileExecutableName(), L"SYSTEM_TESTS");
    EXPECT_STREQ(resource.GetProductVersion(), L"X 1.2.3.4 (Y)");
    EXPECT_STREQ(resource.GetDisplayProductVersion(), L"X 1.2.3.4 (Y)");
    EXPECT_STREQ(resource.GetProductName(), L"Gr\u00F6\u00DFe");
    EXPECT_STREQ(resource.GetPrivateBuild(), L"X");
    EXPECT_STREQ(resource.GetSpecialBuild(), L"Y");
    EXPECT_STREQ(resource.GetCopyrightInfo(), L"\u00A9 1999\u20132026");
    EXPECT_STREQ(resource.GetCompanyName(), L"A company");
    EXPECT_STREQ(resource.GetKRTFileVer(), L"5.3.2.0");
    EXPECT_STREQ(resource.GetKRTIOVer(), L"5.3.0.9");
    EXPECT_EQ(Numbers(resource.GetFileVersionNumber()), L"65535 0 7 0");
    EXPECT_EQ(Numbers(resource.GetProductVersionNumber()), L"1 2 3 4");
    EXPECT_EQ(Numbers(resource.GetKRTFileVersionNumber()), L"5 3 2 0");
    EXPECT_EQ(Numbers(resource.GetKRTIOVersionNumber()), L"5 3 0 9");

    std::wstring text = L"as it was";
    EXPECT_FALSE(resource.GetValueByName(L"Nothing", text));
    EXPECT_EQ(text, L"as it was");
    WVersionResource::versionnumber number{1, 2, 3, 4};
    EXPECT_FALSE(resource.GetVersionNumber(L"Nothing", number));
    EXPECT_EQ(Numbers(number), L"1 2 3 4");
}

TEST(VersionResource, LeavesOutWhatTheModuleDoesNotSay) {
    const LoadedModule plainModule(ModuleFilePath("version_plain"));
    const WVersionResource plain(plainModule.Handle());
    EXPECT_STREQ(plain.GetProductVersion(), L"1.2.3.4");
    EXPECT_STREQ(plain.GetDisplayProductVersion(), L"1.2.3");
    EXPECT_STREQ(plain.GetProductName(), L"");
    EXPECT_STREQ(plain.GetKRTFileVer(), L"");
    EXPECT_STREQ(plain.GetKRTIOVer(), L"");
    EXPECT_EQ(Numbers(plain.GetKRTFileVersionNumber()), L"0 0 0 0");

    const LoadedModule specialModule(ModuleFilePath("version_special"));
    const WVersionResource special(specialModule.Handle());
    EXPECT_STREQ(special.GetProductVersion(), L"1.2.3.4 (Y)");
    EXPECT_STREQ(special.GetDisplayProductVersion(), L"1.2.3.4 (Y)");
    EXPECT_STREQ(special.GetFileType(), L"Sound driver");
    EXPECT_STREQ(special.GetFileOS(), L"Windows NT");

    const LoadedModule bareModule(ModuleFilePath("version_none"));
    const WVersionResource bare(bareModule.Handle());
    EXPECT_EQ(std::filesystem::path(bare.GetModuleNameLong()).filename().string(),
              std::string("version_none") + MODULE_SUFFIX);
    EXPECT_STRNE(bare.GetModuleNameShort(), L"");
    for (const wchar_t* const text :
         {bare.GetModuleVersion(), bare.GetFileVersion(), bare.GetFileType(), bare.GetFileOS(),
          bare.GetFileExecutableName(), bare.GetProductVersion(), bare.GetDisplayProductVersion()}) {
        EXPECT_STREQ(text, L"");
    }
}

TEST(VersionResource, NamesEveryKindOfFileAndOfSystem) {
    constexpr std::size_t systemAt = 32;
    for (const auto& row : ReadRows("system/version_kinds.tsv")) {
        std::vector<std::uint32_t> numbers; // system, type, subtype
        for (int i = 0; i < 3; ++i) {
            numbers.push_back(static_cast<std::uint32_t>(std::stoul(row[i], nullptr, 0)));
        }
        const TemporaryFile file(WithFixedFields(systemAt, numbers));
        const LoadedModule module(file.Path());
        const WVersionResource resource(module.Handle());
        EXPECT_EQ(krtpal::Utf8FromWide(resource.GetFileType()), row[3]);
        EXPECT_EQ(krtpal::Utf8FromWide(resource.GetFileOS()), row[4]);
    }
}

/// The resource compilers leave the date empty.
TEST(VersionResource, PrintsTheDateOfTheFixedPart) {
    constexpr std::size_t dateAt = 44;
    const auto date = [](const std::vector<std::uint32_t>& halves) { // of a FILETIME, high one first
        const TemporaryFile file(WithFixedFields(dateAt, halves));
        const LoadedModule module(file.Path());
        return std::wstring(WVersionResource(module.Handle()).GetFileCreationDate());
    };
    EXPECT_EQ(date({0x01C3FFBB, 0x3C67D980}), L"03/01/2004  18:30:13");
    EXPECT_EQ(date({0xFFFFFFFF, 0}), L""); // no date
}

TEST(VersionResource, ServesTheLibraryAndTheProgram) {
    const WVersionResource library(bss::GetBSSHandle());
    EXPECT_STREQ(library.GetProductName(), L"krtbss");
    EXPECT_STREQ(library.GetFileType(), L"Dynamic link library");
    EXPECT_STRNE(library.GetFileVersion(), L"0.0.0.0");

    const WVersionResource program(nullptr);
    EXPECT_EQ(std::filesystem::path(program.GetModuleNameLong()).stem().string(), "system_tests");
    EXPECT_STREQ(program.GetFileVersion(), L"");

    const WVersionResource nothing(reinterpret_cast<HINSTANCE>(std::uintptr_t{16}));
    EXPECT_STREQ(nothing.GetModuleNameLong(), L"");
}

TEST(VersionResource, ParsesAtMostFourNumbers) {
    const wchar_t* const rows[][2] = {
        {L"1, 2.3 4,5", L"1 2 3 4"},
        {L" ,.7", L"7 9 9 9"}, // what is not there stays
        {L"", L"9 9 9 9"},
        {L"x1.2y.99999999999.-1", L"0 2 2147483647 4294967295"},
    };
    for (const auto& [text, numbers] : rows) {
        WVersionResource::versionnumber number{9, 9, 9, 9};
        Resource::ParseVersionString(text, number.product, number.major, number.minor, number.build);
        EXPECT_EQ(Numbers(number), numbers) << text;
    }
}

TEST(VersionResource, BuildDateIsAMonthLate) {
    std::tm april{};
    std::istringstream("2004-04-02 03:04:05") >> std::get_time(&april, "%Y-%m-%d %H:%M:%S");
    april.tm_isdst = -1;
    const std::int64_t expected = std::mktime(&april);
    CStdStr<wchar_t> text;
    EXPECT_EQ(WVersionResource::GetBuildDate(L"Mar 02 2004", L"03:04:05", nullptr), expected);
    EXPECT_EQ(WVersionResource::GetBuildDate(L"mARch  2 2004", L"03:04:05", &text), expected);
    EXPECT_EQ(text, L"Apr 02, 2004  03:04:05 AM");
    WVersionResource::GetBuildDate(L"Dec 31 2004", L"23:59:59", &text);
    EXPECT_EQ(text, L"Jan 31, 2005  11:59:59 PM");
    WVersionResource::GetBuildDate(L"Foo 01 2004", L"00:00:00", &text); // January, so February
    EXPECT_EQ(text, L"Feb 01, 2004  12:00:00 AM");

    for (const wchar_t* const date :
         {L"", L"Mar", L"Mar 02", L"Mar two 2004", L"Mar 02 1950", L"Mar 02 9999999999"}) {
        text = L"as it was";
        EXPECT_EQ(WVersionResource::GetBuildDate(date, L"03:04:05", &text), -1) << date;
        EXPECT_EQ(text, L"") << date;
    }
    EXPECT_EQ(WVersionResource::GetBuildDate(L"Mar 02 2004", L"03:04", &text), -1);
    EXPECT_EQ(WVersionResource::GetBuildDate(nullptr, nullptr, &text), -1);
}

} // namespace
