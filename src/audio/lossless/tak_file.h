// TAK files (the format's 2.x decoder and stream description).
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes an open file. Returns 0.
int AnalyzeTakFile(FileRecord* file, const Output& out);

} // namespace zat
