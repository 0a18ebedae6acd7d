// Values: the form of each kind in its column, and its contribution to the checksum.

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/WVersion.h"
#include "bss/serial/database/WChecksum.h"
#include "bss/serial/database/WDatabase.h"
#include "bss/serial/database/private/SqlDialect.h"
#include "bss/system/WCompression.h"
#include "bss/system/WGuid.h"
#include "krtpal/common/odbc.h"
#include "krtpal/common/text.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <ctime>
#include <limits>
#include <new>
#include <stdexcept>
#include <type_traits>

// Numbers are copied to binary columns as they are in memory.
static_assert(std::endian::native == std::endian::little);

namespace bss {

namespace {

namespace odbc = krtpal::odbc;

// Binary data of at least this size are compressed.
constexpr std::size_t kCompressed = 1001;
// Follows each string of an array.
constexpr wchar_t kDelimiter = 0xFAB5;
// The largest expansion of a byte in zlib's format.
constexpr std::size_t kMostExpansion = 1032;

// Precedes binary data from version 5.3.2.0 on.
struct FrameHeader {
    std::uint32_t total;
    std::uint32_t compressed; // 0 for uncompressed data
    std::uint32_t length;
    std::uint32_t lengthAgain;
};
static_assert(sizeof(FrameHeader) == 16);

bool HasFrames(const WPersistentObject& object) {
    return object.GetVersion() >= WVersion::GetVersion(5, 3, 2, 0);
}

std::vector<unsigned char> Compressed(const unsigned char* data, std::size_t length, std::size_t room) {
    unsigned long packed = WCompression::CompressBound(static_cast<unsigned long>(length));
    std::vector<unsigned char> bytes(room + packed);
    WCompression::Compress(bytes.data() + room, &packed, data, static_cast<unsigned long>(length));
    bytes.resize(room + packed);
    return bytes;
}

std::vector<unsigned char> Uncompressed(const unsigned char* data, std::size_t size, std::size_t length) {
    if (length / kMostExpansion > size) {
        throw WNESerializerError(L"Unexpected error reading data.");
    }
    std::vector<unsigned char> bytes(length);
    auto room = static_cast<unsigned long>(length);
    WCompression::Uncompress(bytes.data(), &room, data, static_cast<unsigned long>(size));
    bytes.resize(room);
    return bytes;
}

std::wstring Digits(int value, std::size_t count) {
    const std::wstring text = std::to_wstring(value);
    return std::wstring(count - std::min(count, text.size()), L'0') + text;
}

int NumberAt(const std::wstring& text, std::size_t at, std::size_t count) {
    int value = 0;
    for (std::size_t i = at; i < std::min(at + count, text.size()); ++i) {
        if (text[i] < L'0' || text[i] > L'9') {
            break;
        }
        value = value * 10 + static_cast<int>(text[i] - L'0');
    }
    return value;
}

} // namespace

std::wstring WDatabase::GetTimeString(struct tm time) {
    return Digits(time.tm_year + 1900, 4) + L"-" + Digits(time.tm_mon + 1, 2) + L"-" +
           Digits(time.tm_mday, 2) + L" " + Digits(time.tm_hour, 2) + L":" + Digits(time.tm_min, 2) + L":" +
           Digits(time.tm_sec, 2);
}

void WDatabase::GetTimeStructure(const std::wstring& text, struct tm& time) {
    time.tm_year = NumberAt(text, 0, 4) - 1900;
    time.tm_mon = NumberAt(text, 5, 2) - 1;
    time.tm_mday = NumberAt(text, 8, 2);
    time.tm_hour = NumberAt(text, 11, 2);
    time.tm_min = NumberAt(text, 14, 2);
    time.tm_sec = NumberAt(text, 17, 2);
    time.tm_isdst = 0;
}

long WDatabase::EscapeString(unsigned char* out, const unsigned char* in, long length) {
    struct Escape {
        unsigned char byte;
        unsigned char letter;
    };
    static constexpr Escape kEscapes[] = {{0, '0'},  {10, 'n'},  {13, 'r'}, {26, 'Z'},
                                          {34, '"'}, {39, '\''}, {92, '\\'}};
    unsigned char* at = out;
    for (long i = 0; i < length; ++i) {
        const auto* const escape = std::find_if(std::begin(kEscapes), std::end(kEscapes),
                                                [&](const Escape& each) { return each.byte == in[i]; });
        if (escape == std::end(kEscapes)) {
            *at++ = in[i];
        } else {
            *at++ = '\\';
            *at++ = escape->letter;
        }
    }
    *at = 0;
    return static_cast<long>(at - out);
}

void WDatabase::AddToCheckSum(long value) {
    char text[32];
    const std::to_chars_result end = std::to_chars(std::begin(text), std::end(text), value);
    m_CheckSumText.append(static_cast<const char*>(text), static_cast<const char*>(end.ptr));
}

// Adds five significant digits, independent of locale and C library. NaN has no sign: back-ends drop it.
void WDatabase::AddToCheckSum(double value) {
    value = std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value;
    char text[32];
    const std::to_chars_result end =
        std::to_chars(std::begin(text), std::end(text), value, std::chars_format::scientific, 4);
    m_CheckSumText.append(static_cast<const char*>(text), static_cast<const char*>(end.ptr));
}

void WDatabase::AddToCheckSum(const std::wstring& value) {
    m_CheckSumText += value;
}

std::wstring WDatabase::ClassAndColumn(const std::wstring& key) const {
    return NameOfCurrentClass() + L" and column " + key;
}

const WDatabase::parameter* WDatabase::FindParameter(const std::wstring& key) const {
    const auto found = std::find_if(m_Parameters.begin(), m_Parameters.end(),
                                    [&](const auto& each) { return each->name == key; });
    return found == m_Parameters.end() ? nullptr : found->get();
}

const WDatabase::parameter& WDatabase::DemandParameter(const std::wstring& key, const wchar_t* text) const {
    const parameter* const found = FindParameter(key);
    if (found == nullptr) {
        throw WNESerializerError(text + ClassAndColumn(key));
    }
    return *found;
}

void WDatabase::AddParameter(parameter::e_kind kind, const std::wstring& key, const void* data,
                             std::size_t length) {
    if (length > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()) / 2) {
        throw WNESerializerError(L"cannot write column '" + key + L"': its value has more than 1 GiB");
    }
    // A driver treats a null pointer as NULL, which differs from an empty value.
    m_Parameters.push_back(std::make_unique<parameter>(kind, key, data == nullptr ? "" : data,
                                                       static_cast<std::int32_t>(length),
                                                       m_pCurrentObject->GetVersion()));
}

