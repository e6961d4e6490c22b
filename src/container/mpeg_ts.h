// MPEG transport streams (ISO/IEC 13818-1, 2.4), with packets of 188, 192 or 204 bytes.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes the streams, the service and its events. Reads the head of the file until all is
// described, at most the scan budget, then its end and a few probes; with option bit 0 all of it.
// Returns 1 when the file holds no packets, else 0.
int AnalyzeMpegTsFile(FileRecord* file, const Output& out);

} // namespace zat
