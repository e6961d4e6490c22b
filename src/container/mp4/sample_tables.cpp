#include "container/mp4/sample_tables.h"

#include <algorithm>

namespace zat::mp4 {

namespace {

// The sum of `count` entries of `bits` (4, 8, 16 or 32) each behind the table's fixed fields.
uint64_t sum_entries(Reader* reader, Span payload, uint32_t count, uint32_t bits) {
    constexpr int64_t table_offset = 12;
    constexpr int64_t block_size = 16384;
    uint8_t block[block_size];
    const int64_t table_size = (int64_t{count} * bits + 7) / 8;
    uint64_t sum = 0;
    for (int64_t done = 0; done < table_size;) {
        const auto wanted = static_cast<uint32_t>(std::min(block_size, table_size - done));
        const uint32_t got = read_some(reader, payload, table_offset + done, block, wanted);
        done += got;
        const uint8_t* const end = block + got - got % (bits < 8 ? 1 : bits / 8);
        const uint8_t* entry = block;
        switch (bits) {
        case 32:
            for (; entry != end; entry += 4) {
                sum += ReadBE32(entry);
            }
            break;
        case 16:
            for (; entry != end; entry += 2) {
                sum += ReadBE16(entry);
            }
            break;
        case 8:
            for (; entry != end; ++entry) {
                sum += *entry;
            }
            break;
        default:
            for (; entry != end; ++entry) {
                sum += static_cast<uint32_t>(*entry >> 4) + (*entry & 0x0F);
            }
            // The last byte's low half is padding.
            if (done == table_size && count % 2 != 0) {
                sum -= block[got - 1] & 0x0F;
            }
        }
        if (got != wanted) {
            break;
        }
    }
    return sum;
}

bool is_entry_width(uint32_t bits) {
    return bits == 4 || bits == 8 || bits == 16;
}

SampleTotals sum_sample_sizes(Reader* reader, const Track& track) {
    SampleTotals totals;
    uint8_t fields[12]; // version and flags, the common size or the entries' width, the count
    if (read_all(reader, track.sample_sizes, 0, fields, sizeof fields)) {
        const uint32_t common = ReadBE32(fields + 4);
        totals.samples = ReadBE32(fields + 8);
        const uint32_t bits = track.compact_sizes ? common & 0xFF : 32;
        if (track.compact_sizes ? is_entry_width(bits) : common == 0) {
            totals.bytes = sum_entries(reader, track.sample_sizes, totals.samples, bits);
        } else if (!track.compact_sizes) {
            totals.bytes = totals.samples;
            totals.one_size = true;
            totals.sample_size = common;
        }
    }
    totals.samples += track.fragment_samples;
    totals.bytes += track.fragment_bytes;
    return totals;
}

} // namespace

const SampleTotals& sample_totals(Reader* reader, Track* track) {
    if (!track->summed) {
        track->summed = true;
        track->totals = sum_sample_sizes(reader, *track);
    }
    return track->totals;
}

uint32_t read_first_chunk(
    Reader* reader, const Track& track, uint8_t* destination, uint32_t count) {
    constexpr int64_t table_offset = 8; // behind version, flags and entry count
    uint8_t entry[8] = {};
    const uint32_t width = track.large_offsets ? 8 : 4;
    if (read_be32(reader, track.chunk_offsets, 4) == 0 ||
        !read_all(reader, track.chunk_offsets, table_offset, entry + 8 - width, width)) {
        return 0;
    }
    const int64_t offset = ReadBE64(entry);
    return read_some(reader, {0, reader->block.file->size}, offset, destination, count);
}

} // namespace zat::mp4
