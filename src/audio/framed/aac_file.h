// Files of AAC: ADTS, ADIF and LOAS streams, and those in boxes.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

int AnalyzeAacFile(FileRecord* file, const Output& out);

} // namespace zat