template <class Value>
bool WDatabase::TakeFixed(const std::wstring& key, const wchar_t* text, Value* value) const {
    const parameter& found = DemandParameter(key, text);
    const bool isThere = found.data != nullptr && found.GetByteCount() >= sizeof(Value);
    if (isThere) {
        std::memcpy(value, found.data.get(), sizeof(Value));
    }
    return isThere;
}

void WDatabase::Insert(const std::wstring& key, bool value) {
    CreateColumn(key, m_DataTypes[m_nBitType]);
    if (IsSchemaPass()) {
        return;
    }
    AddToCheckSum(value ? 1L : 0L);
    const bool isBit = m_nBitType == odbc::kBit;
    const unsigned char byte = isBit ? (value ? 1 : 0) : (value ? '1' : '0');
    AddParameter(isBit ? parameter::kindBit : parameter::kindBoolCharacter, key, &byte, 1);
}

void WDatabase::Retrieve(const std::wstring& key, bool& value) {
    unsigned char byte = 0;
    value = TakeFixed(key, L"No data found for table (2) ", &byte) && byte != 0 && byte != '0';
    AddToCheckSum(value ? 1L : 0L);
}

void WDatabase::Insert(const std::wstring& key, long value) {
    const auto stored = static_cast<std::int32_t>(value);
    if (stored != value) {
        throw WNESerializerError(L"cannot write column '" + key + L"': its value " + std::to_wstring(value) +
                                 L" does not fit into 32 bits");
    }
    CreateColumn(key, m_DataTypes[m_nIntegerType]);
    if (IsSchemaPass()) {
        return;
    }
    AddToCheckSum(value);
    AddParameter(parameter::kindInteger, key, &stored, sizeof(stored));
}

