// AIFF and AIFF-C files (Apple, "Audio Interchange File Format", versions 1.3 and C).
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes the file in one audio line, with the chain of chunks as an extra line. Returns 0.
int AnalyzeAiffFile(FileRecord* file, const Output& out);

} // namespace zat
