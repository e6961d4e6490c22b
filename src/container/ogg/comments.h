// The comment packet of a logical bitstream.
#pragma once

#include "common/tags/tag_texts.h"
#include "container/ogg/logical_stream.h"

#include <cstdint>

namespace zat::ogg {

struct StreamComments {
    TagTexts texts;
    char writer[256] = {};  // UTF-8: the item ENCODER, else the vendor
    char language[32] = {}; // as the item LANGUAGE has it
    uint32_t chapters = 0;
};

// Reads the stream's second packet, where its coding has comments there.
void read_comments(Reader* reader, const LogicalStream& stream, StreamComments* comments);

} // namespace zat::ogg
