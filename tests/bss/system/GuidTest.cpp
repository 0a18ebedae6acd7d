#include "bss/system/WGuid.h"
#include "bss/system/WIDDispenser.h"
#include "krtpal/common/text.h"
#include "support/Rows.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <string>
#include <vector>

namespace {

using bss::WGuid;

constexpr GUID kSample = {0x01234567, 0x89AB, 0xCDEF, {0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10}};

TEST(Guid, TextBothWays) {
    const std::wstring text = L"{01234567-89AB-CDEF-FEDC-BA9876543210}";
    EXPECT_EQ(WGuid::GetAsText(kSample), text);
    std::wstring filled = L"before";
    WGuid::GetAsText(kSample, filled);
    EXPECT_EQ(filled, text);
    EXPECT_TRUE(WGuid(text.c_str()) == WGuid(kSample));
    EXPECT_TRUE(WGuid(L"01234567-89ab-cdef-fedc-ba9876543210") == WGuid(kSample));
    WGuid guid(GUID{});
    guid.SetGuid(text.c_str());
    EXPECT_EQ(guid.GetAsText(), text);
    EXPECT_EQ(WGuid::GetGuid(text.c_str()).GetAsText(), text);
    wchar_t buffer[39];
    EXPECT_EQ(StringFromGUID2(kSample, buffer, 38), 0);
    EXPECT_EQ(StringFromGUID2(kSample, buffer, 39), 39);
}

TEST(Guid, HostileTextGivesWhatItsGroupsHold) {
    for (const auto& row : ReadRows("system/guid_texts.tsv")) {
        const std::wstring text = krtpal::WideFromUtf8(row[0]);
        EXPECT_EQ(krtpal::Utf8FromWide(WGuid::GetGuid(text.c_str()).GetAsText()), row[1]) << row[0];
    }
    const std::wstring huge(100'000, L'f');
    EXPECT_EQ(WGuid(huge.c_str()).GetAsText(), L"{FFFFFFFF-0000-0000-0000-000000000000}");
}

TEST(Guid, FreshOnesAreUnique) {
    std::set<std::wstring> texts;
    std::vector<GUID> several(3, kSample);
    WGuid::GetNextGuids(1000, several);
    ASSERT_EQ(several.size(), 1000U);
    for (const GUID& guid : several) {
        texts.insert(WGuid::GetAsText(guid));
        EXPECT_EQ(guid.Data3 >> 12, 4); // random
        EXPECT_EQ(guid.Data4[0] >> 6, 2);
    }
    texts.insert(WGuid::GetAsText(WGuid::GetNext()));
    texts.insert(WGuid::GetAsText(WGuid::GetNextGuid()));
    texts.insert(WGuid(static_cast<const wchar_t*>(nullptr)).GetAsText());
    texts.insert(WGuid(static_cast<const WGuid*>(nullptr)).GetAsText());
    EXPECT_EQ(texts.size(), 1004U);
    const WGuid sample(kSample);
    EXPECT_TRUE(WGuid(&sample) == sample);
    WGuid assigned(GUID{});
    assigned = kSample;
    EXPECT_TRUE(assigned == sample);
    EXPECT_FALSE(assigned != sample);
    EXPECT_EQ(static_cast<GUID>(assigned), kSample);
}

TEST(Guid, OrdersCompareFieldsWithoutSign) {
    // Ascending
    const wchar_t* const texts[] = {
        L"{00000000-0000-0000-0000-000000000000}", L"{00000000-0000-0000-0000-000000000001}",
        L"{00000000-0000-0000-0000-0000000000FF}", L"{00000000-0000-0000-0000-7F0000000000}",
        L"{00000000-0000-0000-0000-800000000000}", L"{00000000-0000-0000-8000-000000000000}",
        L"{00000000-0000-0001-0000-000000000000}", L"{00000000-0000-8000-0000-000000000000}",
        L"{00000000-0001-0000-0000-000000000000}", L"{00000000-FFFF-0000-0000-000000000000}",
        L"{00000001-0000-0000-0000-000000000000}", L"{7FFFFFFF-0000-0000-0000-000000000000}",
        L"{80000000-0000-0000-0000-000000000000}", L"{FFFFFFFF-0000-0000-0000-000000000000}",
    };
    const bss::GuidLessThan less;
    for (std::size_t i = 0; i < std::size(texts); ++i) {
        for (std::size_t j = 0; j < std::size(texts); ++j) {
            const WGuid a(texts[i]);
            const WGuid b(texts[j]);
            EXPECT_EQ(a < b, i < j) << i << ' ' << j;
            EXPECT_EQ(a > b, i > j) << i << ' ' << j;
            EXPECT_EQ(less(a, b), i < j) << i << ' ' << j; // the system's own order on Windows
        }
    }
    RPC_STATUS status = -1;
    GUID zeros{};
    EXPECT_EQ(UuidCompare(nullptr, &zeros, &status), 0);
    EXPECT_EQ(status, RPC_S_OK);
}

TEST(IDDispenser, GivesEachNumberOnce) {
    bss::WIDDispenser ids(0);
    EXPECT_EQ(ids.GetCurrent(), 0);
    EXPECT_EQ(ids.GetNewID(), 1);
    EXPECT_EQ(ids.GetCurrent(), 1);
    EXPECT_EQ(ids.GetNext(), 2);
    ids.SetCurrent(-5);
    EXPECT_EQ(ids.GetNext(), -4);
    const bss::WIDDispenser copy(ids);
    EXPECT_EQ(copy.GetCurrentID(), -4);

    bss::WIDDispenser shared(0);
    constexpr int each = 500'000; // long enough that threads meet on a busy machine
    std::vector<std::atomic<int>> taken(4 * each + 1);
    RunInThreads(4, [&](int) {
        for (int i = 0; i < each; ++i) {
            ++taken[static_cast<std::size_t>(shared.GetNewID())];
        }
    });
    EXPECT_EQ(std::count(taken.begin() + 1, taken.end(), 1), 4 * each);
    EXPECT_EQ(shared.GetCurrent(), 4 * each);
}

} // namespace
