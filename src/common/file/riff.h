// The chunks of RIFF files (Multimedia Programming Interface and Data Specifications 1.0, "Resource
// Interchange File Format") and, in the other byte order, of IFF files (EA IFF 85).
#pragma once

#include "common/file/reader.h"
#include "common/text/fourcc.h"

#include <bit>
#include <cstdint>

namespace zat {

// "RIFF", the size and the form type: what stands before a file's chunks.
constexpr int64_t riff_header_size = 12;
// The type at the start of a list's payload.
constexpr int64_t list_type_size = 4;

struct Chunk {
    int64_t offset = 0; // file position of the header
    uint32_t id = 0;    // four characters, the first one in the top byte
    uint32_t size = 0;  // of the payload in bytes, as announced
    Span payload;       // cut at the end of the surrounding chunk or file
};

// Reads the header at the start of `space`. False when it is cut off.
bool read_chunk(Reader* reader, Span space, Chunk* chunk, std::endian order = std::endian::little);

// Moves `space` behind the chunk at its start and the pad byte of an odd size: a loop over the
// chunks in a payload. False at its end.
bool next_chunk(Reader* reader, Span* space, Chunk* chunk, std::endian order = std::endian::little);

} // namespace zat
