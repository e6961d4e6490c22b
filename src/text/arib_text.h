// The 8-bit character code of Japanese broadcasting (ARIB STD-B24, volume 1, part 2, 7.1 and 7.2),
// as service information uses it.
#pragma once

#include "common/bytes/bytes.h"

#include <cstddef>

namespace zat {

// Both decode one field, which begins in the code's initial state, and write a terminated text of
// at most `size` bytes, cut at a whole character, new lines and runs of blanks as one blank. They
// return its length. Controls of size, colour and position are passed over; characters that code
// page 932 lacks, mosaics and downloaded ones (DRCS) become the geta mark.
size_t arib_to_utf8(Bytes text, char* out, size_t size);
size_t arib_to_cp932(Bytes text, char* out, size_t size);

} // namespace zat
