#include "bss/exception/WExceptionCatalogue.h"
#include "bss/serial/WVersion.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using bss::WVersion;

/// Puts the default file version back to unset.
class FileVersionScope : WVersion {
public:
    explicit FileVersionScope(const WVersion& version) { SetDefaultFileSerializationVersion(version); }
    ~FileVersionScope() override {
        SetDefaultFileSerializationVersion(0L);
        SetIsValidFileVersion(false);
    }
};

std::vector<int> Numbers(const WVersion& version) {
    return {version.GetProductVersion(), version.GetMajorVersion(), version.GetMinorVersion(),
            version.GetBuildVersion()};
}

std::wstring Texts(const WVersion& version) {
    return std::wstring(version.GetVersionExW()) + L" " + version.GetDisplayVersion();
}

std::wstring TextOrFailure(const WVersion& (*call)()) {
    try {
        return Texts(call());
    } catch (const bss::WNEUnexpectedException& e) {
        return e.AsString(false);
    }
}

TEST(Version, PacksWithoutMasks) {
    struct Case {
        short numbers[4];
        long packed;
    };
    const Case cases[] = {
        {{1, 2, 3, 4}, 16909060},
        {{5, 3, 0, 9}, 84082697},
        {{0, 0, 0, 300}, 300},
        {{0, 0, 1, 44}, 300},
        {{0, 0, 0, -1}, -1},
        {{127, 255, 255, 255}, 0x7FFFFFFF},
        {{128, 0, 0, 0}, -2147483647L - 1},
        {{256, 0, 0, 1}, 1},
        {{1, -1, 0, 0}, -65536},
        {{0, 0x7FFF, 0, 0}, 0x7FFF0000},
    };
    for (const Case& row : cases) {
        const WVersion version(row.numbers[0], row.numbers[1], row.numbers[2], row.numbers[3]);
        EXPECT_EQ(version.GetVersion(), row.packed);
        EXPECT_EQ(static_cast<long>(version), row.packed);
        EXPECT_EQ(WVersion::GetVersion(version), row.packed);
        EXPECT_TRUE(WVersion::IsVersion(row.packed, version));
        EXPECT_FALSE(WVersion::IsVersion(row.packed + 1, version));
    }
    EXPECT_EQ(Texts(WVersion(1, 2, 3, 4)), L"1.2.3.4 1.2.3");
    EXPECT_EQ(Texts(WVersion(-1, 300, 0, 4)), L"-1.300.0.4 -1.300.0");
}

TEST(Version, UnpacksBytesAndKeepsStaleTextsWhereMeant) {
    const WVersion version(-1L);
    EXPECT_EQ(Numbers(version), (std::vector<int>{255, 255, 255, 255}));
    EXPECT_EQ(Texts(version), L"255.255.255.255 255.255.255");
    WVersion assigned(1, 2, 3, 4);
    assigned = 84082697L;
    EXPECT_EQ(Numbers(assigned), (std::vector<int>{5, 3, 0, 9}));
    EXPECT_EQ(Texts(assigned), L"0.0.0.0 0.0.0");
    EXPECT_EQ(Texts(WVersion::GetVersion(16909060L)), L"0.0.0.0 0.0.0");
    assigned = WVersion(1, 2, 3, 4);
    EXPECT_EQ(Texts(assigned), L"1.2.3.4 1.2.3");
}

TEST(Version, TextIsReadByCommas) {
    struct Case {
        const wchar_t* text;
        std::vector<int> numbers;
    };
    const Case cases[] = {
        {L"1,2,3,4", {1, 2, 3, 4}},
        {L",,1,,2,3,4,5", {1, 2, 3, 4}},
        {L"", {0, 0, 0, 0}},
        {L",,,", {0, 0, 0, 0}},
        {L"1.2.3.4", {1, 0, 0, 0}},
        {L"7,8", {7, 8, 0, 0}},
        {L" \t-3, +4,5x,x6", {-3, 4, 5, 0}},
        {L"65536,65537,32768,-32769", {0, 1, -32768, 32767}},
        {L"99999999999999999999,-99999999999999999999,0,0", {-1, 0, 0, 0}},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(Numbers(WVersion(std::wstring(row.text))), row.numbers)
            << testing::PrintToString(std::wstring(row.text));
    }
    EXPECT_EQ(Texts(WVersion(std::wstring(L"5,3,0,9"))), L"5.3.0.9 5.3.0");
}

