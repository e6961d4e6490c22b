// Raw Enhanced AC-3 files.
#pragma once

#include "common/file_access.h"
#include "common/output.h"

namespace zat {

// Returns 0, or 1 with nothing written when no frame stands near the file's start.
int eac3_file(FileRecord* file, const Output& out);

} // namespace zat
