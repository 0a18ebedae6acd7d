// CountedText: owner of one BSTR, which may be null. A null text and an empty text are different values.
//
//     CountedText text(std::wstring_view(L"relay"));
//     const wchar_t* chars = text.Get();   // "relay", terminated
//     CountedText none;                    // none.Get() == nullptr
//
// Copies are deep. Embedded NUL characters are copied, since a BSTR stores its length.
//
// Threads: a value; one object, one thread at a time.

#ifndef BSS_EXCEPTION_COUNTEDTEXT_H
#define BSS_EXCEPTION_COUNTEDTEXT_H

#include "krtpal/variant.h"

#include <new>
#include <string_view>
#include <utility>

namespace bss {

/// Owns one BSTR or none.
class CountedText {
public:
    /// Owns no text.
    CountedText() = default;
    /// Copies the text; a null view gives an empty text. Throws std::bad_alloc if memory is short.
    explicit CountedText(std::wstring_view text)
        : m_text(Checked(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())))) {}
    /// Copies the text; null stays null. Throws std::bad_alloc if memory is short.
    CountedText(const CountedText& other)
        : m_text(other.m_text == nullptr
                     ? nullptr
                     : Checked(SysAllocStringLen(other.m_text, SysStringLen(other.m_text)))) {}
    /// Moves the text; `other` owns none afterwards.
    CountedText(CountedText&& other) noexcept : m_text(std::exchange(other.m_text, nullptr)) {}
    /// Replaces the text. A failing copy throws before this object changes.
    CountedText& operator=(CountedText other) noexcept {
        std::swap(m_text, other.m_text);
        return *this;
    }
    /// Frees the text.
    ~CountedText() { SysFreeString(m_text); }

    /// Returns an owner of `text`, which may be null. The caller must not free it.
    static CountedText Adopt(BSTR text) {
        CountedText owner;
        owner.m_text = text;
        return owner;
    }

    /// Returns the terminated text, null if there is none. The pointer is valid while the object is
    /// unchanged.
    const wchar_t* Get() const { return m_text; }

private:
    /// Throws std::bad_alloc for null, which SysAllocStringLen returns if memory is short.
    static BSTR Checked(BSTR text) {
        if (text == nullptr) {
            throw std::bad_alloc();
        }
        return text;
    }

    BSTR m_text = nullptr;
};

} // namespace bss

#endif
