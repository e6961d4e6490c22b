// JPEG pictures (ITU-T T.81 | ISO/IEC 10918-1), in JFIF and Exif files among others.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Steps over the segments up to the frame header: video line 0 and the label "[JPEG]". Returns 0.
int AnalyzeJpegFile(FileRecord* file, const Output& out);

} // namespace zat
