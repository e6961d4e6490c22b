// The descriptive elements of a Matroska segment: tags, chapters and attachments (RFC 9559, 5.1.6
// to 5.1.8).
#pragma once

#include "container/matroska/segment.h"

namespace zat::matroska {

// Statistics and encoders of tracks, title and artist of the whole. Comes behind the tracks.
void read_tags(Reader* reader, Span data, Segment* segment);

// Counts the chapters of the default edition, which is the first where none is marked.
void read_chapters(Reader* reader, Span data, Segment* segment);

void read_attachments(Reader* reader, Span data, Segment* segment);

} // namespace zat::matroska
