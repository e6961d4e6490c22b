// TAK files (the format's 2.x decoder and stream description).
#pragma once

#include "common/file_access.h"
#include "common/output.h"

namespace zat {

// Describes an open file. Returns 0.
int AnalyzeTakFile(FileRecord* file, const Output& out);

} // namespace zat