void WDatabase::Retrieve(const std::wstring& key, long& value) {
    std::int32_t stored = 0;
    TakeFixed(key, L"No data found for table (3) ", &stored);
    value = stored;
    AddToCheckSum(value);
}

void WDatabase::Insert(const std::wstring& key, int value) {
    Insert(key, static_cast<long>(value));
}

void WDatabase::Retrieve(const std::wstring& key, int& value) {
    long wide = 0;
    Retrieve(key, wide);
    value = static_cast<int>(wide);
}

void WDatabase::Insert(const std::wstring& key, short value) {
    Insert(key, static_cast<long>(value));
}

void WDatabase::Retrieve(const std::wstring& key, short& value) {
    long wide = 0;
    Retrieve(key, wide);
    value = static_cast<short>(wide); // the low 16 bits
}

void WDatabase::Insert(const std::wstring& key, double value) {
    CreateColumn(key, m_DataTypes[m_nDoubleType]);
    if (IsSchemaPass()) {
        return;
    }
    AddToCheckSum(value);
    AddParameter(parameter::kindDouble, key, &value, sizeof(value));
}

void WDatabase::Retrieve(const std::wstring& key, double& value) {
    value = 0.0;
    TakeFixed(key, L"No data found for table (4) ", &value);
    AddToCheckSum(value);
}

void WDatabase::Insert(const std::wstring& key, float value) {
    Insert(key, static_cast<double>(value));
}

void WDatabase::Retrieve(const std::wstring& key, float& value) {
    double wide = 0.0;
    Retrieve(key, wide);
    value = static_cast<float>(wide);
}

void WDatabase::Insert(const std::wstring& key, const std::wstring& value) {
    CreateColumn(key, m_DataTypes[odbc::kWLongVarChar]);
    if (IsSchemaPass()) {
        return;
    }
    const std::wstring text = value.empty() ? L" " : value;
    AddToCheckSum(text);
    const auto units = krtpal::Utf16FromWide(text);
    AddParameter(parameter::kindText, key, units.data(), units.size());
}

void WDatabase::Retrieve(const std::wstring& key, std::wstring& value) {
    value.clear();
    const parameter& found = DemandParameter(key, L"No data found for table (5) ");
    if (found.data != nullptr) {
        krtpal::Utf16String units(static_cast<std::size_t>(found.dataLength), 0);
        std::memcpy(units.data(), found.data.get(), found.GetByteCount());
        value = std::wstring(krtpal::WideFromUtf16(units));
    }
    AddToCheckSum(value);
    if (value == L" ") { // an empty text
        value.clear();
    }
}

void WDatabase::Insert(const std::wstring& key, struct tm value) {
    Insert(key, GetTimeString(value));
}

void WDatabase::Retrieve(const std::wstring& key, struct tm& value) {
    std::wstring text;
    Retrieve(key, text);
    GetTimeStructure(text, value);
}

void WDatabase::Insert(const std::wstring& key, GUID value) {
    CreateColumn(key, m_DataTypes[odbc::kGuid]);
    if (IsSchemaPass()) {
        return;
    }
    AddToCheckSum(WGuid::GetAsText(value));
    AddParameter(parameter::kindGuid, key, &value, sizeof(value));
}

void WDatabase::Retrieve(const std::wstring& key, GUID& value) {
    value = GUID{};
    odbc::Length indicator = 0;
    odbc::Result result = odbc::kNoData;
    if (!m_pDialect->KeepsStatements()) {
        const int index = GetColumnIndexFromName(key);
        result = odbc::GetData(m_hStmt, static_cast<std::uint16_t>(index), odbc::kCGuid, &value,
                               sizeof(value), &indicator);
    }
    if (result == odbc::kNoData || (!odbc::Succeeded(result) && !m_bAnyOrder)) {
        // A driver that returns a value once, or only in the order of the columns, returned it when the row
        // was fetched; a closed row was fetched whole.
        const parameter& fetched = DemandParameter(key, L"No data found for table (8) ");
        indicator = fetched.data == nullptr ? odbc::kNullData : fetched.dataLength;
        TakeFixed(key, L"", &value);
    } else if (!odbc::Succeeded(result)) {
        throw WNESerializerError(GetErrorMsg(m_hStmt, odbc::kStatement) + GetPosition(m_pCurrentObject, key));
    }
    if (indicator == odbc::kNullData || indicator == odbc::kNoTotal) {
        throw WNESerializerError(L"Unable to read corrupt data." + GetErrorMsg(m_hStmt, odbc::kStatement) +
                                 GetPosition(m_pCurrentObject, key));
    }
    AddToCheckSum(WGuid::GetAsText(value));
}

