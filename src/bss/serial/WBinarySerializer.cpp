#include "bss/serial/WBinarySerializer.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "krtpal/common/text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>

// Numbers are copied to the image as they are in memory.
static_assert(std::endian::native == std::endian::little);
static_assert(sizeof(short) == 2 && sizeof(int) == 4 && sizeof(float) == 4 && sizeof(double) == 8);
static_assert(sizeof(bool) == 1);

namespace bss {

static_assert(sizeof(GUID) == 16);

namespace {

// The number of bytes by which a count may exceed the rest of the image.
constexpr std::size_t kSlack = std::size_t{16} << 20U;
// The largest image: its bytes are counted in 32 bits.
constexpr std::size_t kLargestImage = UINT32_MAX;

// The fields of a `struct tm` that the image has. Some systems have more.
using TimeFields = std::array<std::int32_t, 9>;

TimeFields FieldsOf(const tm& time) {
    return {time.tm_sec,  time.tm_min,  time.tm_hour, time.tm_mday, time.tm_mon,
            time.tm_year, time.tm_wday, time.tm_yday, time.tm_isdst};
}

void SetFields(tm& time, const TimeFields& fields) {
    time.tm_sec = fields[0];
    time.tm_min = fields[1];
    time.tm_hour = fields[2];
    time.tm_mday = fields[3];
    time.tm_mon = fields[4];
    time.tm_year = fields[5];
    time.tm_wday = fields[6];
    time.tm_yday = fields[7];
    time.tm_isdst = fields[8];
}

template <class Element>
constexpr bool kIsText = std::is_same_v<Element, std::string> || std::is_same_v<Element, std::wstring>;

// Conversions between texts and their units in the image: bytes, or UTF-16 code units.

constexpr std::size_t UnitSize(const std::string& /*text*/) {
    return 1;
}
constexpr std::size_t UnitSize(const std::wstring& /*text*/) {
    return sizeof(krtpal::Utf16Unit);
}
std::size_t CountUnits(const std::string& text) {
    return text.size();
}
std::size_t CountUnits(const std::wstring& text) {
    return krtpal::Utf16Length(text);
}
// Writes the units of the text. Returns the address after them.
char* PutText(const std::string& text, char* target) {
    return std::copy(text.begin(), text.end(), target);
}
char* PutText(const std::wstring& text, char* target) {
    return static_cast<char*>(krtpal::PutUtf16(text, target));
}
void SetText(std::string& text, const char* source, std::size_t count) {
    text.resize(count);
    std::copy_n(source, count, text.data());
}
void SetText(std::wstring& text, const char* source, std::size_t count) {
    krtpal::TakeUtf16(source, count, text);
}

// The bytes before the characters of an array's string.
struct StringHead {
    std::int32_t labelLength;
    std::int32_t length;
};

// Returns the bytes of an element in the image; of a string the least, its two counts.
template <class Element>
constexpr std::size_t Width() {
    return kIsText<Element> ? 8 : std::is_same_v<Element, long> ? 4 : sizeof(Element);
}

[[noreturn]] void ThrowCannotWrite(const std::wstring& label, const std::wstring& reason) {
    throw WNESerializerError(L"cannot write item '" + label + L"': " + reason);
}

void CheckCount(const std::wstring& label, std::size_t count) {
    if (count > INT32_MAX) {
        ThrowCannotWrite(label, L"its count " + std::to_wstring(count) + L" does not fit into 32 bits");
    }
}

void CheckPointer(const std::wstring& label, const void* data, long count) {
    if (count < 0) {
        ThrowCannotWrite(label, L"its count " + std::to_wstring(count) + L" is negative");
    }
    if (data == nullptr && count > 0) {
        ThrowCannotWrite(label, L"its pointer is null and its count " + std::to_wstring(count));
    }
}

constexpr bool Fits(long value) {
    return value == static_cast<std::int32_t>(value);
}

} // namespace

WBinarySerializer::WBinarySerializer(const std::string& data, bool bLabels)
    : WSerializer(L"BINARY"), m_bLabels(bLabels), m_bIsSizing(false),
      m_nBytesWritten(static_cast<unsigned int>(data.size())), m_buffer(data) {}

WBinarySerializer::WBinarySerializer(unsigned int size, bool bLabels)
    : WSerializer(L"BINARY"), m_bLabels(bLabels), m_bIsSizing(false), m_buffer(size, '\0') {}

WBinarySerializer::WBinarySerializer(const char* data, long size, bool bLabels)
    : WSerializer(L"BINARY"), m_bLabels(bLabels), m_bIsSizing(false) {
    if (data != nullptr && size > 0) {
        m_buffer.assign(data, static_cast<std::size_t>(size));
    }
}

WBinarySerializer::WBinarySerializer(bool bIsSizing, bool bLabels)
    : WSerializer(L"BINARY"), m_bLabels(bLabels), m_bIsSizing(bIsSizing) {}

WBinarySerializer::~WBinarySerializer() = default;

unsigned int WBinarySerializer::GetBufferSize() const {
    return m_bIsSizing ? m_nBytesWritten : static_cast<unsigned int>(m_buffer.size());
}

void WBinarySerializer::WriteToBuffer(unsigned char*& target) const {
    std::copy(m_buffer.begin(), m_buffer.end(), target);
}

char* WBinarySerializer::Extend(std::size_t size) {
    const std::size_t begin = Advance(size);
    if (m_nWritePosition > m_buffer.size()) {
        m_buffer.resize(m_nWritePosition);
    }
    return m_buffer.data() + begin;
}

std::size_t WBinarySerializer::Advance(std::size_t size) {
    if (m_bEnd || m_bBad) {
        throw std::length_error(m_sErrorWrite);
    }
    const std::size_t begin = m_nWritePosition;
    try {
        if (size > kLargestImage - begin) {
            throw std::length_error(m_sErrorWrite);
        }
        // Reserve more than a large item needs: mostly small items follow, which must not move it again.
        const std::size_t needed = begin + size;
        if (needed > m_buffer.capacity()) {
            m_buffer.reserve(std::max(2 * m_buffer.capacity(), needed + needed / 8));
        }
    } catch (const std::exception&) {
        m_bBad = true;
        throw std::length_error(m_sErrorWrite);
    }
    m_nWritePosition += size;
    m_nBytesWritten += static_cast<unsigned int>(size);
    return begin;
}

std::size_t WBinarySerializer::Append(const void* data, std::size_t size) {
    if (m_bIsSizing) {
        m_nBytesWritten += static_cast<unsigned int>(size);
        return size;
    }
    const std::size_t begin = Advance(size);
    if (size != 0) {
        const auto* const bytes = static_cast<const char*>(data);
        const std::size_t over = std::min(size, m_buffer.size() - begin);
        std::memcpy(m_buffer.data() + begin, bytes, over);
        m_buffer.append(bytes + over, size - over);
    }
    return size;
}

void WBinarySerializer::AppendCount(std::size_t count) {
    const auto stored = static_cast<std::uint32_t>(count);
    Append(&stored, sizeof(stored));
}

template <class Text>
std::size_t WBinarySerializer::AppendText(const Text& text) {
    const std::size_t count = CountUnits(text);
    const std::size_t size = sizeof(std::uint32_t) + UnitSize(text) * count;
    if (m_bIsSizing) {
        return Append(nullptr, size);
    }
    const auto stored = static_cast<std::uint32_t>(count);
    char* const target = Extend(size);
    std::memcpy(target, &stored, sizeof(stored));
    PutText(text, target + sizeof(stored));
    return size;
}

// Writes the elements of an array of strings, each with an empty label.
template <class Text>
void WBinarySerializer::AppendStrings(const Text* data, std::size_t count) {
    std::size_t size = 0;
    for (std::size_t i = 0; i < count; ++i) {
        size += sizeof(StringHead) + UnitSize(data[i]) * CountUnits(data[i]);
    }
    if (m_bIsSizing) {
        Append(nullptr, size);
        return;
    }
    char* target = Extend(size);
    for (std::size_t i = 0; i < count; ++i) {
        char* const units = target + sizeof(StringHead);
        char* const end = PutText(data[i], units);
        const auto length = static_cast<std::size_t>(end - units);
        const StringHead head = {0, static_cast<std::int32_t>(length / UnitSize(data[i]))};
        std::memcpy(target, &head, sizeof(head));
        target = end;
    }
}

std::size_t WBinarySerializer::Take(void* target, std::size_t size) {
    if (m_bBad) {
        throw std::length_error(m_sErrorRead);
    }
    if (m_bEnd || size == 0) {
        return 0;
    }
    const std::size_t there = std::min(size, Remaining());
    std::memcpy(target, m_buffer.data() + m_nReadPosition, there);
    m_nReadPosition += there;
    if (there < size) {
        m_bEnd = true;
        return 0;
    }
    m_nBytesRead += static_cast<unsigned int>(size);
    return size;
}

std::size_t WBinarySerializer::CheckPromise(long count, std::size_t width) const {
    if (count < 0 || static_cast<std::uint64_t>(count) * width > std::uint64_t{Remaining()} + kSlack) {
        throw std::bad_alloc();
    }
    return static_cast<std::size_t>(count);
}

std::size_t WBinarySerializer::TakeCount(std::size_t width) {
    std::int32_t count = 0;
    Take(&count, sizeof(count));
    return CheckPromise(count, width);
}

template <class Text>
void WBinarySerializer::TakeText(Text& text) {
    const std::size_t count = TakeCount(UnitSize(text));
    if (count == 0) {
        return; // kept for compatibility: the string is unchanged
    }
    const std::size_t size = UnitSize(text) * count;
    if (size <= Remaining()) {
        SetText(text, m_buffer.data() + m_nReadPosition, count);
        m_nReadPosition += size;
        m_nBytesRead += static_cast<unsigned int>(size);
    } else {
        std::string bytes(size, '\0');
        Take(bytes.data(), size);
        SetText(text, bytes.data(), count);
    }
}

// Reads the elements of an array of strings.
template <class Text>
void WBinarySerializer::TakeStrings(Text* strings, std::size_t count) {
    std::size_t i = 0;
    // Fast path: elements that are complete and have no labels, as in every undamaged image.
    StringHead head{};
    for (; i < count && Remaining() >= sizeof(head); ++i) {
        const char* const source = m_buffer.data() + m_nReadPosition;
        std::memcpy(&head, source, sizeof(head));
        const std::size_t left = Remaining() - sizeof(head);
        if (head.labelLength != 0 || head.length < 0 ||
            static_cast<std::size_t>(head.length) > left / UnitSize(strings[i])) {
            break;
        }
        const auto length = static_cast<std::size_t>(head.length);
        SetText(strings[i], source + sizeof(head), length);
        const std::size_t size = sizeof(head) + UnitSize(strings[i]) * length;
        m_nReadPosition += size;
        m_nBytesRead += static_cast<unsigned int>(size);
    }
    for (; i < count; ++i) {
        strings[i].clear();
        SkipLabel();
        TakeText(strings[i]);
    }
}

unsigned int WBinarySerializer::Write(void* const data, unsigned int size) {
    return static_cast<unsigned int>(Append(data, size));
}

unsigned int WBinarySerializer::Read(void* target, unsigned int size) {
    return static_cast<unsigned int>(Take(target, size));
}

unsigned int WBinarySerializer::WriteLabel(const std::wstring& label) {
    if (m_bLabels) {
        return static_cast<unsigned int>(AppendText(label));
    }
    AppendCount(0);
    return sizeof(std::uint32_t);
}

unsigned int WBinarySerializer::ReadLabel(std::wstring& label) {
    label.clear();
    std::int32_t length = 0;
    std::size_t moved = Take(&length, sizeof(length));
    if (length >= 1) {
        krtpal::Utf16String units(CheckPromise(length, sizeof(krtpal::Utf16Unit)), 0);
        moved += Take(units.data(), sizeof(krtpal::Utf16Unit) * units.size());
        label = krtpal::WideFromUtf16(units);
    }
    return static_cast<unsigned int>(moved);
}

// Reads a label and discards it.
void WBinarySerializer::SkipLabel() {
    std::int32_t length = 0;
    Take(&length, sizeof(length));
    if (length < 1) {
        return;
    }
    const std::size_t size = sizeof(krtpal::Utf16Unit) * CheckPromise(length, sizeof(krtpal::Utf16Unit));
    if (m_bEnd || size > Remaining()) {
        m_nReadPosition = m_buffer.size();
        m_bEnd = true;
    } else {
        m_nReadPosition += size;
        m_nBytesRead += static_cast<unsigned int>(size);
    }
}

template <class Value>
void WBinarySerializer::InsertValue(const std::wstring& label, const Value& value) {
    WriteLabel(label);
    Append(&value, sizeof(value));
}

template <class Value>
void WBinarySerializer::RetrieveValue(Value& value) {
    SkipLabel();
    Take(&value, sizeof(value));
}

template <class Element>
void WBinarySerializer::InsertElements(const std::wstring& label, const Element* data, std::size_t count) {
    CheckCount(label, count);
    if constexpr (std::is_same_v<Element, long> && sizeof(long) > sizeof(std::int32_t)) {
        const auto* const bad = std::find_if_not(data, data + count, Fits);
        if (bad != data + count) {
            ThrowCannotWrite(label, L"its element " + std::to_wstring(bad - data) + L", " +
                                        std::to_wstring(*bad) + L", does not fit into 32 bits");
        }
        std::vector<std::int32_t> stored;
        if (!m_bIsSizing) {
            stored.resize(count);
            std::transform(data, data + count, stored.begin(),
                           [](long value) { return static_cast<std::int32_t>(value); });
        }
        WriteLabel(label);
        AppendCount(count);
        Append(stored.data(), count * sizeof(std::int32_t));
    } else if constexpr (kIsText<Element>) {
        for (std::size_t i = 0; i < count; ++i) {
            if (data[i].size() > INT32_MAX / 2) { // a character has one or two units
                CheckCount(label, CountUnits(data[i]));
            }
        }
        WriteLabel(label);
        AppendCount(count);
        AppendStrings(data, count);
    } else {
        WriteLabel(label);
        AppendCount(count);
        Append(data, count * sizeof(Element));
    }
}

template <class Element>
void WBinarySerializer::InsertArray(const std::wstring& label, const Element* data, long count) {
    CheckPointer(label, data, count);
    InsertElements(label, data, static_cast<std::size_t>(count));
}

// Reads the elements. Those beyond the end of the image keep their zeros.
template <class Element>
void WBinarySerializer::TakeElements(Element* elements, std::size_t count) {
    if constexpr (std::is_same_v<Element, long> && sizeof(long) > sizeof(std::int32_t)) {
        std::vector<std::int32_t> stored(count);
        Take(stored.data(), count * sizeof(std::int32_t));
        std::copy(stored.begin(), stored.end(), elements);
    } else if constexpr (std::is_same_v<Element, bool>) {
        std::vector<unsigned char> stored(count);
        Take(stored.data(), count);
        std::transform(stored.begin(), stored.end(), elements, [](unsigned char bit) { return bit != 0; });
    } else if constexpr (kIsText<Element>) {
        TakeStrings(elements, count);
    } else {
        Take(elements, count * sizeof(Element));
    }
}

template <class Element>
void WBinarySerializer::RetrieveArray(Element*& data, long& count) {
    data = nullptr;
    count = 0;
    SkipLabel();
    const std::size_t promised = TakeCount(Width<Element>());
    if (promised == 0) {
        return;
    }
    std::unique_ptr<Element[]> elements(new Element[promised]());
    TakeElements(elements.get(), promised);
    data = elements.release();
    count = static_cast<long>(promised);
}

template <class Element>
void WBinarySerializer::RetrieveVector(std::vector<Element>& values) {
    SkipLabel();
    const std::size_t promised = TakeCount(Width<Element>());
    if (!kIsText<Element> && promised * Width<Element>() > Remaining()) {
        values.clear(); // elements beyond the end of the image become zeros
    }
    values.resize(promised);
    TakeElements(values.data(), promised);
}

void WBinarySerializer::Insert(const std::wstring& label, const std::vector<std::wstring>& values) {
    InsertElements(label, values.data(), values.size());
}

void WBinarySerializer::Insert(const std::wstring& label, const std::vector<bool>& values) {
    std::vector<unsigned char> bytes;
    if (!m_bIsSizing) {
        bytes.assign(values.begin(), values.end());
    }
    InsertElements(label, bytes.data(), values.size());
}

void WBinarySerializer::Insert(const std::wstring& label, const std::vector<double>& values) {
    InsertElements(label, values.data(), values.size());
}

void WBinarySerializer::Insert(const std::wstring& label, const std::vector<long>& values) {
    InsertElements(label, values.data(), values.size());
}

void WBinarySerializer::Insert(const std::wstring& label, const std::vector<int>& values) {
    InsertElements(label, values.data(), values.size());
}

void WBinarySerializer::Insert(const std::wstring& label, const std::wstring& value) {
    CheckCount(label, krtpal::Utf16Length(value));
    WriteLabel(label);
    AppendText(value);
}

void WBinarySerializer::Insert(const std::wstring& label, const std::string& value) {
    CheckCount(label, value.size());
    WriteLabel(label);
    AppendText(value);
}

void WBinarySerializer::Insert(const std::wstring& label, const std::wstring* const data, long count) {
    InsertArray(label, data, count);
}

void WBinarySerializer::Insert(const std::wstring& label, const std::string* const data, long count) {
    InsertArray(label, data, count);
}

void WBinarySerializer::Insert(const std::wstring& label, const double* const data, long count) {
    InsertArray(label, data, count);
}

void WBinarySerializer::Insert(const std::wstring& label, const float* const data, long count) {
    InsertArray(label, data, count);
}

void WBinarySerializer::Insert(const std::wstring& label, const long* const data, long count) {
    InsertArray(label, data, count);
}

void WBinarySerializer::Insert(const std::wstring& label, const unsigned char* const data, long count) {
    InsertArray(label, data, count);
}

void WBinarySerializer::Insert(const std::wstring& label, struct tm value) {
    InsertValue(label, FieldsOf(value));
}

void WBinarySerializer::Insert(const std::wstring& label, GUID value) {
    InsertValue(label, value);
}

void WBinarySerializer::Insert(const std::wstring& label, double value) {
    InsertValue(label, value);
}

void WBinarySerializer::Insert(const std::wstring& label, float value) {
    InsertValue(label, value);
}

void WBinarySerializer::Insert(const std::wstring& label, long value) {
    if (!Fits(value)) {
        ThrowCannotWrite(label, L"its value " + std::to_wstring(value) + L" does not fit into 32 bits");
    }
    InsertValue(label, static_cast<std::int32_t>(value));
}

void WBinarySerializer::Insert(const std::wstring& label, short value) {
    InsertValue(label, value);
}

void WBinarySerializer::Insert(const std::wstring& label, bool value) {
    InsertValue(label, value);
}

void WBinarySerializer::InsertF(const std::wstring& label, const std::vector<double>& values) {
    CheckCount(label, values.size());
    WriteLabel(label);
    AppendCount(values.size());
    std::vector<float> singles;
    if (!m_bIsSizing) {
        // Single precision is the format of InsertF.
        singles.assign(values.begin(), values.end());
    }
    Append(singles.data(), values.size() * sizeof(float));
}

void WBinarySerializer::Insert(const std::wstring& label, const std::list<int>& values) {
    std::vector<int> elements;
    if (!m_bIsSizing) {
        elements.assign(values.begin(), values.end());
    }
    InsertElements(label, elements.data(), values.size());
}

void WBinarySerializer::Insert(const std::wstring& label, const std::vector<std::string>& values) {
    InsertElements(label, values.data(), values.size());
}

void WBinarySerializer::Insert(const std::wstring& label, const int* const data, long count) {
    InsertArray(label, data, count);
}

void WBinarySerializer::Insert(const std::wstring& label, const short* const data, long count) {
    InsertArray(label, data, count);
}

void WBinarySerializer::Insert(const std::wstring& label, const bool* const data, long count) {
    InsertArray(label, data, count);
}

void WBinarySerializer::Insert(const std::wstring& label, int value) {
    InsertValue(label, value);
}

void WBinarySerializer::Insert(const std::wstring& label, unsigned short value) {
    InsertValue(label, value);
}

void WBinarySerializer::InsertEx(const std::wstring& label, void* const data, unsigned int size) {
    if (data == nullptr && size > 0) {
        ThrowCannotWrite(label, L"its pointer is null and its size " + std::to_wstring(size));
    }
    WriteLabel(label);
    Write(data, size);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, std::vector<std::wstring>& values) {
    std::vector<std::wstring> strings;
    strings.swap(values); // `values` is empty if the read fails
    RetrieveVector(strings);
    values.swap(strings);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, std::vector<bool>& values) {
    std::vector<unsigned char> bytes;
    RetrieveVector(bytes);
    values.resize(bytes.size());
    std::transform(bytes.begin(), bytes.end(), values.begin(), [](unsigned char bit) { return bit != 0; });
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, std::vector<double>& values) {
    RetrieveVector(values);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, std::vector<long>& values) {
    RetrieveVector(values);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, std::vector<int>& values) {
    RetrieveVector(values);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, std::wstring& value) {
    SkipLabel();
    TakeText(value);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, std::string& value) {
    SkipLabel();
    TakeText(value);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, std::wstring*& data, long& count) {
    RetrieveArray(data, count);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, std::string*& data, long& count) {
    RetrieveArray(data, count);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, double*& data, long& count) {
    RetrieveArray(data, count);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, float*& data, long& count) {
    RetrieveArray(data, count);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, long*& data, long& count) {
    RetrieveArray(data, count);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, unsigned char*& data, long& count) {
    RetrieveArray(data, count);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, struct tm& value) {
    TimeFields fields = FieldsOf(value);
    RetrieveValue(fields);
    SetFields(value, fields);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, GUID& value) {
    RetrieveValue(value);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, double& value) {
    RetrieveValue(value);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, float& value) {
    RetrieveValue(value);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, long& value) {
    std::int32_t stored = 0;
    SkipLabel();
    if (Take(&stored, sizeof(stored)) != 0) {
        value = stored;
    }
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, short& value) {
    RetrieveValue(value);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, bool& value) {
    auto bit = static_cast<unsigned char>(value);
    RetrieveValue(bit);
    value = bit != 0;
}

void WBinarySerializer::RetrieveF(const std::wstring& /*label*/, std::vector<double>& values) {
    std::vector<float> singles;
    RetrieveVector(singles);
    values.assign(singles.begin(), singles.end());
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, std::list<int>& values) {
    values.clear();
    std::vector<int> elements;
    RetrieveVector(elements);
    values.assign(elements.begin(), elements.end());
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, std::vector<std::string>& values) {
    std::vector<std::string> strings;
    strings.swap(values); // `values` is empty if the read fails
    RetrieveVector(strings);
    values.swap(strings);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, int*& data, long& count) {
    RetrieveArray(data, count);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, short*& data, long& count) {
    RetrieveArray(data, count);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, bool*& data, long& count) {
    RetrieveArray(data, count);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, int& value) {
    RetrieveValue(value);
}

void WBinarySerializer::Retrieve(const std::wstring& /*label*/, unsigned short& value) {
    RetrieveValue(value);
}

void WBinarySerializer::RetrieveEx(const std::wstring& /*label*/, void* data, unsigned int size) {
    SkipLabel();
    Read(data, size);
}

} // namespace bss
