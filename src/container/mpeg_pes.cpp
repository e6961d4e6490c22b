#include "container/mpeg_pes.h"

namespace zat {

namespace {

constexpr size_t clock_size = 5;

// PES_header_data behind the flags (ISO/IEC 13818-1, table 2-21). Every part is taken only from
// inside the header's declared length.
void read_mpeg2_fields(PesHeader* header, Bytes bytes) {
    constexpr size_t fixed_size = 9;
    header->mpeg2 = true;
    header->scrambling = bytes[6] >> 4 & 3;
    header->data_aligned = (bytes[6] & 4) != 0;
    const uint8_t flags = byte_at(bytes, 7);
    header->payload = fixed_size + byte_at(bytes, 8); // PES_header_data_length
    const Bytes fields =
        bytes.first(header->payload < bytes.size() ? header->payload : bytes.size());
    size_t at = fixed_size;
    const auto has = [&](size_t count) {
        return at <= fields.size() && count <= fields.size() - at;
    };
    if ((flags & 0x80) != 0) { // PTS_DTS_flags
        header->pts = has(clock_size) ? read_clock(&fields[at]) : no_clock;
        at += clock_size;
        if ((flags & 0x40) != 0) {
            header->dts = has(clock_size) ? read_clock(&fields[at]) : no_clock;
            at += clock_size;
        }
    }
    at += (flags & 0x20) != 0 ? 6U : 0U;  // ESCR
    at += (flags & 0x10) != 0 ? 3U : 0U;  // ES_rate
    at += (flags & 0x08) != 0 ? 1U : 0U;  // DSM_trick_mode
    at += (flags & 0x04) != 0 ? 1U : 0U;  // additional_copy_info
    at += (flags & 0x02) != 0 ? 2U : 0U;  // previous_PES_packet_CRC
    if ((flags & 0x01) == 0 || !has(1)) { // PES_extension_flag
        return;
    }
    const uint8_t extension = fields[at++];
    at += (extension & 0x80) != 0 ? 16U : 0U; // PES_private_data
    if ((extension & 0x40) != 0) {            // pack_header_field
        at += has(1) ? 1U + fields[at] : 1U;
    }
    at += (extension & 0x20) != 0 ? 2U : 0U; // program_packet_sequence_counter
    at += (extension & 0x10) != 0 ? 2U : 0U; // P-STD_buffer
    // PES_extension_field_length and stream_id_extension_flag
    if ((extension & 0x01) != 0 && has(2) && (fields[at + 1] & 0x80) == 0) {
        header->extension_id = fields[at + 1];
    }
}

// ISO/IEC 11172-1, 2.4.3.3.
void read_mpeg1_fields(PesHeader* header, Bytes bytes) {
    constexpr size_t stuffing_limit = 16;
    size_t at = pes_start_size;
    while (byte_at(bytes, at) == 0xFF && at < pes_start_size + stuffing_limit) {
        ++at;
    }
    at += byte_at(bytes, at) >> 6 == 1 ? 2U : 0U; // STD_buffer_scale and size
    const uint8_t kind = byte_at(bytes, at) >> 4;
    const auto clock_at = [&](size_t place) {
        return place + clock_size <= bytes.size() ? read_clock(&bytes[place]) : no_clock;
    };
    if (kind == 2 || kind == 3) {
        header->pts = clock_at(at);
        at += clock_size;
        if (kind == 3) {
            header->dts = clock_at(at);
            at += clock_size;
        }
    } else if (byte_at(bytes, at) == 0x0F) {
        ++at;
    }
    header->payload = at;
}

} // namespace

int64_t read_clock(const uint8_t* bytes) {
    if ((bytes[0] & bytes[2] & bytes[4] & 1) == 0) {
        return no_clock;
    }
    return int64_t{bytes[0] >> 1 & 7} << 30 | int64_t{ReadBE16(bytes + 1) >> 1} << 15 |
           ReadBE16(bytes + 3) >> 1;
}

bool pes_without_header(uint8_t stream_id) {
    switch (stream_id) {
    case id_program_stream_map:
    case id_padding:
    case id_private_2:
    case 0xF0: // ECM
    case 0xF1: // EMM
    case 0xF2: // DSM-CC
    case 0xF8: // ITU-T H.222.1, type E
    case id_directory:
        return true;
    default:
        return false;
    }
}

int read_pes_header(PesHeader* header, Bytes bytes) {
    *header = {};
    if (bytes.size() < pes_start_size || !has_at(bytes, 0, "\0\0\1") ||
        bytes[3] < id_program_stream_map) {
        return 1;
    }
    header->stream_id = bytes[3];
    header->packet_length = ReadBE16(&bytes[4]);
    header->payload = pes_start_size;
    if (pes_without_header(header->stream_id) || bytes.size() == pes_start_size) {
        return 0;
    }
    // Told per packet: such of MPEG-2 stand behind packs of MPEG-1, too.
    if (bytes[6] >> 6 == 2) {
        read_mpeg2_fields(header, bytes);
    } else {
        read_mpeg1_fields(header, bytes);
    }
    return 0;
}

} // namespace zat
