#include "container/mpeg_ps/source.h"

#include <algorithm>
#include <cstring>

namespace zat::ps {

namespace {

// Copies what one sector has from a position of the stream on. A sector of form 1 has less than its
// share of the stream; the rest of it reads as zero.
uint32_t read_sector(Source* source, int64_t position, uint8_t* destination, uint32_t count) {
    constexpr size_t submode_at = 18;
    constexpr uint8_t form_2 = 0x20;
    constexpr int64_t form_1_size = 2048;
    const int64_t sector = position / sector_data_size * sector_size;
    const int64_t offset = position % sector_data_size;
    count = static_cast<uint32_t>(std::min<int64_t>(count, sector_data_size - offset));
    const auto reach = static_cast<uint32_t>(sector_header_size + offset + count);
    const Bytes bytes = read_view(source->reader, source->span, sector, reach);
    if (bytes.size() < reach) {
        return 0;
    }
    std::memcpy(destination, &bytes[static_cast<size_t>(sector_header_size + offset)], count);
    if ((bytes[submode_at] & form_2) == 0 && offset + count > form_1_size) {
        const int64_t used = std::max<int64_t>(form_1_size - offset, 0);
        std::memset(destination + used, 0, static_cast<size_t>(count - used));
    }
    return count;
}

} // namespace

void source_open(Source* source, Reader* reader, Span span, bool sectors) {
    source->reader = reader;
    source->span = span;
    source->sectors = sectors;
    source->size = sectors ? size_of(span) / sector_size * sector_data_size : size_of(span);
}

uint32_t source_read(Source* source, int64_t position, uint8_t* destination, uint32_t count) {
    if (!source->sectors) {
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
    if (!source->sectors) {
        return read_view(source->reader, source->span, position, count);
    }
    return {source->view, source_read(source, position, source->view, count)};
}

} // namespace zat::ps
