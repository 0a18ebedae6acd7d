// WNestedException: base of every failure that the library throws on purpose, and a link of a chain.
//
// A caught exception is the head of a singly linked chain: the latest meaning first, its causes behind it. A
// layer that adds meaning throws its own class with the caught object as next link; one that fails while it
// handles a failure appends the later one:
//
//     try {
//         Store(run);
//     } catch (const bss::WNestedException& e) {
//         throw bss::WNEDataIOError(L"while storing the run", &e);
//     }
//
//     catch (bss::WNestedException& e) {
//         try { Rollback(); } catch (const bss::WNestedException& later) { e += later; }
//         throw;
//     }
//
// At the top:
//
//     e.Log(bss::WExceptionEventLog::GetEventLog());
//     ShowMessage(e.AsString(false));
//
// Ownership: a chain owns clones of its links, never a caught object itself, which may die with its handler.
// Copies are deep. Chains of any length are copied, assigned and destroyed without recursion.
//
// Threads: one exception object, one thread at a time; any number of threads may copy one object that none
// changes.
//
// The classes are in WExceptionCatalogue.h; how to declare one of your own is in WCatalogueException.h.

#ifndef BSS_EXCEPTION_WNESTEDEXCEPTION_H
#define BSS_EXCEPTION_WNESTEDEXCEPTION_H

#include "bss/Export.h"
#include "bss/exception/WExceptionEvent.h"
#include "bss/exception/WExceptionEventInfo.h"

#include <string>
#include <vector>

namespace bss {

class WExceptionEventLog;
struct WLogParams;
struct WNestedExceptionData;

class KRTBSS_API WNestedException : public WExceptionEvent {
public:
    WNestedException() = default;
    /// An exception whose arguments are the record's texts. `next` (may be null) is cloned.
    WNestedException(const WNestedExceptionData& data, const WNestedException* next,
                     const WExceptionEventInfo* info);
    WNestedException(const WNestedException& other);
    ~WNestedException() override;

    const WNestedException& operator=(const WNestedException& other);
    /// While this failure was handled, `other` happened: appends a WNEWhileHandling that names `other`'s
    /// class, and behind it a clone of `other`'s chain. `other` stays as it is; it may be part of this chain.
    const WNestedException& operator+=(const WNestedException& other);

    const WExceptionEventInfo& GetEventInfo() const override = 0;
    /// Writes the whole chain to the log, whose result is ignored.
    void Log(WExceptionEventLog& log) const override;
    /// 1 in every class.
    virtual int GetRevision() const = 0;
    /// A copy on the heap, with its whole chain. The caller owns it.
    virtual WNestedException* clone() const = 0;
    /// Makes new parameters with the descriptor and the arguments' texts, and stores them in `params` without
    /// a look at what it held. The object owns them.
    virtual void FormatLogParams(WLogParams*& params) const = 0;

    /// Writes this link alone.
    void LogThis(WExceptionEventLog& log) const;
    /// The messages of the chain (or of this link alone), each followed by a line feed, without header and
    /// event name.
    std::wstring AsString(bool bFirstOnly) const;
    /// The highest severity of the chain from this link on, but MINOR at least, also on a null object and for
    /// a chain of advisories: the floor is meant.
    eseverity GetHighestSeverity() const;
    /// Appends the parameters of each link that has some, head first. They stay the links' own.
    void GetLogParamsList(std::vector<const WLogParams*>& list) const;

    /// Replaces everything behind this link by a clone of `next`, or by nothing for null.
    void CloneNext(const WNestedException* next);
    const WNestedException* GetNextException() const { return m_pNext; }
    WNestedException* GetNextException() { return m_pNext; }

    bool GetLogDataFormatted() const { return m_bLogDataFormatted; }
    bool HasLogParams() const { return m_pLogParams != nullptr; }
    /// The parameters as they stand, which may be null.
    const WLogParams* GetLogParameters() const { return m_pLogParams; }

    /// The text behind the last backslash, the whole text if there is none. Slashes separate nothing.
    static std::wstring StripPath(const std::wstring& path);

    /// A flag for clients: nothing in the library acts on it. Answers the former value.
    static bool SetVariableDataSuppression(bool suppress);
    static bool IsVariableDataSuppressionEnabled();

protected:
    /// The parameters, made on first need. (They are a cache: const.)
    WLogParams* GetLogParams() const;
    /// Sets the descriptor of the existing parameters; does nothing without any.
    void SetEventInfo(const WExceptionEventInfo* info);

private:
    static WNestedException* CloneChain(const WNestedException* head);
    static void DestroyChain(WNestedException* head) noexcept;

    mutable bool m_bLogDataFormatted = false;
    mutable WLogParams* m_pLogParams = nullptr;
    WNestedException* m_pNext = nullptr;

    static bool m_bSuppressVariableData;
};

} // namespace bss

#endif
