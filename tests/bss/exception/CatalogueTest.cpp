// Every class of the catalogue: its row in the list of descriptors, and its arguments in the text.

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/exception/WExceptionEventLog.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace {

using bss::MAJOR;
using bss::MINOR;
using bss::WExceptionEventInfo;
using bss::WExceptionEventLog;
using bss::WNestedException;

struct Row {
    long code;
    std::wstring display; ///< the log's event column
    std::wstring message;
    bss::eseverity severity;
    std::function<WNestedException*()> make;
    std::wstring text; ///< what `make` gives with its arguments filled in
};

template <class Event, class... Arguments>
std::function<WNestedException*()> New(Arguments... arguments) {
    return [=]() -> WNestedException* { return new Event(arguments...); };
}

const std::wstring a = L"first";
const std::wstring b = L"sec\u00f6nd";

// clang-format off
const Row rows[] = {
    {10, L"0.10 WNEWhileHandling", L"name- %1", MINOR, New<bss::WNEWhileHandling>(a), L"name- first"},
    {11, L"0.11 WNEAssertFailed", L"expr- %1 : File- %2 : Line- %3", MINOR, New<bss::WNEAssertFailed>(a, b, 7L),
     L"expr- first : File- sec\u00f6nd : Line- 7"},
    {12, L"0.12 WNEAssertFailed1", L"expr- %1 : File- %2 : Line- %3 : value- %4", MINOR,
     New<bss::WNEAssertFailed1>(a, b, 7L, -8L), L"expr- first : File- sec\u00f6nd : Line- 7 : value- -8"},
    {13, L"0.13 WNEUnexpectedFailure", L"expr- %1 : File- %2 : Line- %3", MINOR,
     New<bss::WNEUnexpectedFailure>(a, b, 7L), L"expr- first : File- sec\u00f6nd : Line- 7"},
    {14, L"0.14 WNEUnexpectedException", L"description- %1", MINOR, New<bss::WNEUnexpectedException>(a),
     L"description- first"},
    {15, L"0.15 WNEInvalidExceptionData", L"data- %1 : offset- %2", MINOR, New<bss::WNEInvalidExceptionData>(a, 14L),
     L"data- first : offset- 14"},
    {7006, L"1.2910 WNEODBCTypeNotSupported", L"ODBC data type not supported: %1", MAJOR,
     New<bss::WNEODBCTypeNotSupported>(a), L"ODBC data type not supported: first"},
    {7007, L"1.2911 WNEODBCError", L"ODBC Error: %1", MAJOR, New<bss::WNEODBCError>(a), L"ODBC Error: first"},
    {7010, L"1.2914 WNECompressionFile", L"File access error: %1", MAJOR, New<bss::WNECompressionFile>(a),
     L"File access error: first"},
    {7020, L"1.2924 WNESocketException", L"Socket Error: %1", MAJOR, New<bss::WNESocketException>(10061L),
     L"Socket Error: 10061"},
    {10000, L"2.1808 EH_IPCFailure1", L"Msg- %1 : File- %2 : Line- %3", MINOR, New<bss::EH_IPCFailure1>(a, b, 7L),
     L"Msg- first : File- sec\u00f6nd : Line- 7"},
    {10001, L"2.1809 EH_IPCFailure2", L"Msg- %1 : Value- %2 : File- %3 : Line- %4", MINOR,
     New<bss::EH_IPCFailure2>(a, 5L, b, 7L), L"Msg- first : Value- 5 : File- sec\u00f6nd : Line- 7"},
    {10002, L"2.1810 EH_IPCImpFailure", L"Msg- %1 : Value- %2 : File- %3 : Line- %4", MINOR,
     New<bss::EH_IPCImpFailure>(a, 5L, b, 7L), L"Msg- first : Value- 5 : File- sec\u00f6nd : Line- 7"},
    {12000, L"2.3808 WNESerializerError", L"Serializer Error: %1", MAJOR, New<bss::WNESerializerError>(a),
     L"Serializer Error: first"},
    {12001, L"2.3809 WNEDataIOError", L"Data I/O Error: %1", MAJOR, New<bss::WNEDataIOError>(a),
     L"Data I/O Error: first"},
    {12010, L"2.3818 WNEIndexOutOfRange", L"Index %1 out of range.", MINOR, New<bss::WNEIndexOutOfRange>(-1L),
     L"Index -1 out of range."},
    {12021, L"2.3829 WNERegistryOpenFAILED", L"FAILED to open registry entry %1", MINOR,
     New<bss::WNERegistryOpenFAILED>(a), L"FAILED to open registry entry first"},
    {12023, L"2.3831 WNECOMMethod", L"COM interface failure: %1\n\n%2", MINOR, New<bss::WNECOMMethod>(a, b),
     L"COM interface failure: first\r\n\r\nsec\u00f6nd"},
    {12033, L"2.3841 WNEEndOfString", L"End of string reached. The string parsing could not be continued.", MINOR,
     New<bss::WNEEndOfString>(), L"End of string reached. The string parsing could not be continued."},
    {12040, L"2.3848 WNESystemConfiguration", L"description- %1", MAJOR, New<bss::WNESystemConfiguration>(a),
     L"description- first"},
    {16000, L"3.3712 WNELoadLibrary", L"Loading of the library named %1 failed.", MINOR, New<bss::WNELoadLibrary>(a),
     L"Loading of the library named first failed."},
    {16001, L"3.3713 WNEMemoryError", L"Memory allocation error in module %1.", MINOR, New<bss::WNEMemoryError>(a),
     L"Memory allocation error in module first."},
    {16002, L"3.3714 WNEFitFailed", L"Fit failed in module %1.", MINOR, New<bss::WNEFitFailed>(a),
     L"Fit failed in module first."},
    {16003, L"3.3715 WNESingularMatrix", L"Singular Matrix", MINOR, New<bss::WNESingularMatrix>(), L"Singular Matrix"},
    {16004, L"3.3716 WNENoSolution", L"No solution to equation.", MINOR, New<bss::WNENoSolution>(),
     L"No solution to equation."},
    {16005, L"3.3717 WNEDivideByZero", L"Attempt to divide by zero.", MINOR, New<bss::WNEDivideByZero>(),
     L"Attempt to divide by zero."},
};
// clang-format on

/// Taken before any exception is constructed in this program.
const WExceptionEventInfo::ThrowFunc throwFuncAtLoad = [] {
    for (const WExceptionEventInfo* info : WExceptionEventInfo::GetEventInfoList()) {
        if (info->GetId() == 16004) {
            return info->GetThrowFunc();
        }
    }
    return WExceptionEventInfo::ThrowFunc{};
}();

std::wstring ClassName(const Row& row) {
    return row.display.substr(row.display.find(L' ') + 1);
}

TEST(Catalogue, ListHoldsEachEventOnceFromLoadOn) {
    const auto list = WExceptionEventInfo::GetEventInfoList();
    EXPECT_EQ(std::size(rows), 26u);
    for (const Row& row : rows) {
        const auto matches = std::count_if(list.begin(), list.end(), [&row](const WExceptionEventInfo* info) {
            return info->GetId() == row.code && info->GetName() == ClassName(row) &&
                   info->GetMsg() == row.message && info->GetSeverity() == row.severity &&
                   info->GetModule() == nullptr && info->GetThrowFunc() != nullptr;
        });
        EXPECT_EQ(1, matches) << row.code;
    }
    const auto ours = std::count_if(list.begin(), list.end(), [](const WExceptionEventInfo* info) {
        return info->GetId() < 20000; // the tests' own events lie above
    });
    EXPECT_EQ(26, ours);
}

TEST(Catalogue, EachClassTellsItsRowAndItsArguments) {
    for (const Row& row : rows) {
        const std::unique_ptr<WNestedException> e(row.make());
        SCOPED_TRACE(row.code);
        EXPECT_EQ(row.code, e->GetEventInfo().GetId());
        EXPECT_EQ(1, e->GetRevision());
        EXPECT_TRUE(e->GetLogDataFormatted());
        EXPECT_EQ(std::max(MINOR, row.severity), e->GetHighestSeverity());
        EXPECT_EQ(row.text + L"\n", e->AsString(false));
        std::wstring column = row.display;
        column.resize(std::max<std::size_t>(30, column.size()), L' ');
        EXPECT_EQ(column + L": " + row.text,
                  WExceptionEventLog::FormatEventMessage(*e->GetLogParameters(), false, nullptr, nullptr,
                                                         true, false));
        const std::unique_ptr<WNestedException> copy(e->clone());
        EXPECT_EQ(typeid(*e), typeid(*copy)) << typeid(*copy).name();
        EXPECT_EQ(e->AsString(false), copy->AsString(false));
    }
}

TEST(Catalogue, EachClassIsThrownAgainFromText) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.code);
        const std::unique_ptr<WNestedException> e(row.make());
        std::wstring record = std::to_wstring(row.code) + L'\0' + ClassName(row) + L'\0' + L"any" + L'\0' +
                              WExceptionEventInfo::GetSeverity(row.severity) + L'\0';
        for (int i = 0; i < 8; ++i) {
            const wchar_t* argument = e->GetLogParameters()->GetFormatArg(i);
            record += std::wstring(argument == nullptr ? L"" : argument) + L'\0';
        }
        bss::WNestedExceptionData data(record.data());
        EXPECT_EQ(record.size(), static_cast<std::size_t>(data.m_nCount));
        bss::WNEODBCError cause(L"cause");
        try {
            WExceptionEventInfo::ThrowFromList(data, &cause);
            FAIL() << "nothing was thrown";
        } catch (const WNestedException& thrown) {
            EXPECT_EQ(typeid(*e), typeid(thrown)) << typeid(thrown).name();
            EXPECT_EQ(row.text + L"\nODBC Error: cause\n", thrown.AsString(false));
        }
    }
}

