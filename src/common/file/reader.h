// The reader for walks over a file's structures: every read is bounded by the span that it belongs
// to, and all reads together by an allowance of work, so that no file can make a walk long.
// (Searches use FileWindow.)
#pragma once

#include "common/bytes/bytes.h"
#include "common/file/block_reader.h"
#include "common/file/work_memory.h"

#include <cstdint>

namespace zat {

// Bytes [start, end) of the file.
struct Span {
    int64_t start = 0;
    int64_t end = 0;
};

constexpr int64_t size_of(Span span) {
    return span.end > span.start ? span.end - span.start : 0;
}

// The part of `space` from `offset` on, `length` bytes at the most.
constexpr Span sub_span(Span space, int64_t offset, int64_t length = INT64_MAX) {
    const int64_t size = size_of(space);
    offset = offset < 0 ? 0 : offset > size ? size : offset;
    const int64_t rest = size - offset;
    length = length < 0 ? 0 : length > rest ? rest : length;
    return {space.start + offset, space.start + offset + length};
}

struct Allowance {
    int64_t steps; // reads
    int64_t bytes; // read; a jump, which costs a system call, counts like a thousand
};

// For walks over the headers of chunks, elements, atoms, pages or tags.
constexpr Allowance walk_allowance = {1'000'000, 32LL << 20};

// For tables that are summed.
constexpr Allowance table_allowance = {1'000'000, 64LL << 20};

struct Reader {
    BlockReader block;
    int64_t last_position = 0;
    Allowance left = walk_allowance;
    bool limited = false; // the allowance was used up: reads fail from then on
};

// Starts on an open file with the walk's allowance; reads nothing yet.
void reader_open(Reader* reader, FileRecord* file);

// The same for a walk or a table that may be long: what goes on and on is read in blocks as large
// as the memory.
constexpr uint32_t long_walk_memory = 262144;
void reader_open(Reader* reader, FileRecord* file, const WorkMemory& memory);

// Replaces what is left of the allowance.
void reader_allow(Reader* reader, Allowance allowance);

inline Span whole_file(const Reader* reader) {
    return {0, reader->block.file->size};
}

// Copies up to `count` bytes from `offset` of the span. Returns how many there were.
uint32_t read_some(Reader* reader, Span span, int64_t offset, uint8_t* destination, uint32_t count);

// All of `count` bytes, or false.
bool read_all(Reader* reader, Span span, int64_t offset, uint8_t* destination, uint32_t count);

// The `count` (at most the block's capacity) bytes from `offset` of the span without a copy,
// fewer where the span or the file ends. Valid until the reader's next use.
Bytes read_view(Reader* reader, Span span, int64_t offset, uint32_t count);

// The number of zero bytes from `offset` of the span up to the first other byte; -1 when the span
// or the allowance ends before one.
int64_t count_zeros(Reader* reader, Span span, int64_t offset);

// Fields of 32 bits, or `missing` when the span ends before they do.
uint32_t read_be32(Reader* reader, Span span, int64_t offset, uint32_t missing = 0);
uint32_t read_le32(Reader* reader, Span span, int64_t offset, uint32_t missing = 0);

} // namespace zat
