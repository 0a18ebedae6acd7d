#include "bss/exception/WExceptionCatalogue.h"
#include "bss/exception/WFileEventLog.h"
#include "support/ChildProcess.h"

#include <algorithm>
#include <deque>
#include <gtest/gtest.h>
#include <limits>
#include <sstream>
#include <stdexcept>

namespace {

using bss::WExceptionEventInfo;
using bss::WExceptionEventLog;
using bss::WFileEventLog;
using bss::WLogParams;

std::wstring Formatted(const wchar_t* message, std::initializer_list<const wchar_t*> arguments) {
    static std::deque<WExceptionEventInfo> infos; // descriptors stay in the list
    WLogParams params;
    params.SetEventInfo(&infos.emplace_back(30100, L"EventLogTestEvent", message, nullptr, bss::MINOR));
    int i = 0;
    for (const wchar_t* argument : arguments) {
        params.SetFormatArg(i++, argument);
    }
    return WExceptionEventLog::FormatEventMessage(params, false, nullptr, nullptr, false, false);
}

/// The texts of the values, with blanks behind them
template <class... Values>
std::wstring ArgumentTexts(Values... values) {
    std::wstring texts;
    const auto append = [&texts](const auto& value) {
        WLogParams params;
        params.FormatEventArgument(3, value);
        const wchar_t* const text = params.GetFormatArg(3);
        texts += std::wstring(text == nullptr ? L"(null)" : text) + L' ';
    };
    (append(values), ...);
    return texts;
}

TEST(EventLog, WritesHeaderAndALinePerLink) {
    std::wostringstream stream;
    WFileEventLog log(stream, L"Scanner");
    const bss::WNEODBCError cause(L"locked");
    const bss::WNEWhileHandling marker(L"x", &cause);
    const std::wstring first = L"******** MINOR    LocalHost::Scanner  ********\n"
                               L"0.10 WNEWhileHandling         : name- x\n";
    marker.Log(log);
    marker.LogThis(log);
    EXPECT_EQ(first + L"1.2911 WNEODBCError           : ODBC Error: locked\n" + first, stream.str());
    stream.str(L"");
    EXPECT_FALSE(log.Log({}));
    EXPECT_EQ(L"Empty LogParams list\n", stream.str());
    EXPECT_TRUE(log.LogAdvisoryMessage(L"anything"));
}

/// A disk that is full at first; counts how often it is flushed.
class Disk : public std::wstringbuf {
public:
    bool isFull = true;
    int flushes = 0;

protected:
    std::streamsize xsputn(const wchar_t* text, std::streamsize count) override {
        return isFull ? throw std::runtime_error("disk full") : std::wstringbuf::xsputn(text, count);
    }
    int sync() override {
        ++flushes;
        return 0;
    }
};

TEST(EventLog, FailedLineIsThrownOnWishAndTheNextOneIsWritten) {
    Disk disk;
    std::wostream stream(&disk);
    WFileEventLog silent(stream, L"Scanner");
    stream.exceptions(std::ios::badbit);
    WFileEventLog throwing(stream, L"Scanner");
    const bss::WNEODBCError cause(L"locked");
    const bss::WNENoSolution e(&cause);
    EXPECT_NO_THROW(e.Log(silent));
    EXPECT_THROW(e.Log(throwing), std::runtime_error);
    disk.isFull = false;
    for (WFileEventLog* const log : {&silent, &throwing}) {
        disk.str(L"");
        disk.flushes = 0;
        e.Log(*log);
        EXPECT_EQ(3, std::ranges::count(disk.str(), L'\n'));
        EXPECT_EQ(2, disk.flushes); // once a link
    }
}

TEST(EventLog, ColumnLongerThanItsWidthIsNotCut) {
    static const WExceptionEventInfo info(30101, L"EventOfAVeryLongNameThatFillsTheColumn", L"text", nullptr,
                                          bss::CRITICAL);
    WLogParams params;
    params.SetEventInfo(&info);
    EXPECT_EQ(L"******** CRITICAL m::a  ********\r\n7.1429 EventOfAVeryLongNameThatFillsTheColumn: text",
              WExceptionEventLog::FormatEventMessage(params, true, L"m", L"a", true, true));
    EXPECT_EQ(L"******** CRITICAL ::  ********\n",
              WExceptionEventLog::GetHeader(info, nullptr, nullptr, false));
}

TEST(EventLog, TemplateInserts) {
    EXPECT_EQ(L"a-b-", Formatted(L"%1-%2-%3", {L"a", L"b"}));
    EXPECT_EQ(L"%1 %% x", Formatted(L"%1 %2", {L"%1 %%", L"x"}));
    EXPECT_EQ(L"87654321", Formatted(L"%8%7%6%5%4%3%2%1", {L"1", L"2", L"3", L"4", L"5", L"6", L"7", L"8"}));
    EXPECT_EQ(std::wstring(70000, L'x'), Formatted(L"%1%1", {std::wstring(35000, L'x').c_str()}));
    EXPECT_EQ(L"UNABLE TO FORMAT MESSAGE", Formatted(L"", {}));
}

TEST(EventLog, ArgumentTexts) {
    EXPECT_EQ(L"-1 65 -2147483648 ", ArgumentTexts(short{-1}, 'A', std::numeric_limits<int>::min()));
    EXPECT_EQ(L"255 65535 ",
              ArgumentTexts(static_cast<unsigned char>(255), static_cast<unsigned short>(65535)));
    EXPECT_EQ(L"4294967295 4294967295 ", ArgumentTexts(4294967295U, 4294967295UL));
    EXPECT_EQ(L"0xff 0xffffffffffffffff ", ArgumentTexts(LONGLONG{255}, LONGLONG{-1}));
    EXPECT_EQ(L"0.1 0.333333333333333 1E+20 ", ArgumentTexts(0.1F, 1.0 / 3.0, 1e20));
    EXPECT_EQ(L" narrow (null) ",
              ArgumentTexts(std::wstring(), std::string("narrow"), static_cast<const wchar_t*>(nullptr)));
    WLogParams params;
    params.FormatEventArgument(8, 1);
    params.FormatEventArgument(-1, L"x");
    for (int i = -1; i <= 8; ++i) {
        EXPECT_EQ(nullptr, params.GetFormatArg(i));
    }
}

TEST(EventLog, ParametersAreOrderedByTheirDescriptorsTimes) {
    static const WExceptionEventInfo earlier(30102, L"Earlier", L"", nullptr, bss::MINOR);
    static WExceptionEventInfo later(30103, L"Later", L"", nullptr, bss::MINOR);
    const bss::WSystemTimeEx start(earlier.GetDateTime());
    while (bss::WSystemTimeEx(later.GetDateTime()) - start < 1) {
        later = WExceptionEventInfo(30103, L"Later", L"", nullptr, bss::MINOR);
    }
    WLogParams a;
    WLogParams b;
    EXPECT_FALSE(a < b);
    a.SetEventInfo(&earlier);
    EXPECT_FALSE(a < b || b < a);
    b.SetEventInfo(&later);
    EXPECT_TRUE(a < b || later.GetDateTime().wMilliseconds == 0);
    EXPECT_FALSE(a < a);
}

TEST(EventLog, DefaultLogIsMadeOnFirstUse) {
    EXPECT_FALSE(WExceptionEventLog::IsValid());
    WExceptionEventLog& log = WExceptionEventLog::GetEventLog();
    EXPECT_TRUE(WExceptionEventLog::IsValid() && &log == &WExceptionEventLog::GetEventLog());
    EXPECT_EQ(L"Unknown", log.GetAppName());
}

TEST(EventLog, TextOutsideAsciiReachesTheConsoleWholeWithoutALocale) {
    const std::string expected =
        "before\n"
        "******** MAJOR    LocalHost::Unknown  ********\n"
        "2.3809 WNEDataIOError         : Data I/O Error: \xc2\xb5m\n"
        "1.2911 WNEODBCError           : ODBC Error: Tabelle \xc2\xbbGr\xc3\xb6\xc3\x9f"
        "e\xc2\xab \xe2\x80\x94 \xe7\xb2\x92\xe5\xbe\x84 \xf0\x9f\x94\xac\n"
        "after\n";
    for (const char* const mode : {"synchronised", "unsynchronised"}) {
        ChildProcess program(DEFAULT_LOG_PROGRAM, {mode});
        std::string output;
        for (std::string line = program.ReadLine(); !line.empty(); line = program.ReadLine()) {
            output += line + '\n';
        }
        EXPECT_EQ(expected, output);
        EXPECT_EQ(0, program.Wait());
    }
}

} // namespace
