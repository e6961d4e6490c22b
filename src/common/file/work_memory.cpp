#include "common/file/work_memory.h"

#include "common/file/file_access.h"
#include "common/file/poison.h"

#include <atomic>

#ifndef NDEBUG
#include <cstring>
#endif

namespace zat {

namespace {

// A place for each of the calls that run at a time, as far as hosts have them usually; the others
// get memory from the system.
struct Place {
    std::atomic_flag taken = {};
    alignas(64) uint8_t bytes[WorkMemory::kept_size] = {};
};

constinit Place places[2];

uint8_t* take_place(size_t wanted) {
    if (wanted <= WorkMemory::kept_size) {
        for (Place& place : places) {
            if (!place.taken.test(std::memory_order_relaxed) && // only looked at by another's call
                !place.taken.test_and_set(std::memory_order_acquire)) {
                ASAN_POISON_MEMORY_REGION(place.bytes + wanted, WorkMemory::kept_size - wanted);
                return place.bytes;
            }
        }
    }
    return nullptr;
}

void leave_place(const uint8_t* bytes) {
    for (Place& place : places) {
        if (place.bytes == bytes) {
            ASAN_UNPOISON_MEMORY_REGION(place.bytes, WorkMemory::kept_size);
            place.taken.clear(std::memory_order_release);
        }
    }
}

} // namespace

WorkMemory::WorkMemory(size_t wanted) : bytes(take_place(wanted)), size(wanted) {
    if (bytes == nullptr) {
        bytes = reserve_memory(wanted);
        reserved = true;
    }
#ifndef NDEBUG
    if (bytes != nullptr) {
        std::memset(bytes, 0xA5, size); // nobody may rely on zeros
    }
#endif
}

WorkMemory::~WorkMemory() {
    if (reserved) {
        release_memory(bytes, size);
    } else {
        leave_place(bytes);
    }
}

} // namespace zat
