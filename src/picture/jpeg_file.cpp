#include "picture/jpeg_file.h"

#include "common/bytes/tables.h"
#include "common/text/text.h"
#include "picture/picture_file.h"
#include "video/jpeg_frame.h"

namespace zat {

namespace {

// A camera's picture has a few dozen segments before its frame header.
constexpr Allowance header_allowance = {100'000, 8LL << 20};

constexpr uint32_t segment_look = 64; // bytes: a frame header with its components

struct FrameKind {
    uint8_t marker;
    const char* word; // in the line
    const char* profile;
    const char* codec;
};

// The differential frames, which come behind others only, are left out.
constexpr FrameKind frame_kinds[] = {
    {0xC0, "JPEG baseline", "Baseline", "MJPEG"}, {0xC1, "JPEG extended", "Extended", "MJPEG"},
    {0xC2, "JPEG progressive", "Progressive", "MJPEG"},
    {0xC3, "JPEG lossless", "Lossless", "Lossless JPEG"},
    {0xC9, "JPEG extended arithmetic", "Extended", "MJPEG"},
    {0xCA, "JPEG progressive arithmetic", "Progressive", "MJPEG"},
    {0xCB, "JPEG lossless arithmetic", "Lossless", "Lossless JPEG"},
    {0xDE, "JPEG hierarchical", "Hierarchical", "MJPEG"}, // DHP: the size of the whole
    {0xF7, "JPEG-LS", "", "JPEG-LS"},                     // ITU-T T.87, C.1.1
};

const FrameKind* frame_kind(uint8_t marker) {
    return find_row(frame_kinds, &FrameKind::marker, marker);
}

// Markers without a segment behind them (ITU-T T.81, B.1.1.3).
constexpr bool stands_alone(uint8_t marker) {
    return marker == 0x01 || (marker >= 0xD0 && marker <= marker_soi);
}

// A JFIF segment whose densities are equal tells square pixels, whatever their unit. Which way
// round others are meant, writers do not agree.
void take_jfif(Bytes segment, PictureFile* jpeg) {
    constexpr size_t densities_at = 8;
    if (segment.size() >= densities_at + 4 &&
        ReadBE16(&segment[densities_at]) == ReadBE16(&segment[densities_at + 2]) &&
        ReadBE16(&segment[densities_at]) != 0) {
        jpeg->facts.pixel_aspect_width = 1;
        jpeg->facts.pixel_aspect_height = 1;
    }
}

// The first application segment tells what kind of file this is.
void take_application(uint8_t marker, Bytes segment, PictureFile* jpeg) {
    const bool jfif = marker == marker_app0 && has_at(segment, 0, "JFIF\0");
    const bool exif = marker == marker_app0 + 1 && has_at(segment, 0, "Exif\0");
    if (jfif) {
        take_jfif(segment, jpeg);
    }
    if (jpeg->format_profile[0] == '\0' && (jfif || exif)) {
        copy_utf8(jpeg->format_profile, jfif ? "JFIF" : "Exif");
    }
}

void take_frame(const FrameKind& kind, Bytes segment, PictureFile* jpeg) {
    JpegFrame frame;
    if (!read_jpeg_frame(segment, &frame)) {
        jpeg->truncated = true;
        return;
    }
    ZatStream* facts = &jpeg->facts;
    copy_text(jpeg->name, kind.word);
    copy_utf8(facts->codec, kind.codec);
    copy_utf8(facts->profile, kind.profile);
    facts->width = frame.width;
    facts->height = frame.height;
    facts->bit_depth = frame.bit_depth <= 16 ? frame.bit_depth : 0;
    copy_utf8(facts->chroma, frame.chroma);
    set_pixel_aspect(facts, facts->pixel_aspect_width, facts->pixel_aspect_height);
    jpeg->bits = facts->bit_depth;
}

// Up to the frame header, over fill bytes and what else may stand between segments.
void read_headers(PictureFile* jpeg) {
    Reader* reader = &jpeg->reader;
    reader_allow(reader, header_allowance);
    for (int64_t at = 0;;) {
        const Bytes bytes = read_view(reader, jpeg->span, at, segment_look);
        if (bytes.size() < 4) {
            jpeg->truncated = !reader->limited;
            return;
        }
        const uint8_t marker = bytes[1];
        if (bytes[0] != marker_prefix || marker == 0 || marker == marker_prefix) {
            ++at;
            continue;
        }
        if (stands_alone(marker)) {
            at += 2;
            continue;
        }
        const uint32_t length = ReadBE16(&bytes[2]); // its own two bytes counted
        if (marker == marker_sos || marker == marker_eoi || length < 2) {
            jpeg->damaged = true;
            return;
        }
        const Bytes segment =
            bytes.subspan(4, length - 2 < bytes.size() - 4 ? length - 2 : bytes.size() - 4);
        if (const FrameKind* kind = frame_kind(marker); kind != nullptr) {
            take_frame(*kind, segment, jpeg);
            return;
        }
        take_application(marker, segment, jpeg);
        at += 2 + int64_t{length};
    }
}

} // namespace

int AnalyzeJpegFile(FileRecord* file, const Output& out) {
    PictureFile jpeg;
    open_picture_file(&jpeg, file);
    copy_text(jpeg.name, "JPEG");
    copy_utf8(jpeg.facts.codec, "MJPEG");
    jpeg.shows_chroma = true;
    read_headers(&jpeg);
    write_picture_file(&jpeg, "[JPEG]", out);
    return 0;
}

} // namespace zat
