// The texts of a RIFF file's INFO list (Multimedia Programming Interface and Data Specifications
// 1.0, "INFO List Chunk").
#pragma once

#include "common/file/riff.h"
#include "common/record/output.h"

namespace zat::avi {

// "artist - title / writer" into the extra-info text, and into the details.
void write_info(Reader* reader, Span list, const Output& out);

} // namespace zat::avi
