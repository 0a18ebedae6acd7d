#include "Store.h"

#include "common/Failure.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/WVersion.h"
#include "krtpal/common/text.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <set>

namespace correlogram {

using tools::Failure;
using tools::PathOf;
using tools::QuoteStart;

namespace {

// The format of the two classes below; it has frames for vectors.
const bss::WVersion kFormat(5, 3, 2, 0);

std::wstring Wide(const std::string& utf8) {
    return krtpal::WideFromUtf8(utf8);
}

std::string Utf8(const std::wstring& text) {
    return krtpal::Utf8FromWide(text);
}

// What the tables have in common.
class StoredObject : public bss::WPersistentObject {
protected:
    StoredObject(long group, long object) : WPersistentObject(group, object, kFormat) {}

    template <class Value>
    void Member(bool bRead, const wchar_t* label, Value& value) {
        bRead ? m_pSerializer->Retrieve(label, value) : m_pSerializer->Insert(label, value);
    }
};

class StoredFit : public StoredObject {
public:
    StoredFit(long group, long object) : StoredObject(group, object) {}

    void Set(const FitResult& fit, const std::vector<double>& lag) {
        m_sName = Wide(fit.name);
        m_sStopTest = Wide(fit.stopTest);
        m_sNote = Wide(fit.note);
        m_nIterations = static_cast<long>(fit.iterations);
        m_sFailure = fit.failure ? fit.failure->AsString(false) : std::wstring();
        for (const Coefficient& coefficient : fit.coefficients) {
            m_asNames.push_back(Wide(coefficient.name));
            m_asMeanings.push_back(Wide(coefficient.meaning));
            m_aStarts.push_back(coefficient.start);
            m_aValues.push_back(coefficient.fitted.value);
            m_aErrors.push_back(coefficient.fitted.error);
        }
        m_aQuality = {fit.chiSquared, fit.reducedChiSquared, fit.rSquared};
        for (const auto& measured : {fit.decayRate, fit.polydispersity, fit.diffusion, fit.radius}) {
            m_abResults.push_back(measured.has_value());
            m_aResults.push_back(measured ? measured->value : 0.0);
            m_aResults.push_back(measured ? measured->error : 0.0);
        }
        if (fit.HasConverged()) {
            for (const double t : lag) {
                m_aCurve.push_back(fit.function->Evaluate(t));
            }
        }
    }

    FitResult Get() const {
        FitResult fit;
        fit.name = Utf8(m_sName);
        fit.stopTest = Utf8(m_sStopTest);
        fit.note = Utf8(m_sNote);
        fit.iterations = static_cast<unsigned>(m_nIterations);
        if (!m_sFailure.empty()) {
            fit.failure = std::make_unique<bss::WNEUnexpectedException>(m_sFailure);
        }
        for (std::size_t i = 0; i < m_asNames.size(); ++i) {
            fit.coefficients.push_back({Utf8(m_asNames[i]), Utf8(m_asMeanings.at(i)), m_aStarts.at(i),
                                        Measured{m_aValues.at(i), m_aErrors.at(i)}});
        }
        fit.chiSquared = m_aQuality.at(0);
        fit.reducedChiSquared = m_aQuality.at(1);
        fit.rSquared = m_aQuality.at(2);
        std::optional<Measured>* const results[] = {&fit.decayRate, &fit.polydispersity, &fit.diffusion,
                                                    &fit.radius};
        for (std::size_t i = 0; i < std::size(results); ++i) {
            if (m_abResults.at(i)) {
                *results[i] = Measured{m_aResults.at(2 * i), m_aResults.at(2 * i + 1)};
            }
        }
        return fit;
    }

    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        Member(bRead, L"m_sName", m_sName);
        Member(bRead, L"m_sStopTest", m_sStopTest);
        Member(bRead, L"m_sNote", m_sNote);
        Member(bRead, L"m_sFailure", m_sFailure);
        Member(bRead, L"m_nIterations", m_nIterations);
        Member(bRead, L"m_asNames", m_asNames);
        Member(bRead, L"m_asMeanings", m_asMeanings);
        Member(bRead, L"m_aStarts", m_aStarts);
        Member(bRead, L"m_aValues", m_aValues);
        Member(bRead, L"m_aErrors", m_aErrors);
        Member(bRead, L"m_aQuality", m_aQuality);
        Member(bRead, L"m_abResults", m_abResults);
        Member(bRead, L"m_aResults", m_aResults);
        Member(bRead, L"m_aCurve", m_aCurve);
    }

private:
    std::wstring m_sName;
    std::wstring m_sStopTest;
    std::wstring m_sNote;
    std::wstring m_sFailure;
    long m_nIterations = 0;
    std::vector<std::wstring> m_asNames;
    std::vector<std::wstring> m_asMeanings;
    std::vector<double> m_aStarts;
    std::vector<double> m_aValues;
    std::vector<double> m_aErrors;
    std::vector<double> m_aQuality;
    std::vector<bool> m_abResults;
    std::vector<double> m_aResults; // value and error of each
    std::vector<double> m_aCurve;   // the function at the lags
};

class StoredAnalysis : public StoredObject {
public:
    explicit StoredAnalysis(long number) : StoredObject(number, 1) {}

