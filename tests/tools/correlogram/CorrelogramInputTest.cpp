// Everything that comes from outside and is not usable: one sentence, exit status 2, no plot.

#include "tools/correlogram/CorrelogramSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

using namespace correlogram_test;

namespace {

correlogram::Curve Decay() {
    return MakeCurve([](double t) { return 0.9 * std::exp(-2000.0 * t); });
}

// The decay as a file, with line `line` (from 1, the heading) replaced.
std::string WithLine(std::size_t line, const std::string& replacement) {
    std::string text = CsvText(Decay());
    std::size_t start = 0;
    for (std::size_t i = 1; i < line; ++i) {
        start = text.find('\n', start) + 1;
    }
    return text.replace(start, text.find('\n', start) - start, replacement);
}

std::string FirstLines(std::size_t count) {
    const std::string text = CsvText(Decay());
    std::size_t end = 0;
    for (std::size_t i = 0; i < count; ++i) {
        end = text.find('\n', end) + 1;
    }
    return text.substr(0, end);
}

std::string SigmaText(const correlogram::Curve& curve, double sigma) {
    correlogram::Curve deviations = curve;
    deviations.signal.assign(curve.lag.size(), sigma);
    return CsvText(deviations);
}

// The sentence of a run that has to be refused, with FILE for the name of the file; also looks for what is
// left behind.
std::string Refusal(const ScratchFolder& folder, std::vector<std::string> arguments) {
    const std::vector<std::string> before = folder.Names();
    arguments.insert(arguments.end(), {"--plot", folder.Path("plot.svg")});
    const Outcome outcome = RunHere(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(folder.Names(), before);
    EXPECT_TRUE(outcome.errors.starts_with("correlogram: ") && outcome.errors.ends_with("\n"))
        << outcome.errors;
    std::string sentence = outcome.errors.substr(13, outcome.errors.size() - 14);
    for (const char* name : {"curve.csv", "sigma.csv"}) {
        const std::string path = folder.Path(name);
        for (std::size_t at = sentence.find(path); at != std::string::npos; at = sentence.find(path)) {
            sentence.replace(at, path.size(), name);
        }
    }
    return sentence;
}

std::string RefusalOf(const std::string& bytes, const std::vector<std::string>& options = {}) {
    const ScratchFolder folder;
    std::vector<std::string> arguments{folder.Write("curve.csv", bytes)};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return Refusal(folder, arguments);
}

std::string RefusalOfSigma(const std::string& bytes) {
    const ScratchFolder folder;
    const std::string curve = folder.Write("curve.csv", CsvText(Decay()));
    return Refusal(folder, {curve, "--sigma", folder.Write("sigma.csv", bytes)});
}

} // namespace

TEST(CorrelogramInput, ContentThatIsNoCurveIsRefusedByLine) {
    const struct {
        std::string bytes;
        const char* sentence;
    } rows[] = {
        {"", "'curve.csv' is empty (0 bytes)."},
        {"\n \n", "'curve.csv', line 2: the file ends without a single point."},
        {"lag_seconds,g2_minus_1\n", "'curve.csv', line 1: the file ends without a single point."},
        {"There is nothing here.\n",
         "'curve.csv', line 1: there is 1 column where 2 are expected, lag and g2 - 1."},
        {std::string("\x89PNG,\n\x1a\n\0\0", 9),
         "'curve.csv', line 2: this is no text, it holds a byte of value 26."},
        {WithLine(3, std::string("1e-7\0,1", 7)),
         "'curve.csv', line 3: this is no text, it holds a byte of value 0."},
        {WithLine(5, "1.2e-7,abc"), "'curve.csv', line 5: the g2 - 1 'abc' is not a number."},
        {WithLine(5, "x,0.9"), "'curve.csv', line 5: the lag 'x' is not a number."},
        {WithLine(5, "x,y"), "'curve.csv', line 5: the lag 'x' is not a number."},
        {WithLine(5, ",0.9"), "'curve.csv', line 5: the lag '' is not a number."},
        {WithLine(1, "1e-8,text"), "'curve.csv', line 1: the g2 - 1 'text' is not a number."},
        {WithLine(181, "1.0,nan"), "'curve.csv', line 181: the g2 - 1 'nan' is not a finite number."},
        {WithLine(6, "inf,0.9"), "'curve.csv', line 6: the lag 'inf' is not a finite number."},
        {WithLine(6, "1e-7,1e999"), "'curve.csv', line 6: the g2 - 1 '1e999' is not a finite number."},
        {WithLine(4, "1.2e-7"),
         "'curve.csv', line 4: there is 1 column where 2 are expected, lag and g2 - 1."},
        {WithLine(4, "1,2,3"),
         "'curve.csv', line 4: there are 3 columns where 2 are expected, lag and g2 - 1."},
        {WithLine(2, "0,0.9"), "'curve.csv', line 2: the lag 0 is not above zero."},
        {WithLine(2, "-1e-8,0.9"), "'curve.csv', line 2: the lag -1e-08 is not above zero."},
        {WithLine(3, "1e-7,0.9"), "'curve.csv', line 3: the lag 1e-07 is not above the lag 1e-07 of line 2."},
        {WithLine(9, "1.5e-7,0.9"),
         "'curve.csv', line 9: the lag 1.5e-07 is not above the lag 1.71647e-07 of line 8."},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(RefusalOf(row.bytes), row.sentence);
    }
}

TEST(CorrelogramInput, FilesThatCannotBeReadAreRefused) {
    const ScratchFolder folder;
    EXPECT_EQ(Refusal(folder, {folder.Path("curve.csv")}), "Cannot read 'curve.csv': there is no such file.");
    std::filesystem::create_directory(correlogram::PathOf(folder.Path("curve.csv")));
    EXPECT_EQ(Refusal(folder, {folder.Path("curve.csv")}), "Cannot read 'curve.csv': it is a folder.");
}

TEST(CorrelogramInput, LargeFilesAreRefusedBySize) {
    const ScratchFolder folder;
    const std::string path = folder.Write("curve.csv", "lag_seconds,g2_minus_1\n");
    {
        std::ofstream stream(correlogram::PathOf(path), std::ios::binary | std::ios::in);
        stream.seekp((1LL << 30) - 1);
        stream.put('\n');
    }
    EXPECT_EQ(Refusal(folder, {path}),
              "'curve.csv' is no measured curve: it has 1073741824 bytes, and at most 16777216 are read.");
}

TEST(CorrelogramInput, CurvesThatCannotBeFittedAreRefused) {
    EXPECT_EQ(RefusalOf(FirstLines(8)),
              "'curve.csv', line 8: the file ends with only 7 points, where at least 40 are needed.");
    EXPECT_EQ(RefusalOf(CsvText(Decay()), {"--first-lag", "0.9"}),
              "'curve.csv', line 181: the file ends with only 2 points from the lag 0.9 s on, where at least "
              "40 are needed.");
    EXPECT_EQ(RefusalOf(CsvText(MakeCurve([](double) { return 0.5; }))),
              "'curve.csv', line 2: no decay begins here, the signal does not rise above the noise of the "
              "last 30 points.");
    const auto sparse = MakeCurve([](double t) { return std::exp(-t / 3e-7); }, 0.0, 1, 40, 1e-7, 1e5);
    EXPECT_EQ(RefusalOf(CsvText(sparse)),
              "'curve.csv', line 9: the decay ends after only 8 points, where at least 10 are needed.");
}

TEST(CorrelogramInput, StandardDeviationsHaveToMatchTheCurve) {
    const correlogram::Curve curve = Decay();
    const std::string good = SigmaText(curve, 0.01);
    correlogram::Curve longer = MakeCurve([](double) { return 0.01; });
    longer.lag.push_back(2.0);
    longer.signal.push_back(0.01);
    correlogram::Curve other = curve;
    other.lag[3] *= 1.01;
    EXPECT_EQ(RefusalOfSigma(good.substr(0, good.rfind("\n1,") + 1)),
              "'sigma.csv', line 180: the file ends after 179 of the 180 points of 'curve.csv'.");
    EXPECT_EQ(RefusalOfSigma(CsvText(longer)),
              "'sigma.csv', line 182: there are more points than the 180 of 'curve.csv'.");
    EXPECT_EQ(RefusalOfSigma(SigmaText(other, 0.01)),
              "'sigma.csv', line 5: the lag 1.32324e-07 is not the lag 1.31014e-07 of 'curve.csv', line 5.");
    EXPECT_EQ(RefusalOfSigma(SigmaText(curve, 0.0)),
              "'sigma.csv', line 2: the standard deviation 0 is not above zero.");
    EXPECT_EQ(RefusalOfSigma("lag,sigma\n1e-7,none\n"),
              "'sigma.csv', line 2: the standard deviation 'none' is not a number.");
}

TEST(CorrelogramInput, CommandLinesAreCheckedForUnits) {
    const struct {
        std::vector<std::string> arguments;
        const char* sentence;
    } rows[] = {
        {{}, "No file is given: see correlogram --help."},
        {{"a.csv", "b.csv"}, "Two files are given, 'a.csv' and 'b.csv', where one is fitted at a time."},
        {{"--colour"}, "There is no option '--colour': see correlogram --help."},
        {{"a.csv", "--angle"}, "--angle needs a value behind it."},
        {{"a.csv", "--angle=90x"}, "--angle '90x' is not a number."},
        {{"a.csv", "--angle", "nan"}, "--angle 'nan' is outside 0.1 to 180 degrees."},
        {{"a.csv", "--wavelength", "632.8"}, "--wavelength '632.8' is outside 1e-08 to 0.0001 metres."},
        {{"a.csv", "--refractive-index=0"}, "--refractive-index '0' is outside 1 to 10."},
        {{"a.csv", "--json=yes"}, "--json takes no value."},
        {{"a.csv", "--plot", ""}, "--plot needs the name of a file."},
        {{"a\nb.csv"}, "Cannot read 'a\\x0ab.csv': there is no such file."},
    };
    for (const auto& row : rows) {
        const Outcome outcome = RunHere(row.arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors, std::string("correlogram: ") + row.sentence + "\n");
    }
}

TEST(CorrelogramInput, FormsOfTheSameFileReadAlike) {
    const std::string plain = CsvText(Decay());
    std::string dressed = "\xEF\xBB\xBF";
    for (const char c : plain) {
        dressed += c == '\n' ? "\r\n\r\n" : c == ',' ? " ; " : std::string(1, c);
    }
    const ScratchFolder folder;
    const correlogram::Curve first = correlogram::ReadCurve(folder.Write("plain.csv", plain));
    const correlogram::Curve second = correlogram::ReadCurve(folder.Write("dressed.csv", dressed));
    const correlogram::Curve third =
        correlogram::ReadCurve(folder.Write("bare.csv", plain.substr(plain.find('\n') + 1)));
    ASSERT_EQ(first.lag.size(), 180U);
    EXPECT_EQ(first.lag, second.lag);
    EXPECT_EQ(first.signal, second.signal);
    EXPECT_EQ(first.lag, third.lag);
    EXPECT_EQ(first.line.back(), 181U);
    EXPECT_EQ(second.line.back(), 361U);
    EXPECT_EQ(third.line.back(), 180U);
}
