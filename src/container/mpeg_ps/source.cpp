#include "container/mpeg_ps/source.h"

#include <algorithm>
#include <cstring>

namespace zat::ps {

namespace {

// Where in the span the sector begins that holds a position of the stream.
constexpr int64_t sector_of(int64_t position) {
    return position / sector_data_size * sector_size;
}

// Shows the bytes that a sector has itself of the `count` from a position of the stream on, which
// all lie in its share. False when it cannot be read whole.
bool view_sector(Source* source, int64_t position, uint32_t count, Bytes* bytes) {
    constexpr size_t submode_at = 18;
    constexpr uint8_t form_2 = 0x20;
    constexpr int64_t form_1_size = 2048;
    const int64_t offset = position % sector_data_size;
    const auto reach = static_cast<uint32_t>(sector_header_size + offset + count);
    const Bytes sector = read_view(source->reader, source->span, sector_of(position), reach);
    if (sector.size() < reach) {
        return false;
    }
    const bool is_form_2 = (sector[submode_at] & form_2) != 0;
    const int64_t own = (is_form_2 ? sector_data_size : form_1_size) - offset;
    *bytes = sector.subspan(static_cast<size_t>(sector_header_size + offset),
        static_cast<size_t>(std::clamp<int64_t>(own, 0, count)));
    return true;
}

// The bytes from a position on to the end of its sector's share of the stream.
constexpr int64_t left_in_sector(int64_t position) {
    return sector_data_size - position % sector_data_size;
}

// Copies what one sector has from a position of the stream on. A sector of form 1 has less than its
// share of the stream; the rest of it reads as zero.
uint32_t read_sector(Source* source, int64_t position, uint8_t* destination, uint32_t count) {
    count = static_cast<uint32_t>(std::min<int64_t>(count, left_in_sector(position)));
    Bytes bytes;
    if (!view_sector(source, position, count, &bytes)) {
        return 0;
    }
    std::memset(std::copy(bytes.begin(), bytes.end(), destination), 0, count - bytes.size());
    return count;
}

} // namespace

void source_open(Source* source, Reader* reader, Span span, Packing packing) {
    source->reader = reader;
    source->span = span;
    source->packing = packing;
    source->size = packing == Packing::sectors ? size_of(span) / sector_size * sector_data_size
                                               : size_of(span);
}

void source_read_ahead(Source* source, int64_t position, uint32_t count) {
    const int64_t start = source->packing == Packing::sectors ? sector_of(position) : position;
    block_read_ahead(&source->reader->block, source->span.start + start, count);
}

uint32_t source_read(Source* source, int64_t position, uint8_t* destination, uint32_t count) {
    if (source->packing == Packing::bytes) {
        return read_some(source->reader, source->span, position, destination, count);
    }
    uint32_t done = 0;
    while (done < count && position + done < source->size) {
        const uint32_t part =
            read_sector(source, position + done, destination + done, count - done);
        if (part == 0) {
            break;
        }
        done += part;
    }
    return done;
}

Bytes source_view(Source* source, int64_t position, uint32_t count) {
    count = std::min(count, Source::view_limit);
    if (source->packing == Packing::bytes) {
        return read_view(source->reader, source->span, position, count);
    }
    Bytes bytes;
    if (position < source->size && count <= left_in_sector(position) &&
        view_sector(source, position, count, &bytes) && bytes.size() == count) {
        return bytes;
    }
    return {source->view, source_read(source, position, source->view, count)};
}

} // namespace zat::ps
