// The message that an encoder of H.264 or HEVC leaves in its stream.
#pragma once

#include "common/bytes/bytes.h"
#include "zat/details.h"

namespace zat {

// Sets the stream's encoder, "x264 core 164" or "x265 3.5+1-f0c1022b6", by the supplemental
// enhancement information with which theirs begin (user_data_unregistered, ITU-T H.264, D.1.7).
void set_message_encoder(Bytes stream_start, ZatStream* stream);

} // namespace zat
