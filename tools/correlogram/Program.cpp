#include "Program.h"

#include "Analysis.h"
#include "Options.h"
#include "Plot.h"
#include "Report.h"
#include "Store.h"
#include "common/Failure.h"
#include "common/WriteFile.h"

#include "bss/exception/WFileEventLog.h"
#include "krtpal/common/text.h"

#include <filesystem>
#include <sstream>

namespace correlogram {

using tools::Failure;
using tools::PathOf;
using tools::QuoteStart;

namespace {

// A chain of failures as the event log shows it.
std::string LogText(const bss::WNestedException& failure) {
    std::wostringstream text;
    bss::WFileEventLog log(text, L"correlogram");
    failure.Log(log);
    return krtpal::Utf8FromWide(text.str());
}

// A plot in the place of a measured file would destroy it.
void RefuseToOverwrite(const Options& options) {
    for (const std::string& input : {options.file, options.sigmaFile}) {
        std::error_code ignored;
        if (!options.plotFile.empty() && !input.empty() &&
            std::filesystem::equivalent(PathOf(input), PathOf(options.plotFile), ignored)) {
            throw Failure("The plot " + QuoteStart(options.plotFile) + " would overwrite the measured file " +
                          QuoteStart(input) + ".");
        }
    }
}

Analysis ReadAndAnalyse(const Options& options) {
    Curve curve = ReadCurve(options.file);
    if (!options.sigmaFile.empty()) {
        ReadSigma(options.sigmaFile, curve);
    }
    return Analyse(std::move(curve), options.conditions, options.firstLag);
}

int RunOptions(const Options& options, std::ostream& output, std::ostream& errors) {
    if (options.list) {
        output << Store(options).List() << std::flush;
        return kSuccess;
    }
    RefuseToOverwrite(options);
    const Analysis analysis = options.show != 0 ? Store(options).Get(options.show) : ReadAndAnalyse(options);
    if (options.verbose) {
        errors << VerboseReport(analysis);
    }
    if (!options.plotFile.empty()) {
        tools::WriteWhole(
            options.plotFile, [&](std::ostream& file) { file << DrawPlot(analysis); }, QuoteStart);
    }
    if (options.show == 0 && options.HasStore()) {
        const long number = Store(options).Add(analysis);
        errors << "correlogram: stored as analysis " << number << "." << std::endl;
    }
    output << (options.json ? JsonReport(analysis) : TableReport(analysis)) << std::flush;
    if (!output) {
        throw Failure("The result cannot be written to the output.");
    }
    for (const FitResult& fit : analysis.fits) {
        if (!fit.HasConverged()) {
            errors << LogText(*fit.failure);
        }
    }
    return analysis.HasConverged() ? kSuccess : kFitFailed;
}

} // namespace

int Run(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors) noexcept {
    Options options;
    try {
        options = ParseOptions(arguments);
        if (options.help) {
            output << HelpText() << std::flush;
            return kSuccess;
        }
        return RunOptions(options, output, errors);
    } catch (const Failure& failure) {
        if (options.verbose && !failure.Chain().empty()) {
            errors << failure.Chain() << std::endl;
        }
        errors << "correlogram: " << failure.what() << std::endl;
        return kBadInput;
    } catch (const bss::WNestedException& failure) {
        errors << LogText(failure) << std::flush;
        return kFitFailed;
    } catch (const std::exception& error) {
        errors << "correlogram: " << error.what() << std::endl;
        return kFitFailed;
    }
}

} // namespace correlogram
