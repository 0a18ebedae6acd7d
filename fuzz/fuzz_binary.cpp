// Reads any bytes as the image of an object that has a member of every type. Whatever they are, only the
// failures that are promised come out; and what was read whole is written and read again without a change.

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/serial/WBinarySerializer.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/WVersion.h"

#include <cstdint>
#include <cstdlib>
#include <list>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

using bss::WBinarySerializer;

template <class Element>
struct Array {
    std::unique_ptr<Element[]> elements;
    long count = 0;
};

template <class... Element>
struct Arrays : Array<Element>... {};

class Everything : public bss::WPersistentObject {
public:
    Everything() : WPersistentObject(1, 2, bss::WVersion(5, 3, 0, 9)) {}

    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        auto& serializer = static_cast<WBinarySerializer&>(*m_pSerializer);
        const auto members = [&serializer, bRead](auto&... values) {
            ((bRead ? serializer.Retrieve(L"v", values) : serializer.Insert(L"v", values)), ...);
        };
        members(m_bool, m_short, m_ushort, m_int, m_long, m_float, m_double, m_guid, m_time, m_wide,
                m_narrow);
        members(m_wides, m_narrows, m_flags, m_doubles, m_longs, m_ints, m_list);
        bRead ? serializer.RetrieveF(L"f", m_singles) : serializer.InsertF(L"f", m_singles);
        bRead ? serializer.RetrieveEx(L"x", m_raw, sizeof(m_raw))
              : serializer.InsertEx(L"x", m_raw, sizeof(m_raw));
        SerializeArrays(serializer, bRead, m_arrays);
    }
    void SerializeComponents(bool bRead) override {
        auto count = static_cast<short>(m_components.size());
        bRead ? m_pSerializer->Retrieve(L"n", count) : m_pSerializer->Insert(L"n", count);
        if (bRead) {
            m_components.clear();
            m_components.resize(count > 0 ? static_cast<std::size_t>(count) % 4 : 0);
        }
        for (Everything& component : m_components) {
            bRead ? component.Read(m_pSerializer, m_nVersion, false)
                  : component.Write(m_pSerializer, m_nVersion, false);
        }
    }

private:
    template <class... Element>
    static void SerializeArrays(WBinarySerializer& serializer, bool bRead, Arrays<Element...>& arrays) {
        (SerializeArray<Element>(serializer, bRead, arrays), ...);
    }
    template <class Element>
    static void SerializeArray(WBinarySerializer& serializer, bool bRead, Array<Element>& array) {
        if (!bRead) {
            serializer.Insert(L"a", array.elements.get(), array.count);
            return;
        }
        Element* data = nullptr;
        serializer.Retrieve(L"a", data, array.count);
        array.elements.reset(data);
        if ((data == nullptr) != (array.count == 0)) {
            std::abort();
        }
    }

    bool m_bool = true;
    short m_short = -1;
    unsigned short m_ushort = 1;
    int m_int = 2;
    long m_long = 3;
    float m_float = 0.5F;
    double m_double = 0.25;
    GUID m_guid = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    tm m_time{};
    std::wstring m_wide = L"wide \U0001F600";
    std::string m_narrow = "narrow";
    std::vector<std::wstring> m_wides = {L"a", L"bc"};
    std::vector<std::string> m_narrows = {"", "d"};
    std::vector<bool> m_flags = {true, false};
    std::vector<double> m_doubles = {1.0, 2.0};
    std::vector<long> m_longs = {3, 4};
    std::vector<int> m_ints = {5};
    std::list<int> m_list = {6, 7};
    std::vector<double> m_singles = {0.5};
    char m_raw[5] = {1, 2, 3, 4, 5};
    Arrays<std::wstring, std::string, double, float, long, unsigned char, int, short, bool> m_arrays;
    std::vector<Everything> m_components;
};

std::string Write(Everything& object) {
    WBinarySerializer writer(false, false);
    object.Write(&writer, object.GetVersion(), true);
    return writer.GetBuffer();
}

/// False if the bytes are no whole image.
bool Read(Everything& object, const std::string& bytes) {
    WBinarySerializer reader(bytes, false);
    try {
        object.Read(&reader, 0, true);
    } catch (const bss::WNEDataIOError&) {
        return false;
    } catch (const bss::WNEUnexpectedException&) {
        return false;
    } catch (const std::bad_alloc&) {
        return false; // of a count between the objects, whose failures nobody wraps
    }
    return reader.MoreToRead();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Everything object;
    if (!Read(object, std::string(reinterpret_cast<const char*>(data), size))) {
        return 0;
    }
    const std::string image = Write(object);
    Everything again;
    if (!Read(again, image) || Write(again) != image) {
        std::abort();
    }
    return 0;
}
