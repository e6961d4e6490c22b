#include "video/stream_facts.h"

#include "common/record/details.h"
#include "common/text/text.h"
#include "video/avc_names.h"
#include "video/colour_names.h"
#include "video/mpeg4_visual.h"

#include <iterator>

namespace zat {

namespace {

// By chroma_format of MPEG-2, and by that of MPEG-4 and VC-1, which know 4:2:0 only.
const char* mpeg_chroma_name(uint32_t chroma_format) {
    static constexpr const char* names[] = {"", "4:2:0", "4:2:2", "4:4:4"};
    return chroma_format < std::size(names) ? names[chroma_format] : "";
}

void set_scan(bool progressive, ZatStream* stream) {
    stream->scan = progressive ? ZAT_SCAN_PROGRESSIVE : ZAT_SCAN_INTERLACED;
}

struct Named {
    uint32_t code;
    const char* name;
};

template <size_t N>
const char* name_of(const Named (&table)[N], uint32_t code) {
    for (const Named& row : table) {
        if (row.code == code) {
            return row.name;
        }
    }
    return "";
}

// ISO/IEC 13818-2, tables 8-2 to 8-4.
void set_mpeg2_profile(const SequenceExtension& extension, ZatStream* stream) {
    static constexpr Named profiles[] = {
        {1, "High"}, {2, "Spatial"}, {3, "SNR"}, {4, "Main"}, {5, "Simple"}};
    static constexpr Named levels[] = {{4, "High"}, {6, "High 1440"}, {8, "Main"}, {10, "Low"}};
    static constexpr Named escaped_levels[] = {{2, "High"}, {5, "Main"}}; // of 4:2:2
    constexpr uint8_t escape = 8;
    if (extension.profile == escape) {
        const char* level = name_of(escaped_levels, extension.level);
        copy_utf8(stream->profile, level[0] != '\0' ? "4:2:2" : "");
        copy_utf8(stream->level, level);
    } else {
        copy_utf8(stream->profile, name_of(profiles, extension.profile));
        copy_utf8(stream->level, name_of(levels, extension.level));
    }
}

// The ratio of a pixel's height to its width in ten thousandths (ISO/IEC 11172-2, 2.4.3.2).
void set_mpeg1_aspect(uint32_t code, ZatStream* stream) {
    static constexpr uint16_t ratios[] = {0, 10000, 6735, 7031, 7615, 8055, 8437, 8935, 9157, 9815,
        10255, 10695, 10950, 11575, 12015};
    if (code < std::size(ratios)) {
        set_pixel_aspect(stream, 10000, ratios[code]);
    }
}

// ISO/IEC 13818-2, table 6-3.
void set_mpeg2_aspect(uint32_t code, ZatStream* stream) {
    switch (code) {
    case 1:
        set_pixel_aspect(stream, 1, 1);
        break;
    case 2:
        set_display_aspect(stream, 4, 3);
        break;
    case 3:
        set_display_aspect(stream, 16, 9);
        break;
    case 4:
        set_display_aspect(stream, 221, 100);
        break;
    default:
        break;
    }
}

void set_field_order(const PictureCoding& picture, ZatStream* stream) {
    if (!picture.found || stream->scan != ZAT_SCAN_INTERLACED) {
        return;
    }
    const bool top = picture.structure == structure_frame ? picture.top_field_first != 0
                                                          : picture.structure == structure_top;
    stream->field_order = top ? ZAT_FIELD_TOP : ZAT_FIELD_BOTTOM;
}

void mpeg2_facts(const MpegVideoHeaders& headers, ZatStream* stream) {
    const SequenceExtension& extension = headers.extension;
    copy_utf8(stream->codec, "MPEG-2 Video");
    set_mpeg2_profile(extension, stream);
    stream->width |= uint32_t{extension.horizontal_size_extension} << 12;
    stream->height |= uint32_t{extension.vertical_size_extension} << 12;
    set_mpeg2_aspect(headers.header.aspect_code, stream);
    set_scan(extension.progressive != 0, stream);
    set_field_order(headers.picture, stream);
    copy_utf8(stream->chroma, mpeg_chroma_name(extension.chroma_format));
    set_colour(stream, {.primaries = headers.display.colour_primaries,
                           .transfer = headers.display.transfer_characteristics,
                           .matrix = headers.display.matrix_coefficients});
}

} // namespace

void avc_facts(const AvcSequenceInfo& info, ZatStream* stream) {
    copy_utf8(stream->codec, "H.264");
    const char* profile = avc_profile_name(info.profile_idc, AvcRules::standard);
    const char* level =
        avc_level_name(info.profile_idc, info.constraint_flags, info.level_idc, AvcRules::standard);
    copy_utf8(stream->profile, profile != nullptr ? profile : "");
    copy_utf8(stream->level, level != nullptr ? level : "");
    stream->width = info.width;
    stream->height = info.height;
    set_pixel_aspect(stream, info.sar_width, info.sar_height);
    set_frame_rate(stream, info.time_scale, uint64_t{info.num_units_in_tick} * 2);
    set_scan(info.frame_mbs_only != 0, stream);
    stream->bit_depth = info.bit_depth;
    copy_utf8(stream->chroma, chroma_format_name(info.chroma_format_idc));
    set_colour(stream, {.primaries = info.colour_primaries,
                           .transfer = info.transfer_characteristics,
                           .matrix = info.matrix_coefficients,
                           .range_known = info.range_told,
                           .full_range = info.full_range != 0});
}

void mpeg_video_facts(const MpegVideoHeaders& headers, ZatStream* stream) {
    const SequenceHeader& header = headers.header;
    const SequenceExtension& extension = headers.extension;
    stream->width = header.width;
    stream->height = header.height;
    stream->bit_depth = 8;
    if (headers.extension_found) {
        mpeg2_facts(headers, stream);
    } else {
        copy_utf8(stream->codec, "MPEG-1 Video");
        set_mpeg1_aspect(header.aspect_code, stream);
        set_scan(true, stream);
        copy_utf8(stream->chroma, "4:2:0");
    }
    const FrameRate rate = frame_rate_of(header.frame_rate_code);
    set_frame_rate(stream, uint64_t{rate.numerator} * (extension.frame_rate_extension_n + 1U),
        uint64_t{rate.denominator} * (extension.frame_rate_extension_d + 1U));
    if (header.bit_rate_value == variable_bit_rate && extension.bit_rate_extension == 0) {
        stream->bit_rate_mode = ZAT_BIT_RATE_VARIABLE;
    } else {
        stream->bit_rate =
            (header.bit_rate_value | uint64_t{extension.bit_rate_extension} << 18) * 400;
    }
}

void mpeg4_facts(const Mpeg4Headers& headers, ZatStream* stream) {
    copy_utf8(stream->codec, "MPEG-4 Visual");
    const Mpeg4Profile profile = mpeg4_profile(headers.profile_level);
    if (profile.profile != nullptr) {
        copy_utf8(stream->profile, profile.profile);
        copy_utf8(stream->level, profile.level);
    }
    if (!headers.vol_found) {
        return;
    }
    const Mpeg4Vol& vol = headers.vol;
    stream->width = vol.width;
    stream->height = vol.height;
    // ISO/IEC 14496-2, table 6-12: the sample aspects of ITU-T H.264, but 15 is one of its own.
    const SampleAspect aspect =
        vol.aspect_ratio_info == 15  ? SampleAspect{vol.par_width, vol.par_height}
        : vol.aspect_ratio_info <= 5 ? avc_sample_aspect(vol.aspect_ratio_info)
                                     : SampleAspect{};
    set_pixel_aspect(stream, aspect.width, aspect.height);
    set_frame_rate(stream, vol.time_increment_resolution, vol.fixed_time_increment);
    set_scan(vol.interlaced == 0, stream);
    stream->bit_depth = vol.bit_depth;
    copy_utf8(stream->chroma, mpeg_chroma_name(vol.chroma_format));
}

void vc1_facts(const Vc1Sequence& sequence, ZatStream* stream) {
    copy_utf8(stream->codec, "VC-1");
    copy_utf8(stream->profile, vc1_profile_name(sequence.profile));
    stream->bit_depth = 8;
    copy_utf8(stream->chroma, "4:2:0");
    if (sequence.profile != vc1_advanced) {
        return;
    }
    format_text(stream->level, sizeof stream->level, "%d", sequence.level);
    stream->width = sequence.width;
    stream->height = sequence.height;
    set_pixel_aspect(stream, sequence.aspect_width, sequence.aspect_height);
    set_frame_rate(stream, sequence.frame_rate_numerator, sequence.frame_rate_denominator);
    set_scan(sequence.interlaced == 0, stream);
    set_colour(stream, {.primaries = sequence.colour_primaries,
                           .transfer = sequence.transfer_characteristics,
                           .matrix = sequence.matrix_coefficients});
}

void avc_codec_text(const AvcSequenceInfo& info, char (&text)[video_codec_size]) {
    format_text(text, sizeof text, "AVC/H264 %s%s%s", info.profile_level,
        info.aspect[0] != '\0' ? " " : "", info.aspect);
}

void mpeg4_codec_text(const Mpeg4Headers& headers, char (&text)[video_codec_size]) {
    copy_text(text, "MPEG4");
    if (headers.profile_level != 0) {
        char profile[64];
        Mpeg4ProfileLevelName(profile, sizeof profile, headers.profile_level);
        AppendWithSeparator(text, profile, separator_space);
    }
    if (headers.vol_found) {
        char aspect[vol_aspect_size] = "";
        vol_aspect_name({.aspect_ratio_info = headers.vol.aspect_ratio_info,
                            .par_width = headers.vol.par_width,
                            .par_height = headers.vol.par_height},
            aspect);
        AppendWithSeparator(text, bounded_text(aspect), separator_space);
    }
}

void vc1_codec_text(const Vc1Sequence& sequence, char (&text)[video_codec_size]) {
    copy_text(text, "VC-1 ");
    append_text(text, vc1_profile_name(sequence.profile));
    if (sequence.profile == vc1_advanced) {
        char level[8];
        format_text(level, sizeof level, "@%d", sequence.level);
        append_text(text, level);
    }
}

} // namespace zat
