// Files of boxes: QuickTime and the ISO base media family.
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

// The type by the first box's type and major brand (ISO/IEC 14496-12, 4.3; QuickTime File Format),
// FILETYPE_UNKNOWN when the file does not begin with one of eight known boxes. `bytes` are the
// file's first; 12 of them are looked at.
uint32_t QuickTimeBrandCheck(Bytes bytes);

} // namespace zat
