// The objects that ASF files consist of (ASF, 2.1).
#pragma once

#include "common/file/reader.h"

#include <cstdint>

namespace zat::asf {

constexpr int64_t object_header_size = 24;

struct Object {
    uint64_t id = 0; // first 48 bits of the GUID
    int64_t offset = 0;
    uint64_t size = 0; // as announced, the header included
    Span data = {};    // behind the header, cut at the end of the surrounding object or file
};

// The first two fields of a GUID, as in B7DC0791-A9B7: enough to tell those of this format apart.
constexpr uint64_t guid(uint32_t first, uint16_t second) {
    return uint64_t{first} << 16 | second;
}

// The same from the first six of its bytes in a file.
constexpr uint64_t read_guid(const uint8_t* bytes) {
    return guid(ReadLE32(bytes), ReadLE16(bytes + 4));
}

// Moves `space` behind the object at its start. False at its end, and for a size that leaves no
// room for the header.
bool next_object(Reader* reader, Span* space, Object* object);

} // namespace zat::asf
