// Reading atoms, the boxes of ISO/IEC 14496-12, 4.2: every read is bounded by the atom that it
// belongs to, and all reads together by an allowance of work.
#pragma once

#include "common/block_reader.h"
#include "common/bytes.h"

#include <cstdint>

namespace zat::mp4 {

// An allowance in bytes, as work_of_read counts them. The walk's passes 16 million empty atoms or
// 125,000 fragments; the description's sums the tables of 60 million samples.
constexpr int64_t walk_work = 1LL << 29;
constexpr int64_t description_work = 1LL << 28;

struct AtomReader {
    BlockReader block;
    int64_t last_position = 0;
    int64_t work_left = 0; // reads fail when it is used up
};

// Starts on an open file with the walk's allowance.
void open_reader(AtomReader* reader, FileRecord* file);

void allow_work(AtomReader* reader, int64_t work);

// Bytes [start, end) of the file.
struct Span {
    int64_t start = 0;
    int64_t end = 0;
};

constexpr int64_t size_of(Span span) {
    return span.end > span.start ? span.end - span.start : 0;
}

struct Atom {
    int64_t offset = 0; // of the size field
    uint32_t type = 0;  // four characters, the first one in the top byte
    uint32_t size = 0;  // the 32-bit field as it stands: 1 tells that 64 bits follow the type
    Span payload;       // behind the header, cut at the end of the surrounding atom
};

constexpr uint32_t type_of(const char (&text)[5]) {
    uint32_t type = 0;
    for (int i = 0; i < 4; ++i) {
        type = type << 8 | static_cast<uint8_t>(text[i]);
    }
    return type;
}

// Reads the header at the start of `space`. False when the header is cut off or the size is less
// than its own header, 0 included: nothing that follows can be told apart then. `atom->size` is set
// as soon as the first 8 bytes are there.
bool read_atom(AtomReader* reader, Span space, Atom* atom);

// Moves `space` behind the atom at its start: a loop over the atoms in a payload. False at its end.
bool next_child(AtomReader* reader, Span* space, Atom* atom);

// Copies up to `count` bytes from `offset` of the span. Returns how many there were.
uint32_t read_some(
    AtomReader* reader, Span span, int64_t offset, uint8_t* destination, uint32_t count);

// All of `count` bytes, or false.
bool read_all(AtomReader* reader, Span span, int64_t offset, uint8_t* destination, uint32_t count);

// A big-endian field of 32 bits, or `missing` when the span ends before it does.
uint32_t read_be32(AtomReader* reader, Span span, int64_t offset, uint32_t missing = 0);

} // namespace zat::mp4
