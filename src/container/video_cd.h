// The analyser of VideoCD tracks: raw sectors in a RIFF file of the form CDXA.
#pragma once

#include "common/file_access.h"
#include "common/output.h"

namespace zat {

// Fills record and details. Returns the number of damaged packets in the bytes that were walked.
int AnalyzeVideoCdFile(FileRecord* file, const Output& out);

} // namespace zat
