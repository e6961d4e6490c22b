// Lines by the first frame of a stream.
#pragma once

#include "audio/mpeg_audio.h"

#include <cstdint>

namespace zat::mp4 {

// Bytes of a stream's start that the describers look at.
constexpr uint32_t frame_start_size = vbr_header_reach;

// Writes the stream's line (line_size bytes) by `length` bytes, followed by zeros up to
// frame_start_size. False when no frame starts there.
using FrameDescriber = bool (*)(const uint8_t* start, uint32_t length, char* line);

bool describe_ac3_frame(const uint8_t* start, uint32_t length, char* line);
bool describe_dts_frame(const uint8_t* start, uint32_t length, char* line);
bool describe_mpeg_audio_frame(const uint8_t* start, uint32_t length, char* line);

} // namespace zat::mp4
