// WNestedException: base of every exception that the library throws on purpose, and a link of a chain.
//
// A caught exception is the head of a singly linked chain, followed by its causes. A layer that adds context
// throws its own class with the caught object as next link. A layer that fails while it handles an exception
// appends the later one:
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
// Ownership: a chain owns clones of its links, never the caught object, which dies with its handler. Copies
// are deep. Chains of any length are copied, assigned and destroyed without recursion. Copying throws
// std::bad_alloc if memory is short.
//
// Threads: one exception object, one thread at a time. Several threads may copy one object that none changes.
//
// The library's classes are in WExceptionCatalogue.h; WCatalogueException.h shows how to declare another one.

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

/// A thrown failure with its causes.
class KRTBSS_API WNestedException : public WExceptionEvent {
public:
    /// Constructs a link without parameters and without a next link.
    WNestedException() = default;
    /// Constructs a link whose arguments are the record's texts. `next` is cloned and may be null; `info`,
    /// the descriptor, is borrowed.
    WNestedException(const WNestedExceptionData& data, const WNestedException* next,
                     const WExceptionEventInfo* info);
    /// Copies the parameters and clones the chain after `other`.
    WNestedException(const WNestedException& other);
    /// Destroys the parameters and all following links.
    ~WNestedException() override;

    /// Copies the parameters and replaces the chain after this link by a clone of the one after `other`.
    /// `other` may be a link of this chain.
    const WNestedException& operator=(const WNestedException& other);
    /// Appends an exception that occurred while this one was handled: a WNEWhileHandling with the name of
    /// `other`'s class, followed by a clone of `other`'s chain. `other` is unchanged and may be a link of
    /// this chain.
    const WNestedException& operator+=(const WNestedException& other);

    /// See WExceptionEvent::GetEventInfo.
    const WExceptionEventInfo& GetEventInfo() const override = 0;
    /// Writes the whole chain to the log, whose result is ignored. Links without parameters are skipped.
    void Log(WExceptionEventLog& log) const override;
    /// Returns 1 in every class.
    virtual int GetRevision() const = 0;
    /// Returns a copy on the heap with its whole chain. The caller owns it.
    virtual WNestedException* clone() const = 0;
    /// Allocates parameters with the descriptor and the texts of the arguments and stores them in `params`,
    /// whose former value is overwritten and not deleted. The object owns the parameters.
    virtual void FormatLogParams(WLogParams*& params) const = 0;

    /// Writes this link only, and formats its parameters if they do not exist.
    void LogThis(WExceptionEventLog& log) const;
    /// Returns the messages of the chain, each followed by a line feed, without header and event name. With
    /// `bFirstOnly` returns the first of these lines. Returns an empty text if no link has parameters.
    std::wstring AsString(bool bFirstOnly) const;
    /// Returns the highest severity of the chain from this link on, and at least MINOR, even for a chain of
    /// advisories. Returns MINOR for a null object (kept for compatibility).
    eseverity GetHighestSeverity() const;
    /// Appends the parameters of each link that has some, head first. The links own the parameters.
    void GetLogParamsList(std::vector<const WLogParams*>& list) const;

    /// Replaces the chain after this link by a clone of `next`, or removes it if `next` is null. `next` may
    /// be a link of this chain.
    void CloneNext(const WNestedException* next);
    /// Returns the next link, null at the end of the chain. This link owns it.
    const WNestedException* GetNextException() const { return m_pNext; }
    /// Returns the next link, null at the end of the chain. This link owns it.
    WNestedException* GetNextException() { return m_pNext; }

    /// Returns true if the parameters have been formatted.
    bool GetLogDataFormatted() const { return m_bLogDataFormatted; }
    /// Returns true if the parameters exist.
    bool HasLogParams() const { return m_pLogParams != nullptr; }
    /// Returns the parameters, null if they have not been formatted. The object owns them.
    const WLogParams* GetLogParameters() const { return m_pLogParams; }

    /// Returns the text after the last backslash, the whole text if there is none. A slash is not a
    /// separator.
    static std::wstring StripPath(const std::wstring& path);

    /// Sets a process-wide flag for clients and returns the former value. The library does not use the flag.
    /// Not synchronised.
    static bool SetVariableDataSuppression(bool suppress);
    /// Returns the flag; false at start.
    static bool IsVariableDataSuppressionEnabled();

protected:
    /// Returns the parameters and formats them on the first call. They are a cache, hence const.
    WLogParams* GetLogParams() const;
    /// Sets the descriptor of the existing parameters; does nothing if there are none.
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
