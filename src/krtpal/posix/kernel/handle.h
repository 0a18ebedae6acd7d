// Kernel objects and the table of handles to them.
//
// A handle is a number of this process that is never an address: a closed or invented one is told from an
// open one whatever was made since.

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

/// Whether objects of a kind can be waited for.
constexpr bool IsWaitable(ObjectKind kind) {
    return kind == ObjectKind::Event || kind == ObjectKind::Mutex || kind == ObjectKind::Semaphore;
}

/// What handles refer to. Lives until the last reference is dropped; open handles are references, too.
class KernelObject {
public:
    explicit KernelObject(ObjectKind kind) : m_kind(kind) {}
    KernelObject(const KernelObject&) = delete;
    KernelObject& operator=(const KernelObject&) = delete;

    ObjectKind Kind() const { return m_kind; }
    void AddReference() { m_references.fetch_add(1, std::memory_order_relaxed); }
    void DropReference();
    /// A new handle opens, or one has been closed.
    virtual void AddHandle() = 0;
    virtual void DropHandle() = 0;

protected:
    virtual ~KernelObject() = default;

private:
    ObjectKind m_kind;
    std::atomic<std::uint32_t> m_references{1};
};

/// Drops one reference at its end.
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

/// A handle for an object, which takes over the caller's reference. Null and ERROR_NOT_ENOUGH_MEMORY when
/// there are too many.
HANDLE OpenHandle(Reference<KernelObject> object);

/// An open handle in use: it can be closed meanwhile, but its object stays.
class UsedHandle {
public:
    explicit UsedHandle(HANDLE handle);
    UsedHandle(const UsedHandle&) = delete;
    UsedHandle& operator=(const UsedHandle&) = delete;
    ~UsedHandle();
    /// Null if the handle is not open.
    KernelObject* Object() const { return m_object; }

private:
    struct HandleSlot* m_slot = nullptr;
    KernelObject* m_object = nullptr;
};

} // namespace krtpal::posix

#endif
