// The pages of an Ogg file: all of them in a small file, those at its start and end in a large one.
#pragma once

#include "container/ogg/logical_stream.h"

#include <cstdint>

namespace zat::ogg {

// Logical bitstreams of a link that are kept.
constexpr int32_t max_streams = 12;

// Logical bitstreams that begin together. Chained files have several links, one behind the other
// (RFC 3533, 4).
struct Link {
    Link() {} // leaves the streams as they are: clearing them all costs more than reading one

    union {
        LogicalStream streams[max_streams]; // those that are counted
    };
    int32_t count = 0;
    bool has_data = false; // a data page was seen: a first page begins the next link
};

struct Walk {
    Reader reader;
    Link first;
    Link later;               // the one that is being read, behind the first
    int32_t links = 1;        // as far as they were counted
    double later_seconds = 0; // of the links behind the first
    bool counted = false;     // every page was read
    bool estimated = false;   // the play time of a chain that was not read whole
    int64_t start = 0;        // of the first page
    uint64_t missing = 0;     // bytes that the last page lacks
    bool cut_header = false;  // the file ends within a page header
    uint64_t trailing = 0;    // bytes behind the last page
};

// Reads all pages of a file of up to `counted_size` bytes, or when asked for. False when there is
// no page.
constexpr int64_t counted_size = 1048576;
bool walk_file(FileRecord* file, bool thorough, Walk* walk);

// Of the longest audio or video stream, 0 when not known.
double link_seconds(const Link& link);

} // namespace zat::ogg
