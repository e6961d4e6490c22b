// Sizes of the tags around an audio stream: ID3v2 (id3.org, ID3v2.4.0 structure, 3.1) before it,
// APE, Lyrics3 v2 and ID3v1 behind it. MP3 files have rules of their own, which take the tags
// behind in this order and count of an APE tag the footer only.
#pragma once

#include "common/reader.h"

#include <cstdint>

namespace zat {

// Bytes; 0 for a tag that is not there.
struct TagSizes {
    uint32_t id3v2 = 0;      // all tags at the start, headers included
    uint32_t ape = 0;        // 32 for an "APETAG" marker before the APE footer
    uint32_t id3v1 = 0;      // 128
    uint32_t other = 0;      // left to the caller
    uint32_t ape_footer = 0; // 32: the footer alone, without its items
    uint32_t lyrics3 = 0;    // with the size field and the end marker
};

constexpr uint32_t id3v2_header_size = 10;
constexpr uint32_t id3v1_size = 128;
constexpr uint32_t ape_footer_size = 32;
constexpr uint32_t lyrics3_digits = 6;

// The whole tag's size from its ten header bytes, 0 when they do not begin with "ID3". The size
// bytes count with all eight bits, so that files of writers that ignore the sync-safe form come out
// larger, and a footer is not counted.
uint32_t Id3v2Size(const uint8_t* header);

// Measures the tags of the reader's file into a cleared record. Returns 0, or 2 when nothing of the
// file's tail could be read; the ID3v2 size, as far as the reader's allowance goes, is set then all
// the same.
int MeasureTags(Reader* reader, TagSizes* sizes);

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

// The size of the ID3v2 tag whose ten header bytes these are, with its footer and by the sync-safe
// rule; 0 when they are none.
int64_t whole_id3v2_size(const uint8_t* header);

// What stands behind the ID3v2 tags at the start of the reader's file.
Span span_behind_id3v2(Reader* reader);

// Measures the tags in front, one behind the other, and those behind, in any order. A tag that does
// not lie wholly in the file is none.
OuterTags measure_outer_tags(Reader* reader);

} // namespace zat
