// WCatalogueException: base template of each exception class of the catalogue, and BSS_EXCEPTION_CLASS, the
// macro that declares such a class.
//
// A module declares an exception class of its own in a header
//
//     BSS_EXCEPTION_CLASS(MYLIB_API, WNELaserOff, 20001, L"Laser %1 is off.", bss::MAJOR, long)
//
// and defines its destructor in one source file. The definition also registers the descriptor when the module
// is loaded:
//
//     WNELaserOff::~WNELaserOff() = default;
//
// MYLIB_API exports the class from its module and may be empty. The argument types follow the severity in the
// order of the message's inserts; each is std::wstring or an arithmetic type, at most eight.
//
//     throw WNELaserOff(2);           // "Laser 2 is off."
//     throw WNELaserOff(2, &cause);   // with a clone of the cause as next link
//
// Threads: one exception object, one thread at a time. Different threads may construct objects of one class
// at the same time.

#ifndef BSS_EXCEPTION_WCATALOGUEEXCEPTION_H
#define BSS_EXCEPTION_WCATALOGUEEXCEPTION_H

#include "bss/exception/WLogParams.h"
#include "bss/exception/WNestedException.h"
#include "bss/exception/WNestedExceptionData.h"
#include "krtpal/export.h"

#include <memory>
#include <tuple>
#include <type_traits>

namespace bss {

/// The constants of one exception class, which its EventRow() returns. The texts are literals.
struct WExceptionEventRow {
    long code;              ///< Event code, unique in the catalogue.
    const wchar_t* name;    ///< Class name.
    const wchar_t* message; ///< Message template with the inserts `%1` to `%8`.
    eseverity severity;     ///< Severity of every object of the class.
};

/// Implements the operations of WNestedException for the class `Event`, which derives from this template
/// (CRTP) and has a static EventRow(). `Arguments` are the types of the message's inserts, in order.
template <class Event, class... Arguments>
class KRTPAL_TYPE_API WCatalogueException : public WNestedException {
    /// Texts are passed by reference, numbers by value.
    template <class Argument>
    using Parameter = std::conditional_t<std::is_arithmetic_v<Argument>, Argument, const Argument&>;

public:
    /// Stores the arguments and formats them at once. `pNext`, the cause, is cloned and may be null. Throws
    /// std::bad_alloc if memory is short.
    explicit WCatalogueException(Parameter<Arguments>... arguments, const WNestedException* pNext = nullptr)
        : m_arguments(arguments...) {
        CloneNext(pNext);
        Prepare();
    }

    /// Constructs from a record: the arguments exist as text only, the typed ones are empty or 0. `next` is
    /// cloned and may be null. Throws std::bad_alloc if memory is short.
    WCatalogueException(const WNestedExceptionData& data, const WNestedException* next)
        : WNestedException(data, next, &s_eventInfo) {
        Prepare();
    }

    /// Copies the arguments and clones the chain after this link. Throws std::bad_alloc if memory is short.
    WCatalogueException(const WCatalogueException& other)
        : WNestedException(other), m_arguments(other.m_arguments) {
        Prepare();
    }

    /// Destroys the object and the links that it owns.
    ~WCatalogueException() override = default;

    /// Copies the arguments and replaces the chain after this link by a clone of the other's. `other` may be
    /// a link of this chain. Throws std::bad_alloc if memory is short.
    WCatalogueException& operator=(const WCatalogueException& other) {
        // Copied first: `other` may be a link of this chain, which the base's assignment destroys.
        auto arguments = other.m_arguments;
        WNestedException::operator=(other);
        m_arguments = std::move(arguments);
        return *this;
    }

    /// Returns the descriptor of the class `Event`.
    const WExceptionEventInfo& GetEventInfo() const override { return s_eventInfo; }
    /// Returns 1.
    int GetRevision() const override { return 1; }
    /// See WNestedException::clone. The copy is an `Event`.
    WNestedException* clone() const override { return new Event(static_cast<const Event&>(*this)); }

    /// See WNestedException::FormatLogParams. Formats the typed arguments, so an object made from a record
    /// gives empty texts and zeros.
    void FormatLogParams(WLogParams*& params) const override {
        auto made = std::make_unique<WLogParams>();
        made->SetEventInfo(&s_eventInfo);
        std::apply(
            [&made](const Arguments&... arguments) {
                [[maybe_unused]] int i = 0;
                (made->FormatEventArgument(i++, arguments), ...);
            },
            m_arguments);
        params = made.release();
    }

    /// Returns argument `index`, which fills insert `%(index + 1)`. It is empty or 0 in an object that was
    /// made from a record.
    template <std::size_t index>
    const auto& GetArgument() const {
        return std::get<index>(m_arguments);
    }

private:
    static void ThrowEvent(WNestedExceptionData& data, WNestedException* next) { throw Event(data, next); }

    void Prepare() {
        // The descriptor's constructor stores the function already. Each module has its own address of
        // ThrowEvent: an unconditional store would leave the address of the last thrower, whose module may be
        // unloaded later, and would be a data race.
        if (s_eventInfo.GetThrowFunc() == nullptr) {
            s_eventInfo.SetThrowFunc(&ThrowEvent);
        }
        GetLogParams();
    }

    std::tuple<Arguments...> m_arguments;

    static inline WExceptionEventInfo s_eventInfo{Event::EventRow().code, Event::EventRow().name,
                                                  Event::EventRow().message, &ThrowEvent,
                                                  Event::EventRow().severity};
};

} // namespace bss

/// Declares the exception class `Class`, derived from WCatalogueException. `Api` is the module's export macro
/// and may be empty; the arguments after `severity` are the types of the inserts. The module defines the
/// destructor in one source file.
#define BSS_EXCEPTION_CLASS(Api, Class, code, message, severity, ...)                                        \
    class Api Class : public ::bss::WCatalogueException<Class __VA_OPT__(, ) __VA_ARGS__> {                  \
    public:                                                                                                  \
        static constexpr ::bss::WExceptionEventRow EventRow() {                                              \
            return {code, L"" #Class, message, severity};                                                    \
        }                                                                                                    \
        using WCatalogueException::WCatalogueException;                                                      \
        Class(const Class&) = default;                                                                       \
        Class& operator=(const Class&) = default;                                                            \
        ~Class() override;                                                                                   \
    };

#endif