void WDatabase::InsertBinary(const std::wstring& key, const void* data, std::size_t length) {
    const auto fail = [&](const std::wstring& cause) {
        throw WNESerializerError(L"Unexpected database serialization error.\n\n" + cause + L"\n\n" +
                                 NameOfCurrentClass() + L"::" + key);
    };
    try {
        const auto* const bytes = static_cast<const unsigned char*>(data);
        if (HasFrames(*m_pCurrentObject)) {
            InsertFrame(key, bytes, length);
        } else {
            InsertOldBinary(key, bytes, length);
        }
    } catch (const std::bad_alloc&) {
        fail(L"Memory allocation failure");
    } catch (const WNestedException& e) {
        fail(e.AsString(false));
    } catch (const std::exception& e) {
        fail(krtpal::WidenText(e.what()));
    }
}

void WDatabase::InsertFrame(const std::wstring& key, const unsigned char* data, std::size_t length) {
    CreateColumn(key, m_DataTypes[odbc::kLongVarBinary]);
    if (IsSchemaPass()) {
        return;
    }
    std::vector<unsigned char> frame;
    if (length < kCompressed) {
        frame.resize(sizeof(FrameHeader));
        frame.insert(frame.end(), data, data + length);
    } else {
        frame = Compressed(data, length, sizeof(FrameHeader));
    }
    const auto total = static_cast<std::uint32_t>(frame.size());
    const FrameHeader header{
        total, length < kCompressed ? 0 : total - static_cast<std::uint32_t>(sizeof(FrameHeader)),
        static_cast<std::uint32_t>(length), static_cast<std::uint32_t>(length)};
    std::memcpy(frame.data(), &header, sizeof(header));
    AddToCheckSum(std::to_wstring(WChecksum::GetCheckSum(frame.data(), total, 0)));
    AddParameter(parameter::kindBinary, key, frame.data(), frame.size());
}

void WDatabase::InsertOldBinary(const std::wstring& key, const unsigned char* data, std::size_t length) {
    std::vector<unsigned char> stored;
    if (length < kCompressed) {
        stored.assign(data, data + length);
    } else if (!IsSchemaPass()) {
        stored = Compressed(data, length, 0);
    }
    Insert(key + L"L", static_cast<long>(stored.size()));
    Insert(key + L"LU", static_cast<long>(length));
    CreateColumn(key, m_DataTypes[odbc::kLongVarBinary]);
    if (IsSchemaPass()) {
        return;
    }
    AddOldCheckSum(stored.data(), stored.size());
    AddParameter(parameter::kindBinary, key, stored.data(), stored.size());
}

// Below version 5.3.0.9 the checksum covers the escaped bytes, as in the text of a statement.
void WDatabase::AddOldCheckSum(unsigned char* data, std::size_t length) {
    if (length == 0) {
        return;
    }
    std::vector<unsigned char> escaped;
    if (m_pCurrentObject->GetVersion() < WVersion::GetVersion(5, 3, 0, 9)) {
        escaped.resize(2 * length + 1);
        length = static_cast<std::size_t>(EscapeString(escaped.data(), data, static_cast<long>(length)));
        data = escaped.data();
    }
    AddToCheckSum(std::to_wstring(WChecksum::GetCheckSum(data, static_cast<unsigned long>(length), 0)));
}

std::vector<unsigned char> WDatabase::RetrieveBinary(const std::wstring& key) {
    return HasFrames(*m_pCurrentObject) ? RetrieveFrame(key) : RetrieveOldBinary(key);
}

