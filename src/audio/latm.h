// AAC in LOAS frames (ISO/IEC 14496-3, 1.7): AudioSyncStream around AudioMuxElement, of which some
// carry the configuration.
#pragma once

#include "audio/audio_specific_config.h"
#include "common/bytes/bytes.h"
#include "common/record/details.h"
#include "common/text/text.h"

#include <cstdint>

namespace zat {

constexpr uint32_t loas_header_size = 3; // bytes

struct LatmInfo {
    AudioSpecificConfig config; // of the first layer of the first programme
    uint32_t sub_frames = 1;    // frames of 1024 samples in an AudioMuxElement
    uint32_t bitrate = 0;       // bit/s, the mean of the frames at hand
};

// Bytes of the LOAS frame at the start, header included; 0 when none stands there.
uint32_t loas_frame_size(Bytes bytes);

// Offset of the first LOAS frame that is followed by another one or by the end of the bytes; -1
// when there is none.
int64_t find_loas_sync(Bytes bytes);

// Decodes the frames that follow each other from the first one on. False without a configuration.
bool latm_info(Bytes bytes, LatmInfo* info);

// "[AAC LC] 24000Hz stereo(L,R)", what a line begins with.
void aac_stream_name(const AudioSpecificConfig& config, char (&out)[line_size]);

// "[AAC LC] 24000Hz stereo(L,R) 97.324kbps".
void latm_line(const LatmInfo* info, char (&out)[line_size]);

void latm_facts(const LatmInfo& info, ZatStream* stream);

} // namespace zat
