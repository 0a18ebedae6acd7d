#include "bss/system/WExclusion.h"

#include "krtpal/kernel/Support.h"
#include "support/ChildProcess.h"
#include "support/Wine.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

class Names : public bss::WExclusion {
public:
    std::wstring Name(const wchar_t* name, int kind) {
        return CreateExclusionName(name, static_cast<_kind>(kind));
    }
};

TEST(Exclusion, TellsAboutAnotherInstanceInEveryScope) {
    const std::wstring name = OwnName(L"exclusion");
    const std::string narrow(name.begin(), name.end());
    for (const auto kind : {bss::WExclusion::Machine, bss::WExclusion::Desktop, bss::WExclusion::Logon,
                            bss::WExclusion::User}) {
        bss::WExclusion exclusion;
        {
            ChildProcess child(EXCLUSION_CHILD, {narrow, std::to_string(kind)});
            ASSERT_EQ(child.ReadLine(), "alone") << kind;
            EXPECT_FALSE(exclusion.SetExclusion(name.c_str(), kind)) << kind;
            exclusion.ReleaseExclusion();
            // It ends with the process, however that ends.
            child.Kill();
            child.Wait();
        }
        EXPECT_TRUE(exclusion.SetExclusion(name.c_str(), kind)) << kind;
        ChildProcess second(EXCLUSION_CHILD, {narrow, std::to_string(kind)});
        EXPECT_EQ(second.ReadLine(), "not alone") << kind;
    }
}

TEST(Exclusion, ScopesHaveNamesOfTheirOwn) {
    Names names;
    EXPECT_EQ(names.Name(L"x", 0), L"Global\\x");
    EXPECT_EQ(names.Name(L"x", 17), L"Global\\x");
    const std::wstring desktop = names.Name(L"x", 1);
    EXPECT_EQ(desktop.substr(0, 8), L"Local\\x-");
    EXPECT_GT(desktop.size(), 8U);
    const std::wstring logon = names.Name(L"x", 2);
    ASSERT_EQ(logon.size(), 8U + 16U);
    EXPECT_EQ(logon.substr(0, 8), L"Local\\x-");
    EXPECT_EQ(logon.find_first_not_of(L"0123456789abcdef", 8), std::wstring::npos);
    EXPECT_EQ(logon, names.Name(L"x", 2));
    const std::wstring user = names.Name(L"x", 3);
    EXPECT_EQ(user.substr(0, 2), L"x-");
    EXPECT_GT(user.rfind(L'-'), 2U); // machine and user
    EXPECT_LT(user.rfind(L'-') + 1, user.size());
    // Numbers in place of a pointer are strings of the module: it has none, or not that one.
    EXPECT_EQ(names.Name(reinterpret_cast<const wchar_t*>(static_cast<std::uintptr_t>(0xFFF1)), 0),
              L"Global\\");
    EXPECT_EQ(names.Name(nullptr, 0), L"Global\\");
}

TEST(Exclusion, GivesUpTheFormerWhenSetOrAssignedAnew) {
    const std::wstring name = OwnName(L"exclusion");
    const std::wstring second = name + L"2";
    const auto isFree = [](const std::wstring& text) {
        return bss::WExclusion().SetExclusion(text.c_str(), bss::WExclusion::User);
    };
    bss::WExclusion exclusion;
    EXPECT_TRUE(exclusion.SetExclusion(name.c_str(), bss::WExclusion::User));
    EXPECT_TRUE(exclusion.SetExclusion(name.c_str(), bss::WExclusion::User));
    EXPECT_FALSE(isFree(name));
    EXPECT_TRUE(exclusion.SetExclusion(second.c_str(), bss::WExclusion::User));
    EXPECT_TRUE(isFree(name));
    bss::WExclusion other;
    EXPECT_TRUE(other.SetExclusion(name.c_str(), bss::WExclusion::User));
    const bss::WExclusion& same = other;
    other = same; // keeps it
    EXPECT_FALSE(isFree(name));
    other = exclusion;
    EXPECT_TRUE(isFree(name));
    exclusion.ReleaseExclusion();
    EXPECT_FALSE(isFree(second));
    EXPECT_FALSE(other.SetExclusion(L"a\\b", bss::WExclusion::Machine)); // can't be a name
    EXPECT_TRUE(isFree(second));
}

TEST(Exclusion, CopiesHoldItTooAndMovesHandItOver) {
    const std::wstring name = OwnName(L"exclusion");
    const auto isHeld = [&] { return !bss::WExclusion().SetExclusion(name.c_str(), bss::WExclusion::Logon); };
    bss::WExclusion second;
    {
        bss::WExclusion first;
        EXPECT_TRUE(first.SetExclusion(name.c_str(), bss::WExclusion::Logon));
        const bss::WExclusion third(first);
        first.ReleaseExclusion();
        EXPECT_TRUE(isHeld());
        second = third;
    }
    EXPECT_TRUE(isHeld());
    bss::WExclusion fourth(std::move(second));
    EXPECT_TRUE(isHeld());
    bss::WExclusion fifth;
    fifth = std::move(fourth);
    EXPECT_TRUE(isHeld());
    fifth.ReleaseExclusion();
    EXPECT_FALSE(isHeld());
}

} // namespace
