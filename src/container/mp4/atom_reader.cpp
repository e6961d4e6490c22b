#include "container/mp4/atom_reader.h"

#include <algorithm>
#include <cstring>

namespace zat::mp4 {

namespace {

// A small read costs a little more than its bytes, a jump what it makes the file layer load.
constexpr int64_t least_read_work = 32;
constexpr int64_t jump_work = BlockReader::jump_size;

constexpr uint32_t header_size = 8; // of an atom with a 32-bit size

int64_t work_of_read(const AtomReader* reader, int64_t position, uint32_t count) {
    const int64_t distance = position - reader->last_position;
    const bool jumps = distance < 0 || distance > jump_work;
    return std::max<int64_t>(count, jumps ? jump_work : least_read_work);
}

// The first bytes of an atom, where the block holds them already: a file can be full of empty
// atoms.
const uint8_t* cached_header(AtomReader* reader, int64_t position) {
    const int64_t offset = position - reader->block.start;
    if (offset < 0 || offset + header_size > reader->block.loaded ||
        reader->work_left < least_read_work) {
        return nullptr;
    }
    reader->work_left -= least_read_work;
    reader->last_position = position;
    return reader->block.block + offset;
}

} // namespace

void open_reader(AtomReader* reader, FileRecord* file) {
    block_open(&reader->block, file);
    reader->last_position = 0;
    allow_work(reader, walk_work);
}

void allow_work(AtomReader* reader, int64_t work) {
    reader->work_left = work;
}

uint32_t read_some(
    AtomReader* reader, Span span, int64_t offset, uint8_t* destination, uint32_t count) {
    if (offset < 0 || offset >= size_of(span)) {
        return 0;
    }
    const int64_t position = span.start + offset;
    const auto wanted = static_cast<uint32_t>(std::min<int64_t>(count, span.end - position));
    reader->work_left -= work_of_read(reader, position, wanted);
    if (reader->work_left < 0) {
        reader->work_left = 0;
        return 0;
    }
    reader->last_position = position;
    return block_read(&reader->block, position, destination, wanted);
}

bool read_all(AtomReader* reader, Span span, int64_t offset, uint8_t* destination, uint32_t count) {
    return read_some(reader, span, offset, destination, count) == count;
}

uint32_t read_be32(AtomReader* reader, Span span, int64_t offset, uint32_t missing) {
    uint8_t bytes[4];
    return read_all(reader, span, offset, bytes, sizeof bytes) ? ReadBE32(bytes) : missing;
}

bool read_atom(AtomReader* reader, Span space, Atom* atom) {
    atom->size = 0;
    uint8_t bytes[header_size];
    const uint8_t* header =
        size_of(space) < header_size ? nullptr : cached_header(reader, space.start);
    if (header == nullptr) {
        if (!read_all(reader, space, 0, bytes, header_size)) {
            return false;
        }
        header = bytes;
    }
    atom->offset = space.start;
    atom->size = ReadBE32(header);
    atom->type = ReadBE32(header + 4);
    int64_t own_header = header_size;
    int64_t size = atom->size;
    if (atom->size == 1) {
        uint8_t large_size[8];
        if (!read_all(reader, space, header_size, large_size, sizeof large_size)) {
            return false;
        }
        own_header += static_cast<int64_t>(sizeof large_size);
        // A size of 2^63 or more is past every end.
        size = ReadBE64(large_size);
        size = size < 0 ? INT64_MAX : size;
    }
    if (size < own_header) {
        return false;
    }
    atom->payload.start = space.start + own_header;
    atom->payload.end = space.start + std::min(size, size_of(space));
    return true;
}

bool next_child(AtomReader* reader, Span* space, Atom* atom) {
    if (!read_atom(reader, *space, atom)) {
        return false;
    }
    space->start = atom->payload.end;
    return true;
}

} // namespace zat::mp4
