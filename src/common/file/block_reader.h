// Many small reads that mostly go forward, such as the headers of a file's chunks, at the cost of a
// few large ones.
#pragma once

#include "common/bytes/bytes.h"
#include "common/file/file_access.h"

#include <cstdint>

namespace zat {

struct BlockReader {
    // Behind a jump little may be wanted; whoever reads on gets whole blocks.
    static constexpr uint32_t jump_size = 4096;
    static constexpr uint32_t block_size = 32768;

    FileRecord* file = nullptr;
    int64_t start = 0;   // file position of the block
    uint32_t loaded = 0; // bytes of it
    // Bytes read behind a jump. A walk that only looks at headers far apart may want fewer.
    uint32_t jump = jump_size;
    bool leaps = false;       // no more than that is read ahead, however little lies between
    uint32_t short_steps = 0; // in a row: steps ahead that left out little
    uint8_t* bytes = nullptr; // the block: the one below, or a larger one
    uint32_t capacity = 0;    // bytes it may have
    uint8_t block[block_size];
};

// Starts on an open file; reads nothing yet.
void block_open(BlockReader* reader, FileRecord* file);

// Gives a reader that was opened a larger block, of at least block_size. It is filled the more of
// it the longer the reading goes on from where it was.
void block_enlarge(BlockReader* reader, uint8_t* memory, uint32_t capacity);

// Loads what is going to be looked at piece by piece: `count` bytes from a file position, as far as
// block and file have them.
void block_read_ahead(BlockReader* reader, int64_t position, uint32_t count);

// Copies up to `count` bytes from a file position. Returns the bytes copied: fewer at the end of
// the file.
uint32_t block_read(BlockReader* reader, int64_t position, void* destination, uint32_t count);

// Up to `count` (at most the block's capacity) bytes from a file position without a copy, fewer at
// the end of the file. Valid until the reader's next use.
Bytes block_load(BlockReader* reader, int64_t position, uint32_t count);

// The same, at once where they are loaded, as nearly always.
inline Bytes block_view(BlockReader* reader, int64_t position, uint32_t count) {
    const bool inside =
        position >= reader->start && position - reader->start + count <= reader->loaded;
    return inside ? Bytes{reader->bytes + (position - reader->start), count}
                  : block_load(reader, position, count);
}

} // namespace zat
