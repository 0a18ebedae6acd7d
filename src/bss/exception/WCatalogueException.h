// The pattern of an exception class: what each class of the catalogue has, written once.
//
// A module that wants a failure of its own declares it in a header
//
//     BSS_EXCEPTION_CLASS(MYLIB_API, WNELaserOff, 20001, L"Laser %1 is off.", bss::MAJOR, long)
//
// and defines its destructor in one source file, which also puts its descriptor into the list at load:
//
//     WNELaserOff::~WNELaserOff() = default;
//
// MYLIB_API makes the class visible outside its module (it may be empty). Arguments follow the severity in
// the order of the template's inserts: std::wstring or a number. The class can then be thrown as
// `WNELaserOff(2)` or, with a cause, `WNELaserOff(2, &cause)`.

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

/// What a class of the pattern says of itself.
struct WExceptionEventRow {
    long code;
    const wchar_t* name;
    const wchar_t* message;
    eseverity severity;
};

template <class Event, class... Arguments>
class KRTPAL_TYPE_API WCatalogueException : public WNestedException {
    /// Text comes by reference, a number by value.
    template <class Argument>
    using Parameter = std::conditional_t<std::is_arithmetic_v<Argument>, Argument, const Argument&>;

public:
    /// `pNext`, the cause, is cloned and may be null.
    explicit WCatalogueException(Parameter<Arguments>... arguments, const WNestedException* pNext = nullptr)
        : m_arguments(arguments...) {
        CloneNext(pNext);
        Prepare();
    }

    /// From a record: the arguments are there as text only, the typed ones are empty.
    WCatalogueException(const WNestedExceptionData& data, const WNestedException* next)
        : WNestedException(data, next, &s_eventInfo) {
        Prepare();
    }

    WCatalogueException(const WCatalogueException& other)
        : WNestedException(other), m_arguments(other.m_arguments) {
        Prepare();
    }

    ~WCatalogueException() override = default;

    WCatalogueException& operator=(const WCatalogueException& other) {
        // The other may be a link of this object's own chain, and gone after the base's assignment.
        auto arguments = other.m_arguments;
        WNestedException::operator=(other);
        m_arguments = std::move(arguments);
        return *this;
    }

    const WExceptionEventInfo& GetEventInfo() const override { return s_eventInfo; }
    int GetRevision() const override { return 1; }
    WNestedException* clone() const override { return new Event(static_cast<const Event&>(*this)); }

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

    /// Argument `index`, which fills insert `%(index + 1)`; empty in an object that was made from a record.
    template <std::size_t index>
    const auto& GetArgument() const {
        return std::get<index>(m_arguments);
    }

private:
    static void ThrowEvent(WNestedExceptionData& data, WNestedException* next) { throw Event(data, next); }

    void Prepare() {
        // The descriptor has it from its construction on. Every module has an address of its own for this
        // function: storing it again would leave the last thrower's, whose module may be gone by then, and
        // threads would race.
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
