// True Audio files, versions 1 and 2 (the TTA1 format description; TTA2 as its drafts and its
// encoder have it).
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes an open file. Returns 0.
int AnalyzeTtaFile(FileRecord* file, const Output& out);

} // namespace zat
