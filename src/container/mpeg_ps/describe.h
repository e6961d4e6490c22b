// What the collected start of an elementary stream says about it.
#pragma once

#include "container/mpeg_ps/stream_table.h"

namespace zat::ps {

// Tries to describe the stream by what was collected of it, and sets form, facts and texts. Where
// nothing follows, incomplete headers have to do. Returns whether the stream is described and needs
// no more bytes.
bool describe_stream(Stream* stream, Follows follows);

// The brackets of a stream that was declared or seen but of which no header was found. `mpeg2`: the
// packs are those of MPEG-2.
void name_stream(Stream* stream, bool mpeg2);

} // namespace zat::ps
