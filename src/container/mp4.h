// MP4, 3GPP and the rest of the ISO base media file format (ISO/IEC 14496-12), and QuickTime
// movies.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes the file: label, play time, a line per video and audio track (the first ten of each),
// and extra lines for the brand, chapters, fragments and the movie atom's position. Returns 0.
int AnalyzeMp4File(FileRecord* file, const Output& out);

} // namespace zat
