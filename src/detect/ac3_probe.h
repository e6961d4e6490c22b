// Raw AC-3 streams behind something else.
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

// Position of the first sync word that a second one follows at exactly the distance of the frame
// length in its header (ATSC A/52, 5.4.1), or -1. A position with reserved codes is passed over; a
// frame longer than all of `bytes` ends the search.
int64_t Ac3SyncCheck(Bytes bytes);

} // namespace zat
