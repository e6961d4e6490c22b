#include "container/mp4/atom_reader.h"

#include <algorithm>

namespace zat::mp4 {

namespace {

constexpr uint32_t header_size = 8; // of an atom with a 32-bit size

} // namespace

bool read_atom(Reader* reader, Span space, Atom* atom) {
    atom->size = 0;
    const Bytes header = read_view(reader, space, 0, header_size);
    if (header.size() < header_size) {
        return false;
    }
    atom->offset = space.start;
    atom->size = ReadBE32(header.data());
    atom->type = ReadBE32(header.data() + 4);
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
    atom->missing = std::max<int64_t>(size - size_of(space), 0);
    return true;
}

bool next_child(Reader* reader, Span* space, Atom* atom) {
    if (!read_atom(reader, *space, atom)) {
        return false;
    }
    space->start = atom->payload.end;
    return true;
}

} // namespace zat::mp4
