#include "container/mp4/video_line.h"

#include "common/bytes/start_code.h"
#include "common/text/text.h"
#include "container/mp4/codec_text.h"
#include "container/mp4/sample_entry.h"
#include "container/mp4/sample_tables.h"
#include "video/avc_config.h"
#include "video/avc_names.h"
#include "video/mpeg4_visual.h"

#include <algorithm>

namespace zat::mp4 {

namespace {

constexpr size_t profile_level_size = 64;

// ISO/IEC 14496-12, 12.1.4; false unless both spacings are set.
bool read_pixel_aspect(Reader* reader, Span payload, uint32_t* h, uint32_t* v) {
    *h = read_be32(reader, payload, 0);
    *v = read_be32(reader, payload, 4);
    return *h != 0 && *v != 0;
}

bool read_avc(Reader* reader, const SampleEntry& entry, VideoLine* line) {
    uint8_t record[avc_config_head_size];
    AvcConfig config;
    if (!read_avc_config(read_box(reader, entry.avc_configuration, record), &config)) {
        return false;
    }
    char profile_level[profile_level_size];
    FormatAvcProfileLevel(
        profile_level, sizeof profile_level, config.profile, config.level, AvcRules::legacy);
    AvcSequenceInfo info{};
    ParseAvcSequenceParameterSet(config.first_sps.data(),
        static_cast<uint32_t>(config.first_sps.size()), &info, &line->avc_state, AvcRules::legacy);
    line->progressive = info.frame_mbs_only == 1;
    uint32_t h = 0;
    uint32_t v = 0;
    if (read_pixel_aspect(reader, entry.pixel_aspect, &h, &v)) {
        format_text(line->codec, codec_text_size, "AVC/H264 %s %d:%d", profile_level,
            static_cast<int32_t>(h), static_cast<int32_t>(v));
    } else {
        format_text(line->codec, codec_text_size, "AVC/H264 %s %s", profile_level, info.aspect);
    }
    return true;
}

// The profile_and_level_indication behind a visual object sequence's start code (ISO/IEC 14496-2,
// 6.2.2); 0 without one.
uint32_t visual_profile_level(Bytes headers) {
    constexpr uint8_t visual_object_sequence = 0xB0;
    const int64_t at = find_start_code_of(headers, 0, visual_object_sequence);
    return at < 0 ? 0 : byte_at(headers, static_cast<size_t>(at) + start_code_size);
}

// Without a configuration the profile and the aspect are unknown.
void read_mpeg4_visual(Bytes headers, VideoLine* line) {
    char profile_level[profile_level_size];
    Mpeg4ProfileLevelName(profile_level, sizeof profile_level, visual_profile_level(headers));
    VolAspect aspect;
    find_vol_aspect(headers, &aspect);
    char aspect_text[vol_aspect_size] = "";
    vol_aspect_name(aspect, aspect_text);
    format_text(line->codec, codec_text_size, "MPEG4 %s %s", profile_level, aspect_text);
}

} // namespace

void read_video_line(Reader* reader, Track* track, VideoLine* line) {
    SampleEntry entry;
    read_sample_entry(reader, *track, 0, &entry);
    const SampleTotals& totals = sample_totals(reader, track);
    line->frames = totals.samples;
    line->bytes = totals.bytes;
    line->width = entry.width;
    line->height = entry.height;
    line->depth = entry.depth;
    if (!entry.found || read_avc(reader, entry, line)) {
        return;
    }
    EsBox box;
    read_es_box(reader, entry, &box);
    if (box.descriptor.object_type == object_mpeg4_visual) {
        read_mpeg4_visual(box.descriptor.specific_info, line);
    } else {
        catalogue_text("[QT-VIDEO]", entry.format, box.descriptor.object_type, line->codec);
    }
}

} // namespace zat::mp4
