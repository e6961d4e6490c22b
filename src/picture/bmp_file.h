// Windows and OS/2 bitmaps (Microsoft Windows GDI, "Bitmap Storage"; IBM OS/2 Presentation Manager,
// "Bitmap File Format").
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Reads the headers: video line 0 and the label "[BMP]". Returns 0.
int AnalyzeBmpFile(FileRecord* file, const Output& out);

} // namespace zat
