// Pages of an Ogg bitstream and the packets that they carry (RFC 3533, 5 and 6).
#pragma once

#include "common/file/reader.h"

#include <cstdint>

namespace zat::ogg {

constexpr uint32_t page_header_size = 27;

constexpr uint8_t flag_continued = 1; // the first packet began on an earlier page
constexpr uint8_t flag_first = 2;     // of a logical bitstream
constexpr uint8_t flag_last = 4;

struct Page {
    int64_t position = 0; // of the capture pattern
    uint8_t flags = 0;
    int64_t granule = -1; // -1 when no packet ends on the page
    uint32_t serial = 0;
    uint32_t segments = 0;
    uint8_t lacing[255] = {};
    uint32_t body_size = 0; // bytes
};

constexpr int64_t body_of(const Page& page) {
    return page.position + page_header_size + page.segments;
}

constexpr int64_t end_of(const Page& page) {
    return body_of(page) + page.body_size;
}

// Reads the header of the page at a position. False when none stands there or it is cut off.
bool read_page(Reader* reader, int64_t position, Page* page);

// The position of the first capture pattern in [from, end) whose page header is sound; -1 without
// one.
int64_t find_page(FileRecord* file, int64_t from, int64_t end);

// Packets that end on the page.
uint32_t packets_ended(const Page& page);

// The bytes of one packet, over as many pages as it takes.
struct PacketCursor {
    Reader* reader = nullptr;
    Page page;
    uint32_t segment = 0; // the next one of the page
    int64_t position = 0; // of the next byte
    uint32_t run = 0;     // bytes up to where the packet or the page ends
    bool ends_here = false;
};

// Starts at the packet that begins with a segment of the page.
void start_packet(PacketCursor* cursor, Reader* reader, const Page& page, uint32_t segment);

// Starts at the stream's packet behind the cursor's, of which the rest is stepped over. False when
// there is none.
bool next_packet(PacketCursor* cursor);

// Copies up to `count` bytes, or steps over them for a null destination. Returns how many there
// were before the packet's end.
uint32_t read_packet(PacketCursor* cursor, uint8_t* destination, uint32_t count);

} // namespace zat::ogg
