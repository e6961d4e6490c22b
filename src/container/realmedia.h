// RealMedia files: chunks that begin with ".RMF".
#pragma once

#include "zat/zat.h"

namespace zat {

// Describes the video and audio streams of record->path, one line for each, and writes the encoder
// text, the play time in seconds, the file size and the label. Looks at the chunks of the file's
// first mebibyte up to the data. Returns 0, or 1 when nothing could be read; the record then stays
// as it was.
int AnalyzeRealMediaFile(InfoRecord* record);

} // namespace zat
