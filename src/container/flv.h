// Flash Video files (Adobe Flash Video File Format 10.1, annex E).
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes the first video and the first audio tag of the file with what the metadata objects
// say: video line 0, audio line 0 when there is audio, the play time in seconds and the label.
// Looks at the file's first mebibyte. Returns 0, or 1 when nothing could be read; the record then
// stays as it was.
int AnalyzeFlvFile(FileRecord* file, const Output& out);

} // namespace zat