TEST(Catalogue, ThrowFromListThrowsNothingUnlessCodeNameAndSeverityMatch) {
    const std::wstring fields[][3] = {
        {L"16002", L"WNEFitFailedX", L"MINOR   "},
        {L"16003", L"WNEFitFailed", L"MINOR   "},
        {L"16002", L"WNEFitFailed", L"MAJOR   "},
        {L"16002", L"WNEFitFailed", L"MINOR"},
        {L"", L"", L""},
    };
    for (const auto& field : fields) {
        std::wstring record =
            field[0] + L'\0' + field[1] + L'\0' + L"any" + L'\0' + field[2] + L'\0' + std::wstring(8, L'\0');
        bss::WNestedExceptionData data(record.data());
        EXPECT_NO_THROW(WExceptionEventInfo::ThrowFromList(data, nullptr));
    }
    bss::WNestedExceptionData empty(nullptr);
    EXPECT_EQ(0, empty.m_nCount);
    EXPECT_NO_THROW(WExceptionEventInfo::ThrowFromList(empty, nullptr));
}

TEST(Catalogue, DescriptorsOfOneCodeSeverityAndNameShareAnEntry) {
    static const wchar_t name[] = L"CatalogueTestEvent";
    const auto count = [] { return WExceptionEventInfo::GetEventInfoList().size(); };
    const std::size_t before = count();
    static const WExceptionEventInfo first(30001, name, L"one", nullptr, MINOR);
    EXPECT_EQ(before + 1, count());
    static const WExceptionEventInfo again(30001, L"CatalogueTestEvent", L"two", nullptr, MINOR);
    EXPECT_EQ(before + 1, count());
    const WExceptionEventInfo copy(first);
    EXPECT_EQ(before + 1, count());
    static const WExceptionEventInfo otherSeverity(30001, name, L"one", nullptr, bss::CRITICAL);
    static const WExceptionEventInfo otherName(30001, L"Other", L"one", nullptr, MINOR);
    static const WExceptionEventInfo otherCode(30002, name, L"one", nullptr, MINOR);
    EXPECT_EQ(before + 4, count());
}

