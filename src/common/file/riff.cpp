#include "common/file/riff.h"

namespace zat {

namespace {

constexpr uint32_t chunk_header_size = 8;

} // namespace

bool read_chunk(Reader* reader, Span space, Chunk* chunk, std::endian order) {
    const Bytes header = read_view(reader, space, 0, chunk_header_size);
    if (header.size() < chunk_header_size) {
        return false;
    }
    chunk->offset = space.start;
    chunk->id = ReadBE32(header.data());
    chunk->size =
        order == std::endian::little ? ReadLE32(header.data() + 4) : ReadBE32(header.data() + 4);
    chunk->payload = sub_span(space, chunk_header_size, chunk->size);
    return true;
}

bool next_chunk(Reader* reader, Span* space, Chunk* chunk, std::endian order) {
    if (!read_chunk(reader, *space, chunk, order)) {
        return false;
    }
    *space = sub_span(*space, int64_t{chunk_header_size} + chunk->size + chunk->size % 2);
    return true;
}

} // namespace zat
