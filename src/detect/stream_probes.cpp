#include "detect/stream_probes.h"

#include "audio/eac3.h"
#include "audio/frame_search.h"
#include "audio/latm.h"
#include "common/bytes/bytes.h"
#include "common/tags/outer_tags.h"
#include "video/video_kind.h"

#include <algorithm>
#include <iterator>

namespace zat {

namespace {

constexpr int frames_wanted = 3;
constexpr uint32_t header_size = 8; // bytes, enough for every kind of frame

// Up to `count` bytes at a place of the view.
Bytes bytes_at(FileWindow* window, uint32_t at, uint32_t count) {
    const uint32_t loaded = window_load(window, at + count);
    return at < loaded ? window_bytes(window).subspan(at, std::min(count, loaded - at)) : Bytes{};
}

constexpr uint8_t adts_frequencies = 13; // of sampling_frequency_index; the others are reserved

uint32_t adts_frame_size(Bytes header) {
    constexpr uint32_t adts_header = 7;
    const uint32_t size = audio_frame_size(FrameKind::adts, header);
    return size > adts_header && (header[2] >> 2 & 0xF) < adts_frequencies ? size : 0;
}

uint32_t id3v2_size_at(FileWindow* window, uint32_t at) {
    const Bytes header = bytes_at(window, at, id3v2_header_size);
    return header.size() == id3v2_header_size
               ? static_cast<uint32_t>(whole_id3v2_size(header.data()))
               : 0;
}

// Of the sync frame at the front; 0 when there is none.
uint32_t ac3_frame_size(Bytes bytes) {
    const uint32_t size = audio_frame_size(FrameKind::ac3, bytes);
    Eac3Info info;
    return size != 0 ? size : eac3_info(bytes, &info) ? info.first.size : 0;
}

} // namespace

bool has_adts_frames(FileWindow* window, uint32_t at) {
    uint8_t first[header_size];
    for (int frame = 0; frame < frames_wanted; ++frame) {
        at += id3v2_size_at(window, at); // segments behind each other (RFC 8216, 3.4)
        const Bytes header = bytes_at(window, at, header_size);
        const uint32_t size = adts_frame_size(header);
        if (size == 0 || (frame != 0 && !same_stream(FrameKind::adts, header, first))) {
            return false;
        }
        std::copy_n(header.begin(), header_size, first);
        at += size;
    }
    return true;
}

bool has_loas_frames(FileWindow* window, uint32_t at) {
    for (int frame = 0; frame < frames_wanted; ++frame) {
        const uint32_t size = loas_frame_size(bytes_at(window, at, loas_header_size));
        if (size <= loas_header_size) {
            return false;
        }
        at += size;
    }
    return true;
}

bool has_ac3_frames(FileWindow* window, uint32_t at) {
    const uint32_t size = ac3_frame_size(bytes_at(window, at, header_size));
    return size != 0 && has_at(bytes_at(window, at + size, 2), 0, "\x0B\x77");
}

bool has_video_headers(FileWindow* window, uint32_t at) {
    constexpr uint32_t reach = 4096; // bytes
    return guess_video_kind(bytes_at(window, at, reach)) != VideoKind::unknown;
}

bool has_bitmap_header(FileWindow* window, uint32_t at) {
    // BITMAPFILEHEADER, then BITMAPCOREHEADER or BITMAPINFOHEADER and those that extend it.
    constexpr uint32_t file_header = 14;
    constexpr uint32_t core_header = 12;
    constexpr uint32_t looked_at = file_header + 16;
    static constexpr uint32_t header_sizes[] = {core_header, 16, 40, 52, 56, 64, 108, 124};
    static constexpr uint16_t depths[] = {0, 1, 2, 4, 8, 16, 24, 32}; // 0: a JPEG or PNG picture

    const Bytes bytes = bytes_at(window, at, looked_at);
    if (bytes.size() < looked_at) {
        return false;
    }
    const uint32_t pixels_at = ReadLE32(bytes.data() + 10);
    const uint8_t* info = bytes.data() + file_header;
    const uint32_t size = ReadLE32(info);
    const bool core = size == core_header;
    const uint32_t width = core ? ReadLE16(info + 4) : ReadLE32(info + 4);
    const uint32_t height = core ? ReadLE16(info + 6) : ReadLE32(info + 8);
    const uint8_t* planes = info + (core ? 8 : 12);
    const uint16_t depth = ReadLE16(planes + 2);
    const auto one_of = [](const auto& list, auto value) {
        return std::find(std::begin(list), std::end(list), value) != std::end(list);
    };
    return one_of(header_sizes, size) && one_of(depths, depth) && ReadLE16(planes) == 1 &&
           width != 0 && height != 0 && pixels_at >= file_header + size;
}

} // namespace zat
