// The length of a segment that does not tell its own: recordings whose writer could not go back.
#pragma once

#include "container/matroska/segment.h"

namespace zat::matroska {

// Seconds from the first block to the end of the last one; 0 when there are none to be found.
double measured_duration(Reader* reader, const Segment& segment);

} // namespace zat::matroska
