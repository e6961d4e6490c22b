// Matroska and WebM files (RFC 9559).
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Fills the record and the details of an open file. Returns 0, or 1 when it cannot be read.
int AnalyzeMatroskaFile(FileRecord* file, const Output& out);

} // namespace zat
