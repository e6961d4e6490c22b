#include "common/file/block_reader.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

// What is wanted in one piece of this size gains nothing from the block.
constexpr uint32_t direct_size = BlockReader::block_size / 2;

// A step ahead over less than this costs as much as reading what lies between.
constexpr int64_t short_step = 16384;

// So many short steps in a row are a walk, which will make more of them.
constexpr uint32_t steps_of_walk = 2;

// A reader with a larger block reads so many times as much with each step that goes on.
constexpr uint32_t block_growth = 2;

// How much to read at a position behind which `least` bytes are wanted.
uint32_t length_to_read(BlockReader* reader, int64_t position, uint32_t least) {
    const int64_t step = position - (reader->start + reader->loaded);
    const bool was_long = reader->loaded > BlockReader::block_size;
    const bool goes_on = reader->loaded != 0 && position >= reader->start &&
                         (step <= 0 || (was_long && step < short_step));
    if (!goes_on) {
        const bool is_short = reader->loaded != 0 && step > 0 && step < short_step;
        reader->short_steps = is_short ? reader->short_steps + 1 : 0;
    }
    const bool is_walk = !reader->leaps && (goes_on || reader->short_steps >= steps_of_walk);
    const uint32_t longer = std::max(BlockReader::block_size, reader->loaded * block_growth);
    const uint32_t usual = is_walk ? std::min(longer, reader->capacity) : reader->jump;
    const int64_t most = std::min(std::max(usual, least), reader->capacity);
    const auto wanted = static_cast<uint32_t>(std::min(most, reader->file->size - position));
    const uint32_t held = held_at(reader->file, position);
    return held != 0 && held >= least ? std::min(held, wanted) : wanted;
}

// The bytes that the block shows from a file position, loaded if fewer than `least` are there; 0 at
// the end of the file.
uint32_t load(BlockReader* reader, int64_t position, uint32_t least, const uint8_t** bytes) {
    const int64_t end = reader->start + reader->loaded;
    const bool inside = position >= reader->start && position < end;
    if (!inside || (end - position < least && end < reader->file->size)) {
        if (position < 0 || position >= reader->file->size) {
            return 0;
        }
        const uint32_t length = length_to_read(reader, position, least);
        reader->start = position;
        reader->loaded = read_at(reader->file, position, reader->bytes, length);
    }
    const auto offset = static_cast<uint32_t>(position - reader->start);
    *bytes = reader->bytes + offset;
    return reader->loaded - offset;
}

} // namespace

void block_open(BlockReader* reader, FileRecord* file) {
    reader->file = file;
    reader->start = 0;
    reader->loaded = 0;
    reader->short_steps = 0;
    reader->jump = BlockReader::jump_size;
    reader->leaps = false;
    reader->bytes = reader->block;
    reader->capacity = BlockReader::block_size;
}

void block_enlarge(BlockReader* reader, uint8_t* memory, uint32_t capacity) {
    reader->loaded = 0;
    reader->bytes = memory;
    reader->capacity = capacity;
}

void block_read_ahead(BlockReader* reader, int64_t position, uint32_t count) {
    const int64_t rest = std::max<int64_t>(reader->file->size - position, 0);
    const uint8_t* bytes = nullptr;
    load(reader, position,
        static_cast<uint32_t>(std::min<int64_t>(std::min(count, reader->capacity), rest)), &bytes);
}

uint32_t block_read(BlockReader* reader, int64_t position, void* destination, uint32_t count) {
    auto* out = static_cast<uint8_t*>(destination);
    uint32_t done = 0;
    while (done < count) {
        const int64_t next = position + done;
        const bool inside = next >= reader->start && next < reader->start + reader->loaded;
        if (!inside && count - done >= direct_size) {
            return done + read_at(reader->file, next, out + done, count - done);
        }
        const uint8_t* bytes = nullptr;
        const uint32_t ready = std::min(load(reader, next, 1, &bytes), count - done);
        if (ready == 0) {
            break;
        }
        std::memcpy(out + done, bytes, ready);
        done += ready;
    }
    return done;
}

Bytes block_load(BlockReader* reader, int64_t position, uint32_t count) {
    const uint8_t* bytes = nullptr;
    const uint32_t ready = load(reader, position, count, &bytes);
    return {bytes, std::min(ready, count)};
}

} // namespace zat
