#include "container/ogg/page.h"

#include "common/file/file_window.h"

#include <algorithm>
#include <cstring>

namespace zat::ogg {

namespace {

// Pages of other streams that may stand between two of a packet.
constexpr int interleaved_limit = 4096;

constexpr uint32_t search_step = 65536;

bool is_header(const uint8_t* bytes) {
    constexpr uint8_t known_flags = flag_continued | flag_first | flag_last;
    return starts_with(bytes, "OggS\0") && (bytes[5] & ~known_flags) == 0;
}

// The run of segments from cursor->segment on that belong to one packet.
void take_run(PacketCursor* cursor) {
    cursor->run = 0;
    cursor->ends_here = false;
    while (cursor->segment < cursor->page.segments && !cursor->ends_here) {
        const uint8_t size = cursor->page.lacing[cursor->segment++];
        cursor->run += size;
        cursor->ends_here = size < 255;
    }
}

// Moves to the stream's next page. False at the end of the file, and at a page of the same serial
// that begins anew.
bool next_page(PacketCursor* cursor) {
    const uint32_t serial = cursor->page.serial;
    for (int i = 0; i < interleaved_limit; ++i) {
        if (!read_page(cursor->reader, end_of(cursor->page), &cursor->page)) {
            return false;
        }
        if (cursor->page.serial == serial) {
            cursor->segment = 0;
            cursor->position = body_of(cursor->page);
            return (cursor->page.flags & flag_first) == 0;
        }
    }
    return false;
}

} // namespace

bool read_page(Reader* reader, int64_t position, Page* page) {
    const Span space = {position, reader->block.file->size};
    const Bytes header = read_view(reader, space, 0, page_header_size + sizeof page->lacing);
    if (header.size() < page_header_size || !is_header(header.data()) ||
        header.size() - page_header_size < header[26]) {
        return false;
    }
    page->position = position;
    page->flags = header[5];
    page->granule = ReadLE64(header.data() + 6);
    page->serial = ReadLE32(header.data() + 14);
    page->segments = header[26];
    page->body_size = 0;
    for (uint32_t i = 0; i < page->segments; ++i) {
        page->lacing[i] = header[page_header_size + i];
        page->body_size += page->lacing[i];
    }
    return true;
}

int64_t find_page(FileRecord* file, int64_t from, int64_t end) {
    FileWindow window;
    // Steps overlap by a header, so that none is cut by them.
    for (int64_t at = from; at < end; at += search_step) {
        const auto length =
            static_cast<uint32_t>(std::min<int64_t>(end - at, search_step) + page_header_size - 1);
        window_open(&window, file, at, length);
        window_load_all(&window);
        const Bytes bytes = window_bytes(&window);
        for (int64_t hit = find_byte_pair(bytes, 0, 'O', 'g');
             hit >= 0 && hit + page_header_size <= std::ssize(bytes);
             hit = find_byte_pair(bytes, static_cast<size_t>(hit) + 1, 'O', 'g')) {
            if (is_header(bytes.data() + hit)) {
                return at + hit;
            }
        }
        window_close(&window);
    }
    return -1;
}

uint32_t packets_ended(const Page& page) {
    return static_cast<uint32_t>(std::count_if(
        page.lacing, page.lacing + page.segments, [](uint8_t size) { return size < 255; }));
}

void start_packet(PacketCursor* cursor, Reader* reader, const Page& page, uint32_t segment) {
    cursor->reader = reader;
    cursor->page = page;
    cursor->segment = std::min(segment, page.segments);
    cursor->position = body_of(page);
    for (uint32_t i = 0; i < cursor->segment; ++i) {
        cursor->position += page.lacing[i];
    }
    take_run(cursor);
}

bool next_packet(PacketCursor* cursor) {
    read_packet(cursor, nullptr, UINT32_MAX);
    if (!cursor->ends_here || cursor->run != 0) {
        return false;
    }
    if (cursor->segment == cursor->page.segments && !next_page(cursor)) {
        return false;
    }
    take_run(cursor);
    return cursor->run != 0 || cursor->ends_here;
}

uint32_t read_packet(PacketCursor* cursor, uint8_t* destination, uint32_t count) {
    uint32_t done = 0;
    while (done < count) {
        if (cursor->run == 0) {
            if (cursor->ends_here || !next_page(cursor)) {
                break;
            }
            take_run(cursor);
            continue;
        }
        const uint32_t part = std::min(cursor->run, count - done);
        uint32_t got = part;
        if (destination != nullptr) {
            got = read_some(cursor->reader, whole_file(cursor->reader), cursor->position,
                destination + done, part);
        }
        cursor->position += part;
        cursor->run -= part;
        done += got;
        if (got < part) {
            break;
        }
    }
    return done;
}

} // namespace zat::ogg
