#include "common/tags/tag_sizes.h"

#include "common/bytes/bytes.h"
#include "common/file/file_window.h"
#include "common/tags/outer_tags.h"

#include <algorithm>

namespace zat {

namespace {

// No tag is looked for before the file's last mebibyte.
constexpr int64_t tail_reach = 1048576;

// Holds an ID3v1 tag with everything that is looked for right before it.
constexpr uint32_t tail_look = 256;

constexpr uint32_t lyrics3_marker_size = 9;

uint32_t stacked_id3v2_size(Reader* reader) {
    uint32_t total = 0;
    for (int64_t position = 0;;) {
        const Bytes header = read_view(reader, whole_file(reader), position, id3v2_header_size);
        if (header.size() < id3v2_header_size || !starts_with(header.data(), "ID3")) {
            return total;
        }
        const uint32_t size = Id3v2Size(header.data());
        total += size;
        position += size;
    }
}

// The `length` bytes that begin `distance` bytes before the file's end; empty when they are not
// all within reach.
Bytes tail_bytes(FileWindow* window, uint64_t distance, uint32_t length) {
    const int64_t size = window->file->size;
    if (distance > static_cast<uint64_t>(std::min(size, tail_reach)) || distance < length) {
        return {};
    }
    const Bytes bytes = window_view(window, size - static_cast<int64_t>(distance), length);
    return bytes.size() == length ? bytes : Bytes{};
}

template <size_t N>
bool tail_has(FileWindow* window, uint64_t distance, const char (&text)[N]) {
    return has_at(tail_bytes(window, distance, N - 1), 0, text);
}

// Six decimal digits, most significant first, of any characters.
uint32_t lyrics3_size(Bytes digits) {
    uint32_t size = 0;
    for (const uint8_t digit : digits) {
        size = size * 10 + digit - '0';
    }
    return size;
}

} // namespace

uint32_t Id3v2Size(const uint8_t* header) {
    if (!starts_with(header, "ID3")) {
        return 0;
    }
    uint32_t size = 0;
    for (int i = 6; i < 10; ++i) {
        size = size * 128 + header[i];
    }
    return size + id3v2_header_size;
}

int MeasureTags(Reader* reader, TagSizes* sizes) {
    FileRecord* file = reader->block.file;
    sizes->id3v2 = stacked_id3v2_size(reader);

    FileWindow window;
    const uint32_t look = static_cast<uint32_t>(std::min<int64_t>(file->size, tail_look));
    window_open(&window, file, file->size - look, tail_look);
    if (window_load(&window, look) == 0) {
        return 2;
    }
    uint64_t tail = 0; // 64 bits: a size of garbage must not lead back into the file
    if (tail_has(&window, id3v1_size, "TAG")) {
        sizes->id3v1 = id3v1_size;
        tail = id3v1_size;
    }
    if (tail_has(&window, tail + lyrics3_marker_size, "LYRICS200")) {
        constexpr uint32_t trailer = lyrics3_digits + lyrics3_marker_size;
        const Bytes digits = tail_bytes(&window, tail + trailer, lyrics3_digits);
        if (!digits.empty()) {
            const uint32_t size = lyrics3_size(digits);
            sizes->lyrics3 = size + trailer;
            tail += uint64_t{size} + trailer;
        }
    }
    if (tail_has(&window, tail + ape_footer_size, "APETAGEX")) {
        sizes->ape_footer = ape_footer_size;
        tail += ape_footer_size;
    }
    // One header's length further on, or the footer's own first letters when it is another
    // version's.
    if (tail_has(&window, tail + ape_footer_size, "APETAG")) {
        sizes->ape = ape_footer_size;
    }
    return 0;
}

} // namespace zat
