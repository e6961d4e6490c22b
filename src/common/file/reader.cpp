#include "common/file/reader.h"

#include <algorithm>

namespace zat {

namespace {

constexpr int64_t jump_work = 1024; // bytes

// Takes a read of `count` bytes off the allowance. False when it is used up.
bool spend(Reader* reader, int64_t position, uint32_t count) {
    const int64_t distance = position - reader->last_position;
    const bool jumps = distance < 0 || distance > BlockReader::jump_size;
    reader->left.bytes -= std::max<int64_t>(count, jumps ? jump_work : 0);
    --reader->left.steps;
    if (reader->left.bytes < 0 || reader->left.steps < 0) {
        reader->left = {0, 0};
        reader->limited = true;
        return false;
    }
    reader->last_position = position;
    return true;
}

// A read that the limit of the file itself refused ends the walk as well.
void note_limit(Reader* reader) {
    reader->limited |= reader->block.file->exhausted;
}

} // namespace

void reader_open(Reader* reader, FileRecord* file) {
    block_open(&reader->block, file);
    reader->last_position = 0;
    reader->limited = false;
    reader_allow(reader, walk_allowance);
}

void reader_open(Reader* reader, FileRecord* file, const WorkMemory& memory) {
    reader_open(reader, file);
    if (memory.bytes != nullptr) {
        block_enlarge(&reader->block, memory.bytes, static_cast<uint32_t>(memory.size));
    }
}

void reader_allow(Reader* reader, Allowance allowance) {
    reader->left = allowance;
}

uint32_t read_some(
    Reader* reader, Span span, int64_t offset, uint8_t* destination, uint32_t count) {
    if (offset < 0 || offset >= size_of(span)) {
        return 0;
    }
    const int64_t position = span.start + offset;
    const auto wanted = static_cast<uint32_t>(std::min<int64_t>(count, span.end - position));
    if (!spend(reader, position, wanted)) {
        return 0;
    }
    const uint32_t got = block_read(&reader->block, position, destination, wanted);
    note_limit(reader);
    return got;
}

bool read_all(Reader* reader, Span span, int64_t offset, uint8_t* destination, uint32_t count) {
    return read_some(reader, span, offset, destination, count) == count;
}

Bytes read_view(Reader* reader, Span span, int64_t offset, uint32_t count) {
    if (offset < 0 || offset >= size_of(span)) {
        return {};
    }
    const int64_t position = span.start + offset;
    const auto wanted = static_cast<uint32_t>(std::min<int64_t>(count, span.end - position));
    if (!spend(reader, position, wanted)) {
        return {};
    }
    const Bytes bytes = block_view(&reader->block, position, wanted);
    note_limit(reader);
    return bytes;
}

int64_t count_zeros(Reader* reader, Span span, int64_t offset) {
    constexpr uint32_t first_look = 64; // most runs are short
    int64_t zeros = 0;
    for (uint32_t look = 1;; look = look == 1 ? first_look : BlockReader::jump_size) {
        const Bytes bytes = read_view(reader, span, offset + zeros, look);
        if (bytes.empty()) {
            return -1;
        }
        const size_t run = leading_zeros(bytes);
        zeros += static_cast<int64_t>(run);
        if (run < bytes.size()) {
            return zeros;
        }
        if (look == BlockReader::jump_size) {
            const int64_t position = span.start + offset + zeros;
            zeros += next_data(reader->block.file, position) - position;
        }
    }
}

uint32_t read_be32(Reader* reader, Span span, int64_t offset, uint32_t missing) {
    const Bytes bytes = read_view(reader, span, offset, 4);
    return bytes.size() == 4 ? ReadBE32(bytes.data()) : missing;
}

uint32_t read_le32(Reader* reader, Span span, int64_t offset, uint32_t missing) {
    const Bytes bytes = read_view(reader, span, offset, 4);
    return bytes.size() == 4 ? ReadLE32(bytes.data()) : missing;
}

} // namespace zat