TEST(Catalogue, ConstructionLeavesTheDescriptorAsItIs) {
    // Each constructor used to store its module's own address of the throw function: threads raced, and the
    // address outlived the module.
    const bss::WNENoSolution e;
    const auto* info = &e.GetEventInfo();
    for (const WExceptionEventInfo* listed : WExceptionEventInfo::GetEventInfoList()) {
        if (listed->GetId() == info->GetId()) {
            EXPECT_EQ(listed->GetThrowFunc(), throwFuncAtLoad);
        }
    }
}

TEST(Catalogue, SeverityTextsAreEightCharacters) {
    const std::wstring texts[] = {L"ADVISORY", L"MINOR   ", L"MAJOR   ", L"CRITICAL", L"????????"};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(texts[i], WExceptionEventInfo::GetSeverity(static_cast<bss::eseverity>(i)));
        EXPECT_EQ(i, WExceptionEventInfo::GetSeverity(texts[i].c_str()));
    }
    EXPECT_EQ(L"????????", std::wstring(WExceptionEventInfo::GetSeverity(static_cast<bss::eseverity>(-1))));
    EXPECT_EQ(bss::UNKNOWN_SEVERITY, WExceptionEventInfo::GetSeverity(L"MINOR"));
    EXPECT_EQ(bss::UNKNOWN_SEVERITY, WExceptionEventInfo::GetSeverity(static_cast<const wchar_t*>(nullptr)));
}

} // namespace
