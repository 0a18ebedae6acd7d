// Every class of the catalogue: its row in the list of descriptors, and its arguments in the text.

#include "bss/exception/WExceptionCatalogue.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>

namespace {

using bss::MAJOR;
using bss::MINOR;
using bss::WExceptionEventInfo;
using bss::WLogParams;
using bss::WNestedException;

struct Row {
    long code;
    std::wstring name;
    bss::eseverity severity;
    std::function<WNestedException*()> make;
    std::wstring text; ///< what `make` gives with its arguments filled in
};

/// All numbers of a row differ, and so do its texts.
template <class Event, class... Arguments>
Row Of(long code, const wchar_t* name, bss::eseverity severity, const wchar_t* text, Arguments... arguments) {
    return {code, name, severity, [=]() -> WNestedException* { return new Event(arguments...); }, text};
}

const std::wstring a = L"first";
const std::wstring b = L"sec\u00f6nd";

#define ROW(Class, code, ...) Of<bss::Class>(code, L"" #Class, __VA_ARGS__)
const Row rows[] = {
    ROW(WNEWhileHandling, 10, MINOR, L"name- first", a),
    ROW(WNEAssertFailed, 11, MINOR, L"expr- first : File- sec\u00f6nd : Line- 7", a, b, 7L),
    ROW(WNEAssertFailed1, 12, MINOR, L"expr- first : File- sec\u00f6nd : Line- 7 : value- -8", a, b, 7L, -8L),
    ROW(WNEUnexpectedFailure, 13, MINOR, L"expr- first : File- sec\u00f6nd : Line- 7", a, b, 7L),
    ROW(WNEUnexpectedException, 14, MINOR, L"description- first", a),
    ROW(WNEInvalidExceptionData, 15, MINOR, L"data- first : offset- 14", a, 14L),
    ROW(WNEODBCTypeNotSupported, 7006, MAJOR, L"ODBC data type not supported: first", a),
    ROW(WNEODBCError, 7007, MAJOR, L"ODBC Error: first", a),
    ROW(WNECompressionFile, 7010, MAJOR, L"File access error: first", a),
    ROW(WNESocketException, 7020, MAJOR, L"Socket Error: 10061", 10061L),
    ROW(EH_IPCFailure1, 10000, MINOR, L"Msg- first : File- sec\u00f6nd : Line- 7", a, b, 7L),
    ROW(EH_IPCFailure2, 10001, MINOR, L"Msg- first : Value- 5 : File- sec\u00f6nd : Line- 7", a, 5L, b, 7L),
    ROW(EH_IPCImpFailure, 10002, MINOR, L"Msg- first : Value- 5 : File- sec\u00f6nd : Line- 7", a, 5L, b, 7L),
    ROW(WNESerializerError, 12000, MAJOR, L"Serializer Error: first", a),
    ROW(WNEDataIOError, 12001, MAJOR, L"Data I/O Error: first", a),
    ROW(WNEIndexOutOfRange, 12010, MINOR, L"Index -1 out of range.", -1L),
    ROW(WNERegistryOpenFAILED, 12021, MINOR, L"FAILED to open registry entry first", a),
    ROW(WNECOMMethod, 12023, MINOR, L"COM interface failure: first\r\n\r\nsec\u00f6nd", a, b),
    ROW(WNEEndOfString, 12033, MINOR, L"End of string reached. The string parsing could not be continued."),
    ROW(WNESystemConfiguration, 12040, MAJOR, L"description- first", a),
    ROW(WNELoadLibrary, 16000, MINOR, L"Loading of the library named first failed.", a),
    ROW(WNEMemoryError, 16001, MINOR, L"Memory allocation error in module first.", a),
    ROW(WNEFitFailed, 16002, MINOR, L"Fit failed in module first.", a),
    ROW(WNESingularMatrix, 16003, MINOR, L"Singular Matrix"),
    ROW(WNENoSolution, 16004, MINOR, L"No solution to equation."),
    ROW(WNEDivideByZero, 16005, MINOR, L"Attempt to divide by zero."),
};
#undef ROW

/// By code; taken before any exception is constructed in this program.
const auto throwFuncsAtLoad = [] {
    std::map<long, WExceptionEventInfo::ThrowFunc> functions;
    for (const WExceptionEventInfo* info : WExceptionEventInfo::GetEventInfoList()) {
        functions[info->GetId()] = info->GetThrowFunc();
    }
    return functions;
}();

TEST(Catalogue, ListHoldsEachEventOnceFromLoadOn) {
    std::multimap<long, const WExceptionEventInfo*> ours;
    for (const WExceptionEventInfo* info : WExceptionEventInfo::GetEventInfoList()) {
        if (info->GetId() < 20000) { // the tests' own events lie above
            ours.emplace(info->GetId(), info);
        }
    }
    EXPECT_EQ(std::size(rows), 26u);
    EXPECT_EQ(ours.size(), 26u);
    for (const Row& row : rows) {
        ASSERT_EQ(ours.count(row.code), 1u) << row.code;
        const WExceptionEventInfo& info = *ours.find(row.code)->second;
        EXPECT_EQ(info.GetName(), row.name);
        EXPECT_EQ(info.GetSeverity(), row.severity);
        EXPECT_EQ(info.GetModule(), nullptr);
        // Each constructor used to store its module's own address of the function: threads raced, and the
        // address outlived the module.
        const std::unique_ptr<WNestedException> made(row.make());
        EXPECT_NE(info.GetThrowFunc(), nullptr);
        EXPECT_EQ(info.GetThrowFunc(), throwFuncsAtLoad.at(row.code));
    }
}

std::wstring RecordOf(long code, const std::wstring& name, const std::wstring& severity,
                      const WLogParams& params) {
    std::wstring record = std::to_wstring(code) + L'\0' + name + L'\0' + L"any" + L'\0' + severity + L'\0';
    for (int i = 0; i < 8; ++i) {
        const wchar_t* const argument = params.GetFormatArg(i);
        record += std::wstring(argument == nullptr ? L"" : argument) + L'\0';
    }
    return record;
}

TEST(Catalogue, EachClassTellsItsRowAndItsArgumentsAndIsThrownAgainFromText) {
    for (const Row& row : rows) {
        const std::unique_ptr<WNestedException> e(row.make());
        SCOPED_TRACE(row.code);
        EXPECT_EQ(row.code, e->GetEventInfo().GetId());
        EXPECT_EQ(1, e->GetRevision());
        EXPECT_TRUE(e->GetLogDataFormatted());
        EXPECT_EQ(row.severity, e->GetHighestSeverity());
        EXPECT_EQ(row.text + L"\n", e->AsString(false));
        const std::unique_ptr<WNestedException> copy(e->clone());
        EXPECT_EQ(typeid(*e), typeid(*copy));
        EXPECT_EQ(e->AsString(false), copy->AsString(false));

        std::wstring record = RecordOf(row.code, row.name, WExceptionEventInfo::GetSeverity(row.severity),
                                       *e->GetLogParameters());
        bss::WNestedExceptionData data(record.data());
        EXPECT_EQ(record.size(), static_cast<std::size_t>(data.m_nCount));
        bss::WNEODBCError cause(L"cause");
        try {
            WExceptionEventInfo::ThrowFromList(data, &cause);
            FAIL() << "nothing was thrown";
        } catch (const WNestedException& thrown) {
            EXPECT_EQ(typeid(*e), typeid(thrown));
            EXPECT_EQ(row.text + L"\nODBC Error: cause\n", thrown.AsString(false));
        }
    }
}

TEST(Catalogue, ThrowFromListThrowsNothingUnlessCodeNameAndSeverityMatch) {
    std::wstring records[] = {RecordOf(16002, L"WNEFitFailedX", L"MINOR   ", {}),
                              RecordOf(16003, L"WNEFitFailed", L"MINOR   ", {}),
                              RecordOf(16002, L"WNEFitFailed", L"MAJOR   ", {}),
                              RecordOf(16002, L"WNEFitFailed", L"MINOR", {}), std::wstring(12, L'\0')};
    for (std::wstring& record : records) {
        bss::WNestedExceptionData data(record.data());
        EXPECT_NO_THROW(WExceptionEventInfo::ThrowFromList(data, nullptr));
    }
    bss::WNestedExceptionData empty(nullptr);
    EXPECT_EQ(0, empty.m_nCount);
    EXPECT_NO_THROW(WExceptionEventInfo::ThrowFromList(empty, nullptr));
}

TEST(Catalogue, DescriptorsOfOneCodeSeverityAndNameShareAnEntry) {
    const auto count = [] { return WExceptionEventInfo::GetEventInfoList().size(); };
    const std::size_t before = count();
    static const std::wstring sameName = L"CatalogueTestEvent";
    static const WExceptionEventInfo first(30001, L"CatalogueTestEvent", L"one", nullptr, MINOR);
    static const WExceptionEventInfo again(30001, sameName.c_str(), L"two", nullptr, MINOR);
    const WExceptionEventInfo copy(first);
    EXPECT_EQ(before + 1, count());
    static const WExceptionEventInfo otherSeverity(30001, sameName.c_str(), L"one", nullptr, bss::CRITICAL);
    static const WExceptionEventInfo otherName(30001, L"Other", L"one", nullptr, MINOR);
    static const WExceptionEventInfo otherCode(30002, sameName.c_str(), L"one", nullptr, MINOR);
    EXPECT_EQ(before + 4, count());
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
