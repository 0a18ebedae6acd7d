#include "bss/system/WGuid.h"

#include <gtest/gtest.h>

namespace {

TEST(GuidText, GroupEndsAtTheCharactersBesideTheDigits) {
    for (const wchar_t* const beside : {L"/", L":", L"@", L"G", L"`", L"g"}) {
        const std::wstring text = L"1" + std::wstring(beside) + L"2-09af-09AF-0-0";
        EXPECT_EQ(bss::WGuid::GetGuid(text.c_str()).GetAsText(), L"{00000001-09AF-09AF-0000-000000000000}")
            << testing::PrintToString(text);
    }
}

} // namespace
