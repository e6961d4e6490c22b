// What the headers of a video stream tell, as facts for its line and its details. Each function
// sets codec, profile, level, size, aspect, frame rate, scan, depth, chroma and colour as far as
// the header has them, and leaves the rest of the stream as it was.
#pragma once

#include "video/avc_sps.h"
#include "video/mpeg4_vol.h"
#include "video/mpeg_video_headers.h"
#include "video/vc1_sequence.h"
#include "zat/details.h"

#include <cstddef>

namespace zat {

// Room for every codec text, terminator included.
constexpr size_t video_codec_size = 96;

// `info` is read by AvcRules::standard.
void avc_facts(const AvcSequenceInfo& info, ZatStream* stream);
void mpeg_video_facts(const MpegVideoHeaders& headers, ZatStream* stream);
void mpeg4_facts(const Mpeg4Headers& headers, ZatStream* stream);
void vc1_facts(const Vc1Sequence& sequence, ZatStream* stream);

// What stands in the brackets of a generic line: "AVC/H264 High@4.1 1:1", "MPEG4 Simple@L1 1:1",
// "VC-1 Advanced@3".
void avc_codec_text(const AvcSequenceInfo& info, char (&text)[video_codec_size]);
void mpeg4_codec_text(const Mpeg4Headers& headers, char (&text)[video_codec_size]);
void vc1_codec_text(const Vc1Sequence& sequence, char (&text)[video_codec_size]);

} // namespace zat
