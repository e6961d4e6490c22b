// GIF pictures, moving ones among them (CompuServe Graphics Interchange Format 87a and 89a).
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Counts the frames and their time: video line 0, the play time in seconds and the label "[GIF]".
// Of a file of more than 4 MiB only that is read and the rest follows from it, unless the record's
// options ask for all. Returns 0.
int AnalyzeGifFile(FileRecord* file, const Output& out);

} // namespace zat
