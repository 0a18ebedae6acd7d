// Prints the rows of NumberTexts.inc: numbers with the texts that the system's VariantChangeType gives. A
// Windows program:
//
//     cmake --build --preset mingw64 --target krtpal_golden
//     scripts/run-wine x86_64-w64-mingw32 build/mingw64/bin/krtpal_golden.exe >
//     tests/krtpal/NumberTexts.inc

#include <windows.h>

#include <oleauto.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace {

/// Shift-register generator, so that the rows are the same at each run.
std::uint64_t NextBits() {
    static std::uint64_t state = 88172645463325252U;
    state ^= state << 13U;
    state ^= state >> 7U;
    state ^= state << 17U;
    return state;
}

template <typename T>
std::vector<T> Values(int digits) {
    std::vector<T> values;
    const auto add = [&values](double value) {
        values.push_back(static_cast<T>(value));
        values.push_back(static_cast<T>(-value));
    };
    const auto addWithNeighbours = [&values, &add](double value) {
        add(value);
        values.push_back(std::nextafter(static_cast<T>(value), static_cast<T>(INFINITY)));
        values.push_back(std::nextafter(static_cast<T>(value), T{0}));
    };
    add(0.0);
    add(static_cast<double>(INFINITY));
    add(std::numeric_limits<T>::quiet_NaN());
    add(std::numeric_limits<T>::max());
    add(std::numeric_limits<T>::min());
    add(std::numeric_limits<T>::denorm_min());
    for (int exponent = -8; exponent <= digits + 3; ++exponent) {
        addWithNeighbours(std::pow(10.0, exponent));
    }
    // Exact halves of the last digit: whole numbers and a half, and odd multiples of 2^-(digits).
    const double least = std::pow(10.0, digits - 1);
    for (const double whole : {0.0, 1.0, 2.0, 3.0, 12345.0, 7777.0}) {
        add(least + whole + 0.5);
    }
    for (const double odd : {1.0, 3.0, 5.0, 7.0, 11.0, 99.0, 101.0}) {
        addWithNeighbours(1.0 + std::ldexp(odd, -digits));
        addWithNeighbours(9.0 + std::ldexp(odd, -digits));
    }
    for (const double plain :
         {0.1, 0.2, 0.3, 1.0 / 3.0, 2.0 / 3.0, 3.14159265358979, 632.8e-9, 293.15, 1.002e-3, 1.3312,
          0.00012345, 65535.0, 16777215.0, 4294967295.0, 9007199254740993.0, 999999.95, 9999999.5}) {
        values.push_back(static_cast<T>(plain));
    }
    while (values.size() < 260) {
        const T value = std::bit_cast<T>(
            static_cast<std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>>(NextBits()));
        if (std::isfinite(value)) {
            values.push_back(value);
        }
    }
    // Magnitudes of everyday use
    while (values.size() < 320) {
        const double fraction = static_cast<double>(NextBits() >> 11U) * std::ldexp(1.0, -53);
        values.push_back(
            static_cast<T>((fraction - 0.5) * std::pow(10.0, static_cast<double>(NextBits() % 24) - 8.0)));
    }
    return values;
}

void Print(VARIANT& number, const char* kind, unsigned long long bits) {
    VARIANT text;
    VariantInit(&text);
    if (FAILED(VariantChangeType(&text, &number, 0, VT_BSTR))) {
        std::fprintf(stderr, "cannot convert %llx\n", bits);
        return;
    }
    std::printf("{%s, 0x%llX, L\"%ls\"},\n", kind, bits, text.bstrVal);
    VariantClear(&text);
}

} // namespace

int main() {
    VARIANT number;
    VariantInit(&number);
    for (const double value : Values<double>(15)) {
        number.vt = VT_R8;
        number.dblVal = value;
        Print(number, "VT_R8", std::bit_cast<std::uint64_t>(value));
    }
    for (const float value : Values<float>(7)) {
        number.vt = VT_R4;
        number.fltVal = value;
        Print(number, "VT_R4", std::bit_cast<std::uint32_t>(value));
    }
}
