// WavPack files: the blocks of versions 4 and 5 (WavPack 4 & 5 Binary File / Block Format), and raw
// files of version 3 and before.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes an open file. Returns 0.
int AnalyzeWavPackFile(FileRecord* file, const Output& out);

} // namespace zat
