#include "bss/exception/WExceptionCatalogue.h"
#include "support/Threads.h"

#include <exception>
#include <gtest/gtest.h>
#include <memory>

BSS_EXCEPTION_CLASS(, WNELaserOff, 20001, L"Laser %1 is off after %2 s.", bss::CRITICAL, long, double)
WNELaserOff::~WNELaserOff() = default;

namespace {

using bss::WNEDataIOError;
using bss::WNEFitFailed;
using bss::WNENoSolution;
using bss::WNEODBCError;
using bss::WNESerializerError;
using bss::WNestedException;

int Length(const WNestedException& head) {
    int links = 0;
    for (const WNestedException* link = &head; link != nullptr; link = link->GetNextException()) {
        ++links;
    }
    return links;
}

/// The promise that a null object answers goes beyond the language, so the sanitizer has to look away.
#if defined(__GNUC__)
__attribute__((no_sanitize("undefined"), noinline))
#endif
bss::eseverity
HighestSeverityOf(const WNestedException* head) {
    return head->GetHighestSeverity();
}

TEST(Chain, ThrowingWithACauseClonesIt) {
    try {
        try {
            throw WNEODBCError(L"locked");
        } catch (const WNestedException& e) {
            throw WNEDataIOError(L"writing", &e);
        }
    } catch (const WNEDataIOError& e) {
        EXPECT_EQ(L"writing", e.GetArgument<0>());
        EXPECT_EQ(L"Data I/O Error: writing\nODBC Error: locked\n", e.AsString(false));
        EXPECT_EQ(L"Data I/O Error: writing\n", e.AsString(true));
        EXPECT_NE(nullptr, dynamic_cast<const WNEODBCError*>(e.GetNextException()));
    }
}

TEST(Chain, LaterFailureIsAppendedBehindAMarker) {
    const WNEODBCError cause(L"locked");
    WNEDataIOError e(L"writing", &cause);
    const WNEODBCError rollbackCause(L"gone");
    const WNESerializerError rollback(L"rollback", &rollbackCause);
    e += rollback;
    EXPECT_EQ(
        L"Data I/O Error: writing\nODBC Error: locked\nname- WNESerializerError\nSerializer Error: rollback\n"
        L"ODBC Error: gone\n",
        e.AsString(false));
    EXPECT_EQ(2, Length(rollback));
    e += e;
    EXPECT_EQ(11, Length(e));
}

TEST(Chain, CopiesAreDeepAndOutliveTheirSource) {
    auto source =
        std::make_unique<WNEDataIOError>(L"writing", std::make_unique<WNEODBCError>(L"locked").get());
    const WNEDataIOError copy(*source);
    WNEDataIOError assigned(L"other");
    assigned = *source;
    source.reset();
    const std::wstring text = L"Data I/O Error: writing\nODBC Error: locked\n";
    EXPECT_EQ(text, copy.AsString(false));
    const WNEDataIOError& same = assigned;
    assigned = same;
    EXPECT_EQ(text, assigned.AsString(false));
    assigned = WNEDataIOError(L"alone");
    EXPECT_EQ(L"Data I/O Error: alone\n", assigned.AsString(false));
}

TEST(Chain, AssignmentFromALinkOfTheSameChain) {
    const WNEODBCError third(L"third");
    const WNEDataIOError second(L"second", &third);
    WNEDataIOError e(L"first", &second);
    const auto* link = dynamic_cast<const WNEDataIOError*>(e.GetNextException());
    ASSERT_NE(nullptr, link);
    e = *link;
    EXPECT_EQ(L"Data I/O Error: second\nODBC Error: third\n", e.AsString(false));
    EXPECT_EQ(L"second", e.GetArgument<0>());
}

/// Has no parameters until they are asked for; its copy is of its own making.
class Bare final : public WNestedException {
public:
    using WNestedException::GetLogParams;
    const bss::WExceptionEventInfo& GetEventInfo() const override { return m_cause.GetEventInfo(); }
    int GetRevision() const override { return 1; }
    WNestedException* clone() const override {
        auto* const copy = new Bare(*this);
        copy->CloneNext(GetNextException());
        return copy;
    }
    void FormatLogParams(bss::WLogParams*& params) const override { m_cause.FormatLogParams(params); }
    WNEFitFailed m_cause{L"bare"};
};

TEST(Chain, LinksWithoutParametersAreLeftOut) {
    Bare bare;
    EXPECT_FALSE(bare.GetLogDataFormatted());
    EXPECT_EQ(L"", bare.AsString(false));
    const WNEODBCError cause(L"locked");
    bare.CloneNext(&cause);
    const WNEDataIOError e(L"writing", &bare);
    EXPECT_EQ(L"Data I/O Error: writing\nODBC Error: locked\n", e.AsString(false));
    EXPECT_EQ(3, Length(e));

    Bare assigned;
    assigned.GetLogParams();
    EXPECT_EQ(L"Fit failed in module bare.\n", assigned.AsString(false));
    assigned = bare;
    EXPECT_FALSE(assigned.HasLogParams());
    EXPECT_EQ(L"ODBC Error: locked\n", assigned.AsString(false));
}

TEST(Chain, HighestSeverityHasAFloor) {
    EXPECT_EQ(bss::MINOR, WNENoSolution().GetHighestSeverity());
    const WNESerializerError major(L"x");
    const WNENoSolution minor(&major);
    EXPECT_EQ(bss::MAJOR, minor.GetHighestSeverity());
    const WNELaserOff critical(2, 0.1);
    EXPECT_EQ(bss::CRITICAL, WNESerializerError(L"x", &critical).GetHighestSeverity());
    EXPECT_EQ(bss::CRITICAL, WNELaserOff(2, 0.1, &major).GetHighestSeverity());
    const WNestedException* volatile none = nullptr;
    EXPECT_EQ(bss::MINOR, HighestSeverityOf(none));
}

TEST(Chain, ClassOfAClientsOwn) {
    const WNELaserOff e(2, 0.5);
    EXPECT_EQ(L"Laser 2 is off after 0.5 s.\n", e.AsString(false));
    EXPECT_EQ(std::wstring(L"WNELaserOff"), e.GetEventInfo().GetName());
}

TEST(Chain, AnyLengthIsCopiedAndDestroyedWithoutRecursion) {
    constexpr int manyLinks = 200000; // a call for each would overflow any thread's stack
    WNEDataIOError head(L"top");
    WNestedException* last = &head;
    const WNENoSolution link;
    for (int i = 0; i < manyLinks; ++i) {
        last->CloneNext(&link);
        last = last->GetNextException();
    }
    const WNEDataIOError copy(head);
    WNEDataIOError assigned(L"other");
    assigned = copy;
    EXPECT_EQ(manyLinks + 1, Length(assigned));
    assigned += copy;
    std::vector<const bss::WLogParams*> list;
    assigned.GetLogParamsList(list);
    EXPECT_EQ(static_cast<std::size_t>(2 * (manyLinks + 1) + 1), list.size());
}

TEST(Chain, OneExceptionIsCopiedByManyThreads) {
    const WNEODBCError cause(L"locked");
    const auto caught = std::make_exception_ptr(WNEDataIOError(L"writing", &cause));
    const std::wstring text = L"Data I/O Error: writing\nODBC Error: locked\n";
    RunInThreads(4, [&](int) {
        for (int i = 0; i < 1000; ++i) {
            try {
                std::rethrow_exception(caught);
            } catch (const WNEDataIOError& e) {
                WNEDataIOError copy(e);
                copy += e;
                ASSERT_EQ(text + L"name- WNEDataIOError\n" + text, copy.AsString(false));
            }
        }
    });
}

TEST(Chain, StripPathKnowsBackslashesAlone) {
    EXPECT_EQ(L"WFile.cpp", WNestedException::StripPath(L"C:\\src\\bss\\WFile.cpp"));
    EXPECT_EQ(L"src/bss/WFile.cpp", WNestedException::StripPath(L"src/bss/WFile.cpp"));
    EXPECT_EQ(L"", WNestedException::StripPath(L"C:\\"));
}

} // namespace
