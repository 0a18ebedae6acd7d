// Stores an object of a class with two versions in a binary image, and reads images of both.

#include "bss/serial/WBinarySerializer.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/WVersion.h"

#include <cstdio>
#include <string>
#include <vector>

namespace {

const bss::WVersion kFirst(5, 1, 0, 0);
const bss::WVersion kSecond(5, 2, 0, 0); // has the temperature

class Sample : public bss::WPersistentObject {
public:
    Sample() : WPersistentObject(1, 1, kSecond) {}

    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        Member(bRead, L"name", name);
        Member(bRead, L"counts", counts);
        if (m_nVersion >= kSecond.GetVersion()) {
            Member(bRead, L"temperature", temperature);
        }
    }

    std::wstring name;
    std::vector<double> counts;
    double temperature = 293.15; // what images without it stand for

private:
    template <class Value>
    void Member(bool bRead, const wchar_t* label, Value& value) {
        bRead ? m_pSerializer->Retrieve(label, value) : m_pSerializer->Insert(label, value);
    }
};

void StoreAndRead(Sample& sample, const bss::WVersion& version) {
    bss::WBinarySerializer writer(false, false); // not only counting; without labels
    sample.Write(&writer, version.GetVersion(), true);
    const std::string image = writer.GetBuffer();

    bss::WBinarySerializer reader(image, false);
    Sample copy;
    copy.Read(&reader, version.GetVersion(), true);
    std::printf("version %d.%d: %zu bytes; %ls, %zu counts, last %g, %.2f K, %s\n",
                version.GetProductVersion(), version.GetMajorVersion(), image.size(), copy.name.c_str(),
                copy.counts.size(), copy.counts.back(), copy.temperature,
                reader.MoreToRead() ? "whole" : "cut off");
}

} // namespace

int main() {
    Sample sample;
    sample.name = L"toluene";
    sample.counts = {3.0, 1.5, 0.25};
    sample.temperature = 298.2;
    StoreAndRead(sample, kSecond);
    StoreAndRead(sample, kFirst); // for a reader of the first version: the temperature is not in it
}