std::vector<unsigned char> WDatabase::RetrieveFrame(const std::wstring& key) {
    const parameter* const found = FindParameter(key);
    if (found == nullptr) {
        throw WNESerializerError(L"Unexpected error reading data.");
    }
    const std::size_t size = found->GetByteCount();
    if (found->data == nullptr && size == 0) {
        return {};
    }
    FrameHeader header{};
    if (found->data == nullptr || size < sizeof(header)) {
        throw std::runtime_error("Unexpected error reading data");
    }
    AddToCheckSum(
        std::to_wstring(WChecksum::GetCheckSum(found->data.get(), static_cast<unsigned long>(size), 0)));
    std::memcpy(&header, found->data.get(), sizeof(header));
    if (header.lengthAgain == 0) {
        return {};
    }
    const unsigned char* const payload = found->data.get() + sizeof(header);
    const std::size_t rest = size - sizeof(header);
    if ((header.compressed == 0 ? header.length : header.compressed) > rest) {
        throw std::runtime_error("Unexpected error reading data");
    }
    return header.compressed == 0 ? std::vector<unsigned char>(payload, payload + header.length)
                                  : Uncompressed(payload, header.compressed, header.length);
}

std::vector<unsigned char> WDatabase::RetrieveOldBinary(const std::wstring& key) {
    long stored = 0;
    long length = 0;
    Retrieve(key + L"L", stored);
    Retrieve(key + L"LU", length);
    if (stored == 0) {
        return {};
    }
    const parameter* const found = FindParameter(key);
    if (found == nullptr) {
        throw WNESerializerError(L"No data found for table (6)");
    }
    if (found->dataLength != stored || found->data == nullptr || length < 0) {
        throw WNESerializerError(L"Corrupt data for table");
    }
    const auto size = static_cast<std::size_t>(stored);
    AddOldCheckSum(found->data.get(), size);
    return static_cast<std::size_t>(length) < kCompressed
               ? std::vector<unsigned char>(found->data.get(), found->data.get() + size)
               : Uncompressed(found->data.get(), size, static_cast<std::size_t>(length));
}

template <class Element>
void WDatabase::InsertElements(const std::wstring& key, const Element* data, std::size_t count) {
    if constexpr (std::is_same_v<Stored<Element>, Element>) {
        InsertBinary(key, data, count * sizeof(Element));
    } else {
        std::vector<Stored<Element>> stored(count);
        for (std::size_t i = 0; i < count; ++i) {
            stored[i] = static_cast<Stored<Element>>(data[i]);
            if (static_cast<Element>(stored[i]) != data[i]) {
                throw WNESerializerError(L"cannot write column '" + key + L"': its element " +
                                         std::to_wstring(i) + L", " + std::to_wstring(data[i]) +
                                         L", does not fit into 32 bits");
            }
        }
        InsertBinary(key, stored.data(), count * sizeof(Stored<Element>));
    }
}

template <class Element>
void WDatabase::InsertArray(const std::wstring& key, const Element* data, long count) {
    if (count < 0 || (data == nullptr && count > 0)) {
        throw WNESerializerError(L"cannot write column '" + key + L"': a null pointer or a negative count");
    }
    InsertElements(key, data, static_cast<std::size_t>(count));
}

template <class Element>
auto WDatabase::RetrieveElements(const std::wstring& key) -> std::vector<Stored<Element>> {
    const std::vector<unsigned char> bytes = RetrieveBinary(key);
    std::vector<Stored<Element>> elements(bytes.size() / sizeof(Stored<Element>));
    if (!elements.empty()) {
        std::memcpy(elements.data(), bytes.data(), elements.size() * sizeof(Stored<Element>));
    }
    return elements;
}

template <class Element>
void WDatabase::RetrieveArray(const std::wstring& key, Element*& data, long& count) {
    data = nullptr;
    count = 0;
    const auto elements = RetrieveElements<Element>(key);
    if (!elements.empty()) {
        data = new Element[elements.size()];
        std::transform(elements.begin(), elements.end(), data,
                       [](Stored<Element> each) { return static_cast<Element>(each); });
        count = static_cast<long>(elements.size());
    }
}

template <class Element>
void WDatabase::RetrieveVector(const std::wstring& key, std::vector<Element>& values) {
    const auto elements = RetrieveElements<Element>(key);
    values.assign(elements.begin(), elements.end());
}

void WDatabase::Insert(const std::wstring& key, const unsigned char* const data, long count) {
    InsertArray(key, data, count);
}

void WDatabase::Retrieve(const std::wstring& key, unsigned char*& data, long& count) {
    RetrieveArray(key, data, count);
}

