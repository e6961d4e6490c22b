// The track entries of a Matroska segment (RFC 9559, 5.1.4).
#pragma once

#include "container/matroska/ebml.h"
#include "container/matroska/segment.h"

namespace zat::matroska {

// Appends the entries; one whose number and identifier stand there already is passed over.
void read_tracks(Reader* reader, Span data, Segment* segment);

} // namespace zat::matroska
