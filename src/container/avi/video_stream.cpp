#include "container/avi/video_stream.h"

#include "common/codec_names.h"
#include "common/numbers.h"
#include "common/stream_lines.h"
#include "container/avi/stream_facts.h"
#include "video/avc_config.h"
#include "video/av1_config.h"
#include "video/container_aspect.h"
#include "video/hevc_sps.h"
#include "video/mjpeg.h"
#include "video/stream_facts.h"
#include "video/vp8.h"
#include "video/vp9.h"

#include <algorithm>

namespace zat::avi {

namespace {

constexpr double highest_frame_rate = 1000;

// The formats that a decoder's headers describe better than the container. Each sets the facts and
// the codec text, and leaves both as they were when it finds no header.
using Describer = void (*)(const VideoData& data, ZatStream* facts, VideoText* text);

bool find_avc(const VideoData& data, AvcSequenceInfo* info) {
    AvcConfig config;
    constexpr uint8_t record_version = 1;
    if (byte_at(data.bitmap.codec_data, 0) == record_version &&
        read_avc_config(data.bitmap.codec_data, &config)) {
        AvcParseState state;
        ParseAvcSequenceParameterSet(config.first_sps.data(),
            static_cast<uint32_t>(config.first_sps.size()), info, &state, AvcRules::standard);
    }
    return info->width != 0 || find_avc_sps(data.start, info) == 0 ||
           find_avc_sps(data.bitmap.codec_data, info) == 0;
}

void describe_avc(const VideoData& data, ZatStream* facts, VideoText* text) {
    AvcSequenceInfo info;
    if (!find_avc(data, &info)) {
        return;
    }
    avc_facts(info, facts);
    set_container_facts(data, facts);
    if (data.has_aspect) {
        set_aspect_text(*facts, &info);
    }
    avc_codec_text(info, text->codec);
    text->bits = info.bit_depth;
    text->has_aspect = info.aspect[0] != '\0';
}
