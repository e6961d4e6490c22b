// Files that begin with a magic number.
#pragma once

#include "common/bytes/bytes.h"
#include "common/file/file_window.h"

#include <cstddef>
#include <cstdint>

namespace zat {

// More zeros than this before a stream are no padding any more.
constexpr size_t padding_limit = 2048;

// The type of the first signature in the table's order that a file beginning with `bytes` has;
// FILETYPE_UNKNOWN without one. Looks at no more than 197 bytes.
uint32_t CheckHeaderSignature(Bytes bytes);

struct LateSignature {
    uint32_t type_code;
    uint32_t start; // bytes of padding before the stream
};

// The same for the signatures that count only when no probe of the file's start knew it, and for
// both tables behind padding. May load more of the view, up to three audio frames.
LateSignature check_late_signature(FileWindow* window);

} // namespace zat
