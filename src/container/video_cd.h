// The analyser of VideoCD tracks: raw sectors in a RIFF file of the form CDXA.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Fills record and details. Returns the number of damaged packets in the bytes that were walked.
int AnalyzeVideoCdFile(FileRecord* file, const Output& out);

} // namespace zat
