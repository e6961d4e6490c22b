// Monkey's Audio files (the format's SDK: APEInfo, APEHeader).
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes an open file. Returns 0.
int AnalyzeMonkeyFile(FileRecord* file, const Output& out);

} // namespace zat
