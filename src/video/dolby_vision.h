// The Dolby Vision configuration record of MP4, Matroska and transport streams (Dolby Vision
// Streams Within the ISO Base Media File Format, 3.2).
#pragma once

#include "common/bytes/bytes.h"
#include "zat/details.h"

namespace zat {

// Marks the stream when the bytes hold a record.
void set_dolby_vision(ZatStream* stream, Bytes record);

} // namespace zat
