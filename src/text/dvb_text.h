// Text of DVB service information (ETSI EN 300 468, annex A).
#pragma once

#include "common/bytes/bytes.h"

#include <cstddef>

namespace zat {

// The table of texts that select none.
enum class DvbDefault { iso6937, iso8859_15 };

// Decodes one field to a terminated text of at most `size` bytes, cut at a whole character, new
// lines and runs of blanks as one blank; a text in a table that is not known is empty. Returns the
// length.
size_t dvb_to_utf8(Bytes text, DvbDefault default_table, char* out, size_t size);

// Some broadcasters write ISO/IEC 8859-15 where ISO/IEC 6937 is due: small accented letters, which
// the other has as signs and capitals, then stand inside words.
bool looks_like_iso8859_15(Bytes text);

} // namespace zat
