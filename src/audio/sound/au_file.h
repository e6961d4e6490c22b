// AU files (Sun Microsystems, "audio.h"; the same as NeXT's "SND").
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes the file in one audio line. Returns 0.
int AnalyzeAuFile(FileRecord* file, const Output& out);

} // namespace zat
