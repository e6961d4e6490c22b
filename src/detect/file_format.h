// What a file is: detection as the host sees it, and its driver.
#pragma once

#include "common/text.h"
#include "zat/zat.h"

#include <cstdint>

namespace zat {

// The driver's working record.
struct DetectContext {
    char path[line_size];
    uint32_t type_code;
    int32_t stream_start; // byte position of the stream behind a leading tag; -1 when not told
    int64_t file_size;    // bytes; 0 for a file that does not open
    char general[2][line_size];
    int32_t general_count;
};

// Decides the type of the file at context->path, which is cleared but for the path and a stream
// start of -1. Returns 0 when a probe decided, else a negative reason: -1 not opened, -2 no memory,
// -3 nothing read, -4 empty, -5 refused, -6 nothing matched. The type and the lines are always
// written.
int detect(DetectContext* context);

// Fills the record's type code, general lines, general count and file size.
void fill_file_format(InfoRecord* record);

} // namespace zat
