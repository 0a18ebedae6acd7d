// CountedText: owner of one BSTR, which may be null. A null text and an empty text are different values.

#ifndef BSS_EXCEPTION_COUNTEDTEXT_H
#define BSS_EXCEPTION_COUNTEDTEXT_H

#include "krtpal/variant.h"

#include <new>
#include <string_view>
#include <utility>

namespace bss {

class CountedText {
public:
    CountedText() = default;
    explicit CountedText(std::wstring_view text)
        : m_text(Checked(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())))) {}
    CountedText(const CountedText& other)
        : m_text(other.m_text == nullptr
                     ? nullptr
                     : Checked(SysAllocStringLen(other.m_text, SysStringLen(other.m_text)))) {}
    CountedText(CountedText&& other) noexcept : m_text(std::exchange(other.m_text, nullptr)) {}
    CountedText& operator=(CountedText other) noexcept {
        std::swap(m_text, other.m_text);
        return *this;
    }
    ~CountedText() { SysFreeString(m_text); }

    /// Takes a BSTR over.
    static CountedText Adopt(BSTR text) {
        CountedText owner;
        owner.m_text = text;
        return owner;
    }

    /// Null if there is no text.
    const wchar_t* Get() const { return m_text; }

private:
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
