// One logical bitstream, described.
#pragma once

#include "common/record/extra_lines.h"
#include "container/ogg/comments.h"
#include "container/ogg/walk.h"

namespace zat::ogg {

// Adds the line and the facts of a stream of the first link.
void describe_stream(Walk* walk, const LogicalStream& stream, const StreamComments& comments,
    const Output& out, ExtraLines* extra);

} // namespace zat::ogg