    void Set(const Analysis& analysis) {
        const Conditions& conditions = analysis.conditions;
        m_sFile = Wide(analysis.curve.file);
        const std::time_t now = std::time(nullptr);
        m_Time = *std::gmtime(&now);
        m_nFirst = static_cast<long>(analysis.first);
        m_nCount = static_cast<long>(analysis.count);
        m_aConditions = {conditions.wavelength, conditions.angle, conditions.temperature,
                         conditions.viscosity, conditions.refractiveIndex};
        m_aDerived = {analysis.baseline, analysis.intercept, analysis.decayTime, analysis.scatteringVector};
        m_aLag = analysis.curve.lag;
        m_aSignal = analysis.curve.signal;
        m_aSigma = analysis.curve.sigma;
        for (const FitResult& fit : analysis.fits) {
            m_Fits.emplace_back(GetGroupID(), static_cast<long>(m_Fits.size()) + 1);
            m_Fits.back().Set(fit, m_aLag);
        }
        m_nFits = static_cast<long>(m_Fits.size());
    }

    Analysis Get() const {
        Analysis analysis;
        analysis.curve.file = Utf8(m_sFile);
        analysis.curve.lag = m_aLag;
        analysis.curve.signal = m_aSignal;
        analysis.curve.sigma = m_aSigma;
        analysis.conditions = {m_aConditions.at(0), m_aConditions.at(1), m_aConditions.at(2),
                               m_aConditions.at(3), m_aConditions.at(4)};
        analysis.first = static_cast<std::size_t>(m_nFirst);
        analysis.count = static_cast<std::size_t>(m_nCount);
        analysis.baseline = m_aDerived.at(0);
        analysis.intercept = m_aDerived.at(1);
        analysis.decayTime = m_aDerived.at(2);
        analysis.scatteringVector = m_aDerived.at(3);
        for (const StoredFit& fit : m_Fits) {
            analysis.fits.push_back(fit.Get());
        }
        return analysis;
    }

    std::string Line() const {
        char time[32] = {};
        std::strftime(time, sizeof(time), "%Y-%m-%d %H:%M:%S", &m_Time);
        return std::to_string(GetGroupID()) + "  " + time + "  " + Utf8(m_sFile) + "  " +
               std::to_string(m_nCount) + " points\n";
    }

    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        Member(bRead, L"m_sFile", m_sFile);
        Member(bRead, L"m_Time", m_Time);
        Member(bRead, L"m_nFirst", m_nFirst);
        Member(bRead, L"m_nCount", m_nCount);
        Member(bRead, L"m_nFits", m_nFits);
        Member(bRead, L"m_aConditions", m_aConditions);
        Member(bRead, L"m_aDerived", m_aDerived);
        Member(bRead, L"m_aLag", m_aLag);
        Member(bRead, L"m_aSignal", m_aSignal);
        Member(bRead, L"m_aSigma", m_aSigma);
    }
    void SerializeComponents(bool bRead) override {
        if (bRead) {
            m_Fits.clear();
            for (long i = 1; i <= std::min(m_nFits, kMostFits); ++i) {
                m_Fits.emplace_back(GetGroupID(), i);
            }
        }
        for (StoredFit& fit : m_Fits) {
            bRead ? fit.Read(m_pSerializer, 0, true) : fit.Write(m_pSerializer, m_nVersion, true);
        }
    }
    void DeleteComponents() override {
        for (StoredFit& fit : m_Fits) {
            fit.Delete(m_pSerializer, m_nVersion, true);
        }
    }

private:
    static constexpr long kMostFits = 100;