void WDatabase::Insert(const std::wstring& key, const short* const data, long count) {
    InsertArray(key, data, count);
}

void WDatabase::Retrieve(const std::wstring& key, short*& data, long& count) {
    RetrieveArray(key, data, count);
}

void WDatabase::Insert(const std::wstring& key, const std::vector<short>& values) {
    InsertElements(key, values.data(), values.size());
}

void WDatabase::Retrieve(const std::wstring& key, std::vector<short>& values) {
    RetrieveVector(key, values);
}

void WDatabase::Insert(const std::wstring& key, const int* const data, long count) {
    InsertArray(key, data, count);
}

void WDatabase::Retrieve(const std::wstring& key, int*& data, long& count) {
    RetrieveArray(key, data, count);
}

void WDatabase::Insert(const std::wstring& key, const std::vector<int>& values) {
    InsertElements(key, values.data(), values.size());
}

void WDatabase::Retrieve(const std::wstring& key, std::vector<int>& values) {
    RetrieveVector(key, values);
}

void WDatabase::Insert(const std::wstring& key, const long* const data, long count) {
    InsertArray(key, data, count);
}

void WDatabase::Retrieve(const std::wstring& key, long*& data, long& count) {
    RetrieveArray(key, data, count);
}

void WDatabase::Insert(const std::wstring& key, const std::vector<long>& values) {
    InsertElements(key, values.data(), values.size());
}

void WDatabase::Retrieve(const std::wstring& key, std::vector<long>& values) {
    RetrieveVector(key, values);
}

void WDatabase::Insert(const std::wstring& key, const float* const data, long count) {
    InsertArray(key, data, count);
}

void WDatabase::Retrieve(const std::wstring& key, float*& data, long& count) {
    RetrieveArray(key, data, count);
}

void WDatabase::Insert(const std::wstring& key, const std::vector<float>& values) {
    InsertElements(key, values.data(), values.size());
}

void WDatabase::Retrieve(const std::wstring& key, std::vector<float>& values) {
    RetrieveVector(key, values);
}

void WDatabase::Insert(const std::wstring& key, const double* const data, long count) {
    InsertArray(key, data, count);
}

void WDatabase::Retrieve(const std::wstring& key, double*& data, long& count) {
    RetrieveArray(key, data, count);
}

void WDatabase::Insert(const std::wstring& key, const std::vector<double>& values) {
    InsertElements(key, values.data(), values.size());
}

void WDatabase::Retrieve(const std::wstring& key, std::vector<double>& values) {
    RetrieveVector(key, values);
}

void WDatabase::Insert(const std::wstring& key, const bool* const data, long count) {
    InsertArray(key, data, count);
}

void WDatabase::Retrieve(const std::wstring& key, bool*& data, long& count) {
    RetrieveArray(key, data, count);
}

void WDatabase::Insert(const std::wstring& key, const std::vector<bool>& values) {
    const std::vector<unsigned char> bytes(values.begin(), values.end());
    InsertElements(key, bytes.data(), bytes.size());
}

void WDatabase::Retrieve(const std::wstring& key, std::vector<bool>& values) {
    const auto bytes = RetrieveElements<unsigned char>(key);
    values.resize(bytes.size());
    std::transform(bytes.begin(), bytes.end(), values.begin(), [](unsigned char each) { return each != 0; });
}

void WDatabase::InsertF(const std::wstring& key, const std::vector<double>& values) {
    if (HasFrames(*m_pCurrentObject)) {
        InsertElements(key, values.data(), values.size());
    } else {
        // Single precision is the format of older versions.
        Insert(key, std::vector<float>(values.begin(), values.end()));
    }
}

void WDatabase::RetrieveF(const std::wstring& key, std::vector<double>& values) {
    if (HasFrames(*m_pCurrentObject)) {
        RetrieveVector(key, values);
    } else {
        std::vector<float> singles;
        RetrieveVector(key, singles);
        values.assign(singles.begin(), singles.end());
    }
}

void WDatabase::Insert(const std::wstring& key, const std::string& value) {
    const std::string text = value.empty() ? " " : value;
    InsertBinary(key, text.data(), text.size());
}

