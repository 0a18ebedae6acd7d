#include "krtpal/posix/kernel/handle.h"

#include "krtpal/error.h"
#include "krtpal/process.h"
#include "krtpal/sync.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

namespace krtpal {

namespace posix {

// The word has, from the highest bit, the generation (32 bits), whether the handle is open, and the number
// of running uses (31 bits). A slot is used for another handle after it has been closed and no use runs; its
// generation changes then.
struct HandleSlot {
    std::atomic<std::uint64_t> word{std::uint64_t{1} << 32};
    KernelObject* object = nullptr;
    std::uint32_t index = 0;
};

namespace {

constexpr std::uint64_t kOpen = std::uint64_t{1} << 31;
constexpr std::uint64_t kUses = kOpen - 1;
constexpr unsigned kGenerationShift = 32;
// Handles are multiples of 4 and never negative, as on Windows.
constexpr unsigned kIndexShift = 2;
constexpr std::uint64_t kLastGeneration = 0x7FFFFFFE;

constexpr std::uint32_t kChunkSize = 256;
constexpr std::uint32_t kMostChunks = 4096;

// Slots never move and are never freed: a stale handle may be looked up at any time.
class HandleTable {
public:
    HandleSlot* Find(std::uint32_t index) {
        HandleSlot* const chunk = index / kChunkSize < kMostChunks
                                      ? m_chunks[index / kChunkSize].load(std::memory_order_acquire)
                                      : nullptr;
        return chunk == nullptr ? nullptr : &chunk[index % kChunkSize];
    }

    // Returns null if there are too many handles or no memory.
    HandleSlot* Take() {
        const std::lock_guard lock(m_mutex);
        if (m_free.empty() && !AddChunk()) {
            return nullptr;
        }
        HandleSlot* const slot = m_free.back();
        m_free.pop_back();
        return slot;
    }

    void GiveBack(HandleSlot* slot) {
        const std::lock_guard lock(m_mutex);
        m_free.push_back(slot); // within the reserved capacity
    }

private:
    bool AddChunk() {
        if (m_count == kMostChunks) {
            return false;
        }
        auto* const chunk = new (std::nothrow) HandleSlot[kChunkSize];
        if (chunk == nullptr) {
            return false;
        }
        try {
            m_free.reserve(std::size_t{m_count + 1} * kChunkSize);
        } catch (const std::bad_alloc&) {
            delete[] chunk;
            return false;
        }
        for (std::uint32_t i = kChunkSize; i-- > 0;) {
            chunk[i].index = m_count * kChunkSize + i;
            m_free.push_back(&chunk[i]);
        }
        m_chunks[m_count++].store(chunk, std::memory_order_release);
        return true;
    }

    std::atomic<HandleSlot*> m_chunks[kMostChunks]{};
    std::mutex m_mutex;
    std::vector<HandleSlot*> m_free;
    std::uint32_t m_count = 0;
};

// Never destroyed: static destructors close handles.
HandleTable& Table() {
    static auto* const table = new HandleTable;
    return *table;
}

HANDLE HandleOf(const HandleSlot& slot, std::uint64_t generation) {
    return reinterpret_cast<HANDLE>(generation << kGenerationShift | (std::uint64_t{slot.index} + 1)
                                                                         << kIndexShift);
}

// Returns the slot that a handle names, of any generation, or null.
HandleSlot* SlotOf(HANDLE handle, std::uint64_t* generation) {
    const auto value = reinterpret_cast<std::uint64_t>(handle);
    const auto place = static_cast<std::uint32_t>(value);
    *generation = value >> kGenerationShift;
    if (place == 0 || (place & ((1U << kIndexShift) - 1)) != 0) {
        return nullptr;
    }
    return Table().Find((place >> kIndexShift) - 1);
}

// REQUIRES: no use of the slot runs, and none can begin.
void Retire(HandleSlot* slot, std::uint64_t generation) {
    KernelObject* const object = slot->object;
    slot->object = nullptr;
    const std::uint64_t next = generation >= kLastGeneration ? 1 : generation + 1;
    slot->word.store(next << kGenerationShift, std::memory_order_release);
    Table().GiveBack(slot);
    object->DropHandle();
    object->DropReference();
}

} // namespace

void KernelObject::DropReference() {
    if (m_references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete this;
    }
}

HANDLE OpenHandle(Reference<KernelObject> object) {
    HandleSlot* const slot = Table().Take();
    if (slot == nullptr) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    object->AddReference();
    object->AddHandle();
    slot->object = object.Get();
    const std::uint64_t closed = slot->word.load(std::memory_order_relaxed);
    slot->word.store(closed | kOpen, std::memory_order_release);
    return HandleOf(*slot, closed >> kGenerationShift);
}

UsedHandle::UsedHandle(HANDLE handle) {
    std::uint64_t generation = 0;
    HandleSlot* const slot = SlotOf(handle, &generation);
    if (slot == nullptr) {
        return;
    }
    std::uint64_t word = slot->word.load(std::memory_order_acquire);
    do {
        if (word >> kGenerationShift != generation || (word & kOpen) == 0) {
            return;
        }
    } while (!slot->word.compare_exchange_weak(word, word + 1, std::memory_order_acquire,
                                               std::memory_order_acquire));
    m_slot = slot;
    m_object = slot->object;
}

UsedHandle::~UsedHandle() {
    if (m_slot == nullptr) {
        return;
    }
    const std::uint64_t word = m_slot->word.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if ((word & (kOpen | kUses)) == 0) {
        Retire(m_slot, word >> kGenerationShift);
    }
}

} // namespace posix

BOOL CloseHandle(HANDLE handle) {
    std::uint64_t generation = 0;
    posix::HandleSlot* const slot = posix::SlotOf(handle, &generation);
    if (slot == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    std::uint64_t word = slot->word.load(std::memory_order_acquire);
    do {
        if (word >> posix::kGenerationShift != generation || (word & posix::kOpen) == 0) {
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
    } while (!slot->word.compare_exchange_weak(word, word & ~posix::kOpen, std::memory_order_acq_rel,
                                               std::memory_order_acquire));
    if ((word & posix::kUses) == 0) {
        posix::Retire(slot, generation);
    }
    return TRUE;
}

BOOL DuplicateHandle(HANDLE sourceProcess, HANDLE source, HANDLE targetProcess, HANDLE* target,
                     DWORD /*access*/, BOOL /*inheritHandle*/, DWORD options) {
    *target = nullptr;
    const posix::UsedHandle used(source);
    if (used.Object() == nullptr || sourceProcess != GetCurrentProcess() ||
        targetProcess != GetCurrentProcess()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (options != DUPLICATE_SAME_ACCESS) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return FALSE;
    }
    used.Object()->AddReference();
    *target = posix::OpenHandle(posix::Reference<posix::KernelObject>(used.Object()));
    return *target != nullptr ? TRUE : FALSE;
}

} // namespace krtpal
