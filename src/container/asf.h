// Advanced Systems Format: Windows Media files (ASF 01.20.06).
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes an open ASF file. Returns 0, or 1 when nothing can be read.
int AnalyzeAsfFile(FileRecord* file, const Output& out);

} // namespace zat
