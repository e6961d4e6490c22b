// The tags around the stream of an MP3 file as its lines have always shown them: those behind the
// stream are looked for in one fixed order, and of an APE tag only the footer counts. What really
// stands there is told by outer_tags.h.
#pragma once

#include "common/file/reader.h"

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

// The whole tag's size from its ten header bytes, 0 when they do not begin with "ID3". The size
// bytes count with all eight bits, so that files of writers that ignore the sync-safe form come out
// larger, and a footer is not counted.
uint32_t Id3v2Size(const uint8_t* header);

// Measures the tags of the reader's file into a cleared record. Returns 0, or 2 when nothing of the
// file's tail could be read; the ID3v2 size, as far as the reader's allowance goes, is set then all
// the same.
int MeasureTags(Reader* reader, TagSizes* sizes);

} // namespace zat
