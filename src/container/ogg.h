// Ogg (RFC 3533) with the codings that are found in it, OGM's among them.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes every logical bitstream of the first link. Reads all page headers of files up to a
// mebibyte, or with option bit 0, else the first and the last pages. Sets the data size to the file
// size less the first page's position. Returns 0, or 1 when there is no page.
int AnalyzeOggFile(FileRecord* file, const Output& out);

} // namespace zat
