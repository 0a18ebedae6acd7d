// A serializer that keeps what it is given, in order, writes down every call, and fails where it is told to.
//
//     RecordingSerializer serializer;
//     object.Write(&serializer, 0, true);
//     EXPECT_EQ(serializer.Calls(), L"start groupID=3 finish");
//     serializer.failAt = L"groupID";          // or "start", "finish"
//     serializer.fail = [] { throw 5; };

#ifndef TESTS_BSS_SERIAL_RECORDINGSERIALIZER_H
#define TESTS_BSS_SERIAL_RECORDINGSERIALIZER_H

#include "bss/serial/WSerializer.h"

#include <any>
#include <deque>
#include <functional>
#include <string>
#include <type_traits>

class RecordingSerializer : public bss::WSerializer {
public:
    explicit RecordingSerializer(const std::wstring& type = L"RECORDING") : WSerializer(type) {}

#define RECORD(Type)                                                                                         \
    void Insert(const std::wstring& label, Type value) override {                                            \
        Put(label, value);                                                                                   \
    }                                                                                                        \
    void Retrieve(const std::wstring& label, std::remove_cv_t<std::remove_reference_t<Type>>& value)         \
        override {                                                                                           \
        Take(label, value);                                                                                  \
    }
#define RECORD_ARRAY(Type)                                                                                   \
    void Insert(const std::wstring& label, const Type* const, long) override {                               \
        Call(label);                                                                                         \
    }                                                                                                        \
    void Retrieve(const std::wstring& label, Type*&, long&) override {                                       \
        Call(label);                                                                                         \
    }

    RECORD(const std::vector<std::wstring>&)
    RECORD(const std::vector<bool>&)
    RECORD(const std::vector<double>&)
    RECORD(const std::vector<long>&)
    RECORD(const std::vector<int>&)
    RECORD(const std::wstring&)
    RECORD(const std::string&)
    RECORD(struct tm)
    RECORD(GUID)
    RECORD(double)
    RECORD(float)
    RECORD(long)
    RECORD(short)
    RECORD(bool)
    RECORD_ARRAY(std::wstring)
    RECORD_ARRAY(std::string)
    RECORD_ARRAY(double)
    RECORD_ARRAY(float)
    RECORD_ARRAY(long)
    RECORD_ARRAY(unsigned char)
    void InsertF(const std::wstring& label, const std::vector<double>& value) override {
        Put(label, value);
    }
    void RetrieveF(const std::wstring& label, std::vector<double>& value) override {
        Take(label, value);
    }
#undef RECORD
#undef RECORD_ARRAY

    std::wstring Calls() {
        std::wstring calls = m_calls.empty() ? m_calls : m_calls.substr(1);
        m_calls.clear();
        return calls;
    }

    std::wstring failAt;
    std::function<void()> fail;
    std::deque<std::any> values;

protected:
    void StartInsertion(bss::WPersistentObject&) override {
        Call(L"start");
    }
    void FinishInsertion(bss::WPersistentObject&) override {
        Call(L"finish");
    }
    void StartRetrieval(bss::WPersistentObject&) override {
        Call(L"start-read");
    }
    void FinishRetrieval() override {
        Call(L"finish-read");
    }

private:
    void Call(const std::wstring& what) {
        m_calls += L" " + what;
        if (what == failAt) {
            fail();
        }
    }

    template <class Value>
    void Put(const std::wstring& label, const Value& value) {
        Call(label + TextOf(value));
        values.emplace_back(value);
    }

    template <class Value>
    void Take(const std::wstring& label, Value& value) {
        value = std::any_cast<Value>(values.front());
        values.pop_front();
        Call(label + TextOf(value));
    }

    template <class Value>
    static std::wstring TextOf(const Value& value) {
        if constexpr (std::is_arithmetic_v<Value>) {
            return L"=" + std::to_wstring(value);
        } else {
            return {};
        }
    }

    std::wstring m_calls;
};

#endif
