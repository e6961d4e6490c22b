// The analyser of MPEG program streams and of bare MPEG elementary streams.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Fills record and details. Returns the number of damaged packets in the bytes that were walked; of
// a file in which nothing is understood nothing is written.
int AnalyzeProgramStreamFile(FileRecord* file, const Output& out);

} // namespace zat
