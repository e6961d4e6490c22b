// What a stream is, by the part of its payload that was captured.
#pragma once

#include "common/text/text.h"
#include "container/mpeg_ts/stream_types.h"
#include "video/stream_facts.h"
#include "zat/details.h"

namespace zat::ts {

// What the line of a stream shows besides its facts.
struct StreamText {
    bool has_line = false;      // `line` is all of it; else it is a generic one
    bool measures_rate = false; // a generic line that wants the measured rate
    char line[line_size] = "";
    char codec[video_codec_size] = "";
    uint32_t bits = 0;
    uint32_t channel_mask = 0;
    double frame_seconds = 0; // of one frame; 0 when not known
};

// Whether a start code of this value begins the header that the codec's decoders start from.
bool begins_header(Codec codec, uint8_t code);

// Whether streams of the codec are looked into.
bool has_video_describer(Codec codec);
bool has_audio_describer(Codec codec);

// Whether the captured bytes show what the stream is; true for those that are not looked into.
// `wants_stamps` tells that the frame rate has to come from the time stamps.
bool is_described(const Stream& stream, Bytes captured, bool* wants_stamps);

// Set the facts and the texts by the captured bytes, which begin with a header (video) or a PES
// payload (audio). False, with nothing set, when they do not show what the stream is.
bool describe_video(const Stream& stream, Bytes captured, ZatStream* facts, StreamText* text);
bool describe_audio(const Stream& stream, Bytes captured, ZatStream* facts, StreamText* text);

// Sets the encoder by what it wrote of itself into the captured bytes of a video.
void find_video_encoder(Codec codec, Bytes captured, ZatStream* facts);

} // namespace zat::ts
