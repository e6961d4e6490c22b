// The lines and details of an ASF file's streams.
#pragma once

#include "common/record/extra_lines.h"
#include "common/record/output.h"
#include "container/asf/media_scan.h"

namespace zat::asf {

struct Source {
    Reader* reader = nullptr;
    const Header* header = nullptr;
    MediaScan* scan = nullptr;
    double play_time = 0; // seconds
    Output out = {};
    ExtraLines* extra = nullptr;
};

// Adds every stream, in file order.
void add_streams(const Source& source);

} // namespace zat::asf
