#include "container/mp4/sample_tables.h"

#include <algorithm>
#include <numeric>

namespace zat::mp4 {

namespace {

// The sum of big-endian words of 32 bits. Their bytes are summed by place, two places at once:
// that needs no byte swap, and the compiler makes vector instructions of it.
uint64_t sum_adjacent_words(Bytes words) {
    constexpr size_t block_words =
        64; // their bytes add up to less than 2^16, and few words are left
    constexpr uint32_t two_bytes = 0x00FF00FF;
    uint64_t sum = 0;
    const uint8_t* p = words.data();
    size_t left = words.size() / 4;
    for (; left >= block_words; left -= block_words, p += 4 * block_words) {
        uint32_t even = 0;
        uint32_t odd = 0;
        for (size_t i = 0; i < 4 * block_words; i += 4) {
            const uint32_t word = ReadLE32(p + i);
            even += word & two_bytes;
            odd += word >> 8 & two_bytes;
        }
        sum += (uint64_t{even & 0xFFFF} << 24) + (uint64_t{odd & 0xFFFF} << 16) +
               (uint64_t{even >> 16} << 8) + (odd >> 16);
    }
    for (; left != 0; --left, p += 4) {
        sum += ReadBE32(p);
    }
    return sum;
}

// The sum of whole entries of `bits` (4, 8, 16 or 32) each.
uint64_t sum_piece(Bytes piece, uint32_t bits) {
    uint64_t sum = 0;
    switch (bits) {
    case 32:
        return sum_words(piece, 4, 0);
    case 16:
        for (size_t i = 0; i + 2 <= piece.size(); i += 2) {
            sum += ReadBE16(&piece[i]);
        }
        return sum;
    case 8:
        return std::accumulate(piece.begin(), piece.end(), sum);
    default:
        for (const uint8_t pair : piece) {
            sum += static_cast<uint32_t>(pair >> 4) + (pair & 0x0F);
        }
        return sum;
    }
}

// The sum of `count` entries of `bits` each behind the table's fixed fields.
uint64_t sum_entries(Reader* reader, Span payload, uint32_t count, uint32_t bits) {
    constexpr int64_t table_offset = 12;
    constexpr int64_t piece_size = BlockReader::jump_size;
    const int64_t table_size = (int64_t{count} * bits + 7) / 8;
    uint64_t sum = 0;
    for (int64_t done = 0; done < table_size;) {
        const auto wanted = static_cast<uint32_t>(std::min(piece_size, table_size - done));
        const Bytes piece = read_view(reader, payload, table_offset + done, wanted);
        sum += sum_piece(piece, bits);
        if (piece.size() != wanted) {
            break;
        }
        done += wanted;
        // The last byte's low half is padding.
        if (bits == 4 && done == table_size && count % 2 != 0) {
            sum -= piece.back() & 0x0F;
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

uint64_t sum_words(Bytes rows, size_t width, size_t at) {
    if (width == 4) {
        return sum_adjacent_words(rows);
    }
    uint64_t sum = 0;
    for (size_t i = at; i + 4 <= rows.size(); i += width) {
        sum += ReadBE32(&rows[i]);
    }
    return sum;
}

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
