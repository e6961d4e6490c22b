// Memory for the work of one call. What the library's image has of it is used again from call to
// call: pages that the system hands out anew cost more time than all else that most files take.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zat {

// Gives its memory back with itself. The bytes hold anything at first, and cost memory only where
// they are written.
struct WorkMemory {
    static constexpr size_t kept_size = 2 << 20; // more is always reserved for the call

    uint8_t* bytes = nullptr; // null when there is no memory
    size_t size = 0;
    bool reserved = false; // for this call alone, by the system

    explicit WorkMemory(size_t wanted);
    WorkMemory(const WorkMemory&) = delete;
    WorkMemory& operator=(const WorkMemory&) = delete;
    ~WorkMemory();
};

} // namespace zat
