// The tags around an audio stream as they really are: ID3v2 before it (id3.org, ID3v2.4.0
// structure, 3.1), and APE, Lyrics3 v2 and ID3v1 behind it, in any order.
#pragma once

#include "common/file/reader.h"

#include <cstdint>

namespace zat {

constexpr uint32_t id3v2_header_size = 10;
constexpr uint32_t id3v1_size = 128;
constexpr uint32_t ape_footer_size = 32;
constexpr uint32_t lyrics3_digits = 6; // of the size in the trailer

// The whole tags around a stream, footers and items included.
struct OuterTags {
    Span stream;              // what stands between them
    Span id3v2;               // all tags at the start
    Span ape_items;           // of the last APE tag of the file
    uint32_t ape_version = 0; // 1000 or 2000 as a rule
    Span id3v1;
    int64_t ape = 0;     // bytes of all APE tags, headers included
    int64_t lyrics3 = 0; // bytes
};

// A sync-safe integer of ID3v2: seven bits in each of four bytes (ID3v2.4.0 structure, 6.2).
uint32_t sync_safe(const uint8_t* bytes);

// The size of the ID3v2 tag whose ten header bytes these are, with its footer and by the sync-safe
// rule; 0 when they are none.
int64_t whole_id3v2_size(const uint8_t* header);

// What stands behind the ID3v2 tags at the start of the reader's file.
Span span_behind_id3v2(Reader* reader);

// Measures the tags in front, one behind the other, and those behind, in any order. A tag that does
// not lie wholly in the file is none.
OuterTags measure_outer_tags(Reader* reader);

} // namespace zat
