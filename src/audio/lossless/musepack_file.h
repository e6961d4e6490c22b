// MusePack files: stream versions 7 and 8. Those before have no signature of their own.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes an open file. Returns 0.
int AnalyzeMusePackFile(FileRecord* file, const Output& out);

} // namespace zat