TEST(Version, ZerosBecomeTheDefaultFileVersion) {
    EXPECT_FALSE(WVersion::GetIsValidFileVersion());
    EXPECT_EQ(Texts(WVersion()), L"0.0.0.0 0.0.0");
    EXPECT_EQ(TextOrFailure(&WVersion::DefaultFileSerializationVersion),
              L"description- KRT File Serialization not set\n");
    const FileVersionScope scope(WVersion(3, 1, 0, 0));
    EXPECT_EQ(WVersion::DefaultFileSerializationVersion().GetVersion(), WVersion::GetVersion(3, 1, 0, 0));
    EXPECT_EQ(Texts(WVersion()), L"3.1.0.0 3.1.0");
    EXPECT_EQ(Texts(WVersion(0, 0, 0, 0)), L"3.1.0.0 3.1.0");
    EXPECT_EQ(Texts(WVersion(256, 0, 0, 0)), L"3.1.0.0 3.1.0"); // packs to zero too
    EXPECT_EQ(Texts(WVersion(std::wstring(L"0,0,0,0"))), L"3.1.0.0 3.1.0");
    EXPECT_EQ(Texts(WVersion(0L)), L"0.0.0.0 0.0.0");
    EXPECT_EQ(Texts(WVersion(84082697L)), L"5.3.0.9 5.3.0");
    EXPECT_EQ(Texts(WVersion::GetVersion(84082697L)), L"3.1.0.0 3.1.0"); // of the zeros that it goes through
    WVersion assigned(1, 2, 3, 4);
    assigned = 0L;
    EXPECT_EQ(Numbers(assigned), (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(Texts(assigned), L"3.1.0.0 3.1.0");
}

TEST(Version, OtherDefaultsFailUntilSet) {
    EXPECT_FALSE(WVersion::IsDefaultSliceSerializationSet() || WVersion::IsDefaultVorinReportVersionSet());
    EXPECT_EQ(TextOrFailure(&WVersion::DefaultSliceSerializationVersion),
              L"description- KRT ISI I/O Serialization not set\n");
    EXPECT_EQ(TextOrFailure(&WVersion::DefaultReportableVorinVersion),
              L"description- KRT Reportable Version not set\n");
    WVersion::SetDefaultSliceSerializationVersion(WVersion(2, 2, 2, 2));
    EXPECT_FALSE(WVersion::IsDefaultVorinReportVersionSet());
    WVersion::SetDefaultReportableVorinVersion(WVersion(3, 3, 3, 3));
    EXPECT_TRUE(WVersion::IsDefaultSliceSerializationSet() && WVersion::IsDefaultVorinReportVersionSet());
    EXPECT_EQ(TextOrFailure(&WVersion::DefaultSliceSerializationVersion), L"2.2.2.2 2.2.2");
    EXPECT_EQ(TextOrFailure(&WVersion::DefaultReportableVorinVersion), L"3.3.3.3 3.3.3");
}

TEST(Version, SettingTheDefaultReplacesTheSaveAsList) {
    const FileVersionScope scope(WVersion(3, 1, 0, 0));
    const std::pair<std::wstring, long> filter(L"Runs (*.run)", 83886080);
    EXPECT_EQ(WVersion::AddSaveAsFileFilter(filter), 1U);
    EXPECT_EQ(WVersion::AddSaveAsFileFilter(filter), 2U);
    WVersion::SetDefaultFileSerializationVersion(WVersion::DefaultFileSerializationVersion());
    EXPECT_EQ(WVersion::GetSaveAsFileFilters(), std::vector(2, filter)); // the holder of the list itself
    WVersion::SetDefaultFileSerializationVersion(WVersion(3, 2, 0, 0));
    EXPECT_TRUE(WVersion::GetSaveAsFileFilters().empty());
    WVersion::AddSaveAsFileFilter(filter);
    WVersion::RemoveAllSaveAsFileFilters();
    EXPECT_TRUE(WVersion::GetSaveAsFileFilters().empty());
}

} // namespace
