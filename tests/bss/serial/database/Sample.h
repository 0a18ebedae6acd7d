// The object that the document of the database format shows.

#ifndef TESTS_BSS_SERIAL_DATABASE_SAMPLE_H
#define TESTS_BSS_SERIAL_DATABASE_SAMPLE_H

#include "Persistent.h"

#include <string>
#include <vector>

/// One member of each kind that binds in a way of its own.
class Sample : public Persistent {
public:
    Sample() : Persistent(3, 4) {}
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        Pass(bRead, L"isOpen", isOpen);
        Pass(bRead, L"angle", angle);
        Pass(bRead, L"name", name);
        Pass(bRead, L"counts", counts);
    }
    bool isOpen = true;
    double angle = 90.5;
    std::wstring name = L"toluene";
    std::vector<long> counts = {1, 2, -1};
};

#endif
