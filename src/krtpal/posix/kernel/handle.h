// Kernel objects and the table of handles.
//
// A handle is a number of this process and never an address. A closed or invented handle is distinguished
// from an open one even if its slot has been used again since.

#ifndef KRTPAL_POSIX_KERNEL_HANDLE_H
#define KRTPAL_POSIX_KERNEL_HANDLE_H

#include "krtpal/types.h"

#include <atomic>
#include <cstdint>

namespace krtpal::posix {

enum class ObjectKind : std::uint32_t {
    Event = 1,
    Mutex = 2,
    Semaphore = 3,
    Token = 4,
    EventSource = 5,
    Process = 6
};

/// Returns whether waits take objects of this kind.
constexpr bool IsWaitable(ObjectKind kind) {
    return kind == ObjectKind::Event || kind == ObjectKind::Mutex || kind == ObjectKind::Semaphore;
}

/// An object that handles name. Lives until the last reference is dropped; open handles are references.
class KernelObject {
public:
    explicit KernelObject(ObjectKind kind) : m_kind(kind) {}
    KernelObject(const KernelObject&) = delete;
    KernelObject& operator=(const KernelObject&) = delete;

    ObjectKind Kind() const { return m_kind; }
    void AddReference() { m_references.fetch_add(1, std::memory_order_relaxed); }
    void DropReference();
    /// Called when a handle is opened, and after one has been closed.
    virtual void AddHandle() = 0;
    virtual void DropHandle() = 0;

protected:
    virtual ~KernelObject() = default;

private:
    ObjectKind m_kind;
    std::atomic<std::uint32_t> m_references{1};
};

/// Owns one reference.
template <typename Object>
class Reference {
public:
    explicit Reference(Object* object = nullptr) : m_object(object) {}
    Reference(Reference&& other) noexcept : m_object(other.m_object) { other.m_object = nullptr; }
    Reference& operator=(Reference&& other) noexcept {
        Object* const object = m_object;
        m_object = other.m_object;
        other.m_object = object;
        return *this;
    }
    ~Reference() {
        if (m_object != nullptr) {
            m_object->DropReference();
        }
    }
    explicit operator bool() const { return m_object != nullptr; }
    Object* operator->() const { return m_object; }
    Object& operator*() const { return *m_object; }
    Object* Get() const { return m_object; }

private:
    Object* m_object;
};

/// Returns a handle that takes over the caller's reference. Fails with null and ERROR_NOT_ENOUGH_MEMORY if
/// there are too many.
HANDLE OpenHandle(Reference<KernelObject> object);

/// An open handle in use. The handle may be closed meanwhile; its object stays.
class UsedHandle {
public:
    explicit UsedHandle(HANDLE handle);
    UsedHandle(const UsedHandle&) = delete;
    UsedHandle& operator=(const UsedHandle&) = delete;
    ~UsedHandle();
    /// Returns null if the handle is not open.
    KernelObject* Object() const { return m_object; }

private:
    struct HandleSlot* m_slot = nullptr;
    KernelObject* m_object = nullptr;
};

} // namespace krtpal::posix

#endif
