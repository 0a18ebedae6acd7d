#include "bss/system/WIDDispenser.h"

namespace bss {

WIDDispenser::WIDDispenser(long start) : m_nCurrent(start) {}

WIDDispenser::WIDDispenser(const WIDDispenser& other) : m_nCurrent(other.GetCurrent()) {}

WIDDispenser& WIDDispenser::operator=(const WIDDispenser& other) {
    SetCurrent(other.GetCurrent());
    return *this;
}

WIDDispenser::~WIDDispenser() = default;

long WIDDispenser::GetCurrent() const {
    return m_nCurrent.load();
}

long WIDDispenser::GetCurrentID() const {
    return GetCurrent();
}

long WIDDispenser::GetNewID() {
    return m_nCurrent.fetch_add(1) + 1;
}

long WIDDispenser::GetNext() {
    return GetNewID();
}

void WIDDispenser::SetCurrent(long id) {
    m_nCurrent.exchange(id);
}

} // namespace bss
