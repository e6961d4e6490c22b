// WSD files (1bit Audio Consortium, WSD file format, version 1.1).
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes an open file. Returns 0.
int AnalyzeWsdFile(FileRecord* file, const Output& out);

} // namespace zat
