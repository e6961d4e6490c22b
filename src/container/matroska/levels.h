// Steps from one top-level element of a Matroska segment to the next (RFC 9559, 5.1), past junk
// between them.
#pragma once

#include "container/matroska/ebml.h"

namespace zat::matroska {

bool is_level1(uint32_t id);

// The next element of the segment's level. Bytes that are none are searched for one, a mebibyte at
// the most. False at the segment's end.
bool next_level1(Reader* reader, ElementCursor* cursor, Element* element);

} // namespace zat::matroska
