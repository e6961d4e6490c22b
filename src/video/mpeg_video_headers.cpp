#include "video/mpeg_video_headers.h"

#include "common/bytes/bits.h"
#include "common/bytes/start_code.h"

namespace zat {

namespace {

constexpr uint32_t picture_coding_extension_id = 8;

bool is_true_header(const SequenceHeader& header) {
    return header.width != 0 && header.height != 0 && header.frame_rate_code != 0 &&
           header.marker != 0;
}

void read_extension(Bytes behind, MpegVideoHeaders* headers) {
    if (headers->complete) {
        read_picture_coding(&headers->picture, behind);
    } else if (!headers->extension_found) {
        headers->extension_found = read_sequence_extension(&headers->extension, behind) == 0;
    } else if (!headers->display_found) {
        headers->display_found = read_sequence_display_extension(&headers->display, behind) == 0;
    }
}

// Takes what one start code tells. False at the first slice behind the headers, where they end.
bool read_unit(uint8_t code, Bytes behind, MpegVideoHeaders* headers) {
    if (code == group_start_code && !headers->gop.found) {
        read_gop_time(&headers->gop, behind);
    } else if (code == sequence_header_code && !headers->header_found) {
        SequenceHeader header;
        if (read_sequence_header(&header, behind) == 0 && is_true_header(header)) {
            headers->header = header;
            headers->header_found = true;
        }
    } else if (headers->header_found && code == extension_start_code) {
        read_extension(behind, headers);
    } else if (headers->header_found && code == picture_start_code) {
        headers->complete = true;
    } else if (headers->complete) {
        return false;
    }
    return true;
}

} // namespace

int read_gop_time(GopTime* gop, Bytes bytes) {
    BitReader reader{bytes};
    GopTime found;
    found.found = true;
    found.drop_frame = read_bits(&reader, 1) != 0;                // drop_frame_flag
    found.hours = static_cast<uint8_t>(read_bits(&reader, 5));    // time_code_hours
    found.minutes = static_cast<uint8_t>(read_bits(&reader, 6));  // time_code_minutes
    const uint32_t marker = read_bits(&reader, 1);                // marker_bit
    found.seconds = static_cast<uint8_t>(read_bits(&reader, 6));  // time_code_seconds
    found.pictures = static_cast<uint8_t>(read_bits(&reader, 6)); // time_code_pictures
    if (reader.failed || marker == 0 || found.hours > 23 || found.minutes > 59 ||
        found.seconds > 59) {
        return 1;
    }
    *gop = found;
    return 0;
}

int read_picture_coding(PictureCoding* picture, Bytes bytes) {
    BitReader reader{bytes};
    const uint32_t id = read_bits(&reader, 4); // extension_start_code_identifier
    skip_bits(&reader, 16);                    // f_code
    skip_bits(&reader, 2);                     // intra_dc_precision
    PictureCoding found;
    found.found = true;
    found.structure = static_cast<uint8_t>(read_bits(&reader, 2));       // picture_structure
    found.top_field_first = static_cast<uint8_t>(read_bits(&reader, 1)); // top_field_first
    skip_bits(&reader, 5); // frame_pred_frame_dct to alternate_scan
    found.repeat_first_field = static_cast<uint8_t>(read_bits(&reader, 1)); // repeat_first_field
    if (reader.failed || id != picture_coding_extension_id) {
        return 1;
    }
    *picture = found;
    return 0;
}

int find_mpeg_video_headers(Bytes stream, MpegVideoHeaders* headers) {
    *headers = {};
    for (int64_t at = find_start_code(stream, 0); at >= 0;
         at = find_start_code(stream, static_cast<size_t>(at) + 3)) {
        const Bytes behind = stream.subspan(static_cast<size_t>(at) + start_code_size);
        if (!read_unit(stream[static_cast<size_t>(at) + 3], behind, headers)) {
            break;
        }
    }
    return headers->header_found ? 0 : 1;
}

} // namespace zat
