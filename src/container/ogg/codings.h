// The codings of Ogg's logical bitstreams, by their first packets.
#pragma once

#include "container/ogg/logical_stream.h"

namespace zat::ogg {

// Which ZatStreamKind a coding has.
ZatStreamKind kind_of(Coding coding);

// Sets the coding that the stream's first packet shows, and what the packet tells of it: the rate
// of granule positions, the number of headers and the length of packets.
void read_coding(LogicalStream* stream);

// Takes the stream information of FLAC. False, and nothing is set, when it is cut off.
bool take_streaminfo(Bytes block, LogicalStream* stream);

} // namespace zat::ogg