void WDatabase::Retrieve(const std::wstring& key, std::string& value) {
    const std::vector<unsigned char> bytes = RetrieveBinary(key);
    value.assign(bytes.begin(), bytes.end());
}

void WDatabase::InsertStrings(const std::wstring& key, const std::wstring* strings, std::size_t count) {
    Insert(key + L"L", static_cast<long>(count));
    std::wstring joined;
    for (std::size_t i = 0; i < count; ++i) {
        joined += strings[i] + kDelimiter;
    }
    Insert(key, joined);
}

void WDatabase::RetrieveStrings(const std::wstring& key, std::vector<std::wstring>& values) {
    values.clear();
    long count = 0;
    std::wstring joined;
    Retrieve(key + L"L", count);
    Retrieve(key, joined);
    for (std::size_t at = 0; static_cast<long>(values.size()) < count && at <= joined.size();) {
        const std::size_t end = joined.find(kDelimiter, at);
        values.push_back(joined.substr(at, end == std::wstring::npos ? end : end - at));
        if (end == std::wstring::npos) {
            break;
        }
        at = end + 1;
    }
}

// Stores the count, then the length and the bytes of each string, as binary data.
void WDatabase::InsertStrings(const std::wstring& key, const std::string* strings, std::size_t count) {
    std::string image;
    const auto add = [&image](std::size_t number) {
        const auto stored = static_cast<std::uint32_t>(number);
        image.append(reinterpret_cast<const char*>(&stored), sizeof(stored));
    };
    add(count);
    for (std::size_t i = 0; i < count; ++i) {
        add(strings[i].size());
        image += strings[i];
    }
    Insert(key, image);
}

void WDatabase::RetrieveStrings(const std::wstring& key, std::vector<std::string>& values) {
    values.clear();
    DemandParameter(key, L"Unexpected error reading data.");
    const std::vector<unsigned char> image = RetrieveBinary(key);
    std::size_t at = 0;
    const auto take = [&image, &at] {
        std::uint32_t number = 0;
        if (image.size() - at < sizeof(number)) {
            throw WNESerializerError(L"Corrupt data for table");
        }
        std::memcpy(&number, image.data() + at, sizeof(number));
        at += sizeof(number);
        return number;
    };
    if (image.empty()) {
        return;
    }
    for (std::uint32_t left = take(); left != 0; --left) {
        const std::uint32_t length = take();
        if (image.size() - at < length) {
            throw WNESerializerError(L"Corrupt data for table");
        }
        values.emplace_back(reinterpret_cast<const char*>(image.data()) + at, length);
        at += length;
    }
}

template <class Text>
void WDatabase::RetrieveStringArray(const std::wstring& key, Text*& data, long& count) {
    data = nullptr;
    count = 0;
    std::vector<Text> values;
    RetrieveStrings(key, values);
    if (!values.empty()) {
        data = new Text[values.size()];
        std::move(values.begin(), values.end(), data);
        count = static_cast<long>(values.size());
    }
}

void WDatabase::Insert(const std::wstring& key, const std::vector<std::wstring>& values) {
    InsertStrings(key, values.data(), values.size());
}

void WDatabase::Insert(const std::wstring& key, const std::wstring* const data, long count) {
    InsertStrings(key, data, data == nullptr || count < 0 ? 0 : static_cast<std::size_t>(count));
}

void WDatabase::Retrieve(const std::wstring& key, std::vector<std::wstring>& values) {
    RetrieveStrings(key, values);
}

void WDatabase::Retrieve(const std::wstring& key, std::wstring*& data, long& count) {
    RetrieveStringArray(key, data, count);
}

void WDatabase::Insert(const std::wstring& key, const std::vector<std::string>& values) {
    InsertStrings(key, values.data(), values.size());
}

void WDatabase::Insert(const std::wstring& key, const std::string* const data, long count) {
    InsertStrings(key, data, data == nullptr || count < 0 ? 0 : static_cast<std::size_t>(count));
}

void WDatabase::Retrieve(const std::wstring& key, std::vector<std::string>& values) {
    RetrieveStrings(key, values);
}

void WDatabase::Retrieve(const std::wstring& key, std::string*& data, long& count) {
    RetrieveStringArray(key, data, count);
}

} // namespace bss