    std::wstring m_sFile;
    struct tm m_Time {};
    long m_nFirst = 0;
    long m_nCount = 0;
    long m_nFits = 0;
    std::vector<double> m_aConditions;
    std::vector<double> m_aDerived;
    std::vector<double> m_aLag;
    std::vector<double> m_aSignal;
    std::vector<double> m_aSigma;
    std::vector<StoredFit> m_Fits;
};

// What the driver said, if a driver said anything.
std::string Reason(const std::string& chain) {
    const std::string mark = "Error message: ";
    const std::size_t at = chain.rfind(mark);
    if (at == std::string::npos) {
        return chain.find("Data corrupted.") != std::string::npos ? "its data are corrupted" : "";
    }
    const std::size_t start = at + mark.size();
    std::string text = chain.substr(start, std::min(chain.find('\n', start), chain.size()) - start);
    text.erase(text.find_last_not_of(".;\r ") + 1);
    return text;
}

// Runs an operation; its failures become sentences that begin with `what`.
template <class Operation>
auto Told(const std::string& what, Operation operation) {
    try {
        return operation();
    } catch (const bss::WNestedException& failure) {
        const std::string chain = Utf8(failure.AsString(true));
        throw Failure(what, Reason(chain), chain);
    } catch (const Failure&) {
        throw;
    } catch (const std::exception& failure) {
        throw Failure(what, failure.what(), failure.what());
    }
}

} // namespace

Store::Store(const Options& options)
    : m_sName(QuoteStart(options.storeFile.empty() ? options.dataSource : options.storeFile)) {
    Told("The database " + m_sName + " cannot be opened", [&] {
        if (options.storeFile.empty()) {
            const char* const password = std::getenv("CORRELOGRAM_PASSWORD");
            m_Database.Connect(Wide(options.user), Wide(password == nullptr ? "" : password),
                               Wide(options.dataSource));
            return;
        }
        std::error_code ignored;
        if (options.ReadsStore() && !std::filesystem::exists(PathOf(options.storeFile), ignored)) {
            throw Failure("There is no database " + m_sName + ".");
        }
        m_Database.ConnectFile(L"", L"", Wide(options.storeFile));
    });
    // A count of the rows would be 0 there, as if nothing were stored.
    for (const wchar_t* const table : {L"StoredAnalysis", L"StoredFit"}) {
        if (m_Database.HasTable(table) && !m_Database.HasColumn(table, L"checkSum")) {
            throw Failure("The table " + Utf8(table) + " in " + m_sName + " is none of correlogram's.");
        }
    }
}

long Store::Add(const Analysis& analysis) {
    return Told("The analysis cannot be stored in " + m_sName, [&] {
        long number = 0;
        for (const long group : m_Database.GetEntryIDs(L"StoredAnalysis")) {
            number = std::max(number, group);
        }
        StoredAnalysis stored(number + 1);
        stored.Set(analysis);
        stored.Write(&m_Database, 0, true);
        return number + 1;
    });
}

std::string Store::List() {
    return Told("The database " + m_sName + " cannot be read", [&] {
        std::string text;
        if (m_Database.GetRowCount(L"StoredAnalysis") > 0) {
            const std::vector<long> groups = m_Database.GetEntryIDs(L"StoredAnalysis");
            for (const long group : std::set<long>(groups.begin(), groups.end())) {
                StoredAnalysis stored(group);
                stored.Read(&m_Database, 0, false);
                text += stored.Line();
            }
        }
        return text.empty() ? "No analysis is stored in " + m_sName + ".\n" : text;
    });
}

Analysis Store::Get(long number) {
    return Told("Analysis " + std::to_string(number) + " in " + m_sName + " cannot be read", [&] {
        StoredAnalysis stored(number);
        if (!m_Database.Exists(stored, nullptr)) {
            throw Failure("There is no analysis " + std::to_string(number) + " in " + m_sName + ".");
        }
        stored.Read(&m_Database, 0, true);
        Analysis analysis = stored.Get();
        if (analysis.count == 0 || analysis.first + analysis.count > analysis.curve.lag.size()) {
            throw Failure("Analysis " + std::to_string(number) + " in " + m_sName + " has no points.");
        }
        return analysis;
    });
}

} // namespace correlogram
