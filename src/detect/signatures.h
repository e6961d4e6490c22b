// Files that begin with a magic number.
#pragma once

#include "common/bytes.h"

#include <cstdint>

namespace zat {

// The type of the first signature in the table's order that a file beginning with `bytes` has;
// FILETYPE_UNKNOWN without one. Looks at no more than 197 bytes.
uint32_t CheckHeaderSignature(Bytes bytes);

// The same for the signatures that count only when no probe of the file's start knew it.
uint32_t check_late_signature(Bytes bytes);

} // namespace zat
