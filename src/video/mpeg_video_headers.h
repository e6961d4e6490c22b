// The headers in front of the first picture of an MPEG-1 or MPEG-2 video stream, found by their
// start codes (ISO/IEC 11172-2, 2.4.2; ISO/IEC 13818-2, 6.2).
#pragma once

#include "common/bytes/bytes.h"
#include "video/mpeg_sequence.h"

#include <cstddef>
#include <cstdint>

namespace zat {

// time_code of a group_of_pictures_header.
struct GopTime {
    bool found = false;
    bool drop_frame = false;
    uint8_t hours = 0;
    uint8_t minutes = 0;
    uint8_t seconds = 0;
    uint8_t pictures = 0;
};

enum PictureStructure : uint8_t { structure_top = 1, structure_bottom = 2, structure_frame = 3 };

// Of a picture_coding_extension.
struct PictureCoding {
    bool found = false;
    uint8_t structure = structure_frame;
    uint8_t top_field_first = 0;
    uint8_t repeat_first_field = 0;
};

struct MpegVideoHeaders {
    bool header_found = false;
    bool extension_found = false; // the stream is MPEG-2
    bool display_found = false;
    bool complete = false; // the first picture was reached: nothing more can come
    SequenceHeader header;
    SequenceExtension extension;
    SequenceDisplayExtension display;
    GopTime gop; // of the first group
    PictureCoding picture;
};

// Both read what follows the start code; the second takes extensions of that kind only. They return
// 0, or 1 with the record as it was.
int read_gop_time(GopTime* gop, Bytes bytes);
int read_picture_coding(PictureCoding* picture, Bytes bytes);

// Reads the headers of the first true sequence header. One of an impossible size or rate, or
// without its marker bit, stands in other data and is passed over. Returns 0, or 1 without one.
int find_mpeg_video_headers(Bytes stream, MpegVideoHeaders* headers);

} // namespace zat
