// RealMedia files: chunks that begin with ".RMF".
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes the video and audio streams of the file, one line for each, and writes the encoder
// text, the play time in seconds and the label. Looks at the chunks of the file's first mebibyte up
// to the data. Returns 0, or 1 when nothing could be read; the record then stays as it was.
int AnalyzeRealMediaFile(FileRecord* file, const Output& out);

} // namespace zat
