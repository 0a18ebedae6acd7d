// A persistent object that owns parts, which own parts, down to a depth.

#ifndef TESTS_BSS_SERIAL_DATABASE_TREE_H
#define TESTS_BSS_SERIAL_DATABASE_TREE_H

#include "Persistent.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

class Tree : public Persistent {
public:
    Tree(long object, int depth, int parts) : Persistent(5, object) {
        for (int i = 0; depth > 0 && i < parts; ++i) {
            m_parts.push_back(std::make_unique<Tree>(object * 10 + i + 1, depth - 1, parts));
        }
    }
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        Pass(bRead, L"value", value);
        // The column is there from the schema pass on.
        if (!bRead && failsInDataPass &&
            static_cast<bss::WDatabase*>(m_pSerializer)->HasColumn(L"Tree", L"value")) {
            throw std::runtime_error("no more");
        }
    }
    void SerializeComponents(bool bRead) override {
        for (const auto& part : m_parts) {
            bRead ? part->Read(m_pSerializer, m_nVersion, true)
                  : part->Write(m_pSerializer, m_nVersion, true);
        }
    }
    void DeleteComponents() override {
        for (const auto& part : m_parts) {
            part->Delete(m_pSerializer, m_nVersion, true);
        }
    }
    /// The object, then its parts.
    void ForEach(const std::function<void(Tree&)>& call) {
        call(*this);
        for (const auto& part : m_parts) {
            part->ForEach(call);
        }
    }
    void SetAll(long number) {
        ForEach([number](Tree& each) { each.value = number; });
    }

    long value = 0;
    bool failsInDataPass = false;

private:
    std::vector<std::unique_ptr<Tree>> m_parts;
};

#endif
