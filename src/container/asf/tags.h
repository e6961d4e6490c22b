// The objects of ASF files that hold texts and attributes (ASF, 3.10, 3.11, 4.7 and
// 4.8).
#pragma once

#include "container/asf/header.h"

namespace zat::asf {

void read_content_description(Reader* reader, Span data, Header* header);
void read_extended_content(Reader* reader, Span data, Header* header);

// The metadata object and the metadata library object.
void read_metadata(Reader* reader, Span data, Header* header);

} // namespace zat::asf
