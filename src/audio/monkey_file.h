// Monkey's Audio files (the format's SDK: APEInfo, APEHeader).
#pragma once

#include "common/file_access.h"
#include "common/output.h"

namespace zat {

// Describes an open file. Returns 0.
int AnalyzeMonkeyFile(FileRecord* file, const Output& out);

} // namespace zat
