// What a stream is, by its first frame: the one way in which files and containers describe streams
// whose frames carry their own headers.
#pragma once

#include "audio/mpeg_audio.h"
#include "common/bytes/bytes.h"
#include "common/text/text.h"
#include "zat/details.h"

#include <cstdint>

namespace zat {

// Bytes of a stream's start that the describers look at; of E-AC-3, ADTS and LOAS all frames that
// follow one another count for channels, mean length and mean bit rate.
constexpr uint32_t frame_start_size = vbr_header_reach;

// Writes the stream's line and sets its facts by the frame at its start; what is missing of the
// frame reads as zero. False, with nothing written, when no frame starts there.
using FrameDescriber = bool (*)(Bytes start, ZatStream* stream, char (&line)[line_size]);

bool describe_mpeg_audio_frame(Bytes start, ZatStream* stream, char (&line)[line_size]);
bool describe_ac3_frame(Bytes start, ZatStream* stream, char (&line)[line_size]);
bool describe_eac3_frame(Bytes start, ZatStream* stream, char (&line)[line_size]);
// Either of the two: what goes by the name of AC-3 may be E-AC-3, which has no format tag of its
// own.
bool describe_dolby_frame(Bytes start, ZatStream* stream, char (&line)[line_size]);
bool describe_dts_frame(Bytes start, ZatStream* stream, char (&line)[line_size]);
bool describe_adts_frame(Bytes start, ZatStream* stream, char (&line)[line_size]);
bool describe_loas_frame(Bytes start, ZatStream* stream, char (&line)[line_size]);

// MPEG audio whose container counted another bit rate, in bit/s, than its first frame tells: a line
// of variable rate.
void describe_mpeg_audio_at_rate(
    Bytes start, uint64_t bit_rate, ZatStream* stream, char (&line)[line_size]);

// The describer of a WAVE format tag; null for the others.
FrameDescriber frame_describer(uint16_t format_tag);

} // namespace zat
