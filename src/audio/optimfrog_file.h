// OptimFROG files.
#pragma once

#include "common/file_access.h"
#include "common/output.h"

namespace zat {

// Describes an open file. Returns 0.
int AnalyzeOptimFrogFile(FileRecord* file, const Output& out);

} // namespace zat
