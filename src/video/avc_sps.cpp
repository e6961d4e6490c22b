#include "video/avc_sps.h"

#include "common/bytes/numbers.h"
#include "common/bytes/start_code.h"
#include "common/text/text.h"
#include "video/avc_names.h"
#include "video/avc_vui.h"
#include "video/rbsp_reader.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace zat {

namespace {

// Profiles whose parameter sets carry the chroma format, the bit depths and the scaling lists.
constexpr uint8_t high_profiles[] = {100, 110, 122, 244, 44, 83, 86, 118, 128, 144};

constexpr uint32_t chroma_format_444 = 3;

// The fields kept, in bitstream order.
struct Sps {
    uint8_t profile_idc = 0;
    uint8_t constraint_flags = 0;
    uint8_t level_idc = 0;
    uint32_t chroma_format_idc = 1; // inferred where it is absent
    bool separate_colour_planes = false;
    uint32_t log2_max_frame_num_minus4 = 0;
    uint8_t bit_depth_luma_minus8 = 0;
    uint16_t pic_width_in_mbs_minus1 = 0;
    uint16_t pic_height_in_map_units_minus1 = 0;
    uint8_t frame_mbs_only_flag = 0;
    uint32_t crop_left = 0;
    uint32_t crop_right = 0;
    uint32_t crop_top = 0;
    uint32_t crop_bottom = 0;
    uint8_t vui_parameters_present_flag = 0;
};

// scaling_list(). By the legacy rules every scale counts from 8, not from the entry before it, so
// that a list ends early exactly at a delta of -8 modulo 256.
void pass_scaling_list(RbspReader* reader, int entries, AvcRules rules) {
    constexpr uint32_t base_scale = 8;
    uint32_t last_scale = base_scale;
    for (int i = 0; i < entries; ++i) {
        const uint32_t next_scale = (last_scale + read_se(reader)) % 256; // delta_scale
        if (next_scale == 0) {
            return;
        }
        last_scale = rules == AvcRules::standard ? next_scale : base_scale;
    }
}

void pass_scaling_matrix(RbspReader* reader, uint32_t chroma_format_idc, AvcRules rules) {
    constexpr int lists_4x4 = 6;
    const int lists = chroma_format_idc == chroma_format_444 ? 12 : 8;
    for (int i = 0; i < lists; ++i) {
        if (read_u(reader, 1) != 0) { // seq_scaling_list_present_flag
            pass_scaling_list(reader, i < lists_4x4 ? 16 : 64, rules);
        }
    }
}

bool parse_high_profile_fields(RbspReader* reader, Sps* sps, AvcParseState* state, AvcRules rules) {
    if (!take_ue(reader, state, &sps->chroma_format_idc)) {
        return false;
    }
    if (sps->chroma_format_idc == chroma_format_444) {
        sps->separate_colour_planes = read_u(reader, 1) != 0; // separate_colour_plane_flag
    }
    if (!take_ue(reader, state, &sps->bit_depth_luma_minus8) ||
        !pass_ue(reader, state)) { // bit_depth_chroma_minus8
        return false;
    }
    read_u(reader, 1);            // qpprime_y_zero_transform_bypass_flag
    if (read_u(reader, 1) != 0) { // seq_scaling_matrix_present_flag
        pass_scaling_matrix(reader, sps->chroma_format_idc, rules);
    }
    return true;
}

bool pass_picture_order_count(RbspReader* reader, AvcParseState* state) {
    uint32_t pic_order_cnt_type = 0;
    if (!take_ue(reader, state, &pic_order_cnt_type)) {
        return false;
    }
    if (pic_order_cnt_type == 0) {
        return pass_ue(reader, state); // log2_max_pic_order_cnt_lsb_minus4
    }
    if (pic_order_cnt_type == 1) {
        read_u(reader, 1); // delta_pic_order_always_zero_flag
        read_se(reader);   // offset_for_non_ref_pic
        read_se(reader);   // offset_for_top_to_bottom_field
        uint32_t count = 0;
        if (!take_ue(reader, state, &count)) { // num_ref_frames_in_pic_order_cnt_cycle
            return false;
        }
        for (uint32_t i = 0; i < count && !rbsp_overrun(reader); ++i) {
            read_se(reader); // offset_for_ref_frame
        }
    }
    return true;
}

bool parse_cropping(RbspReader* reader, Sps* sps, AvcParseState* state) {
    if (read_u(reader, 1) == 0) { // frame_cropping_flag
        return true;
    }
    return take_ue(reader, state, &sps->crop_left) && take_ue(reader, state, &sps->crop_right) &&
           take_ue(reader, state, &sps->crop_top) && take_ue(reader, state, &sps->crop_bottom);
}

// seq_parameter_set_data() up to the VUI. False when it overran.
bool parse_sps(
    RbspReader* reader, Sps* sps, AvcSequenceInfo* info, AvcParseState* state, AvcRules rules) {
    read_u(reader, 8); // the NAL unit's header
    sps->profile_idc = static_cast<uint8_t>(read_u(reader, 8));
    sps->constraint_flags = static_cast<uint8_t>(read_u(reader, 8)); // and reserved_zero_2bits
    sps->level_idc = static_cast<uint8_t>(read_u(reader, 8));
    if (!pass_ue(reader, state)) { // seq_parameter_set_id
        return false;
    }
    const bool high = std::ranges::find(high_profiles, sps->profile_idc) != std::end(high_profiles);
    if (high && !parse_high_profile_fields(reader, sps, state, rules)) {
        return false;
    }
    if (!take_ue(reader, state, &sps->log2_max_frame_num_minus4) ||
        !pass_picture_order_count(reader, state) || !pass_ue(reader, state)) { // max_num_ref_frames
        return false;
    }
    read_u(reader, 1); // gaps_in_frame_num_value_allowed_flag
    if (!take_ue(reader, state, &sps->pic_width_in_mbs_minus1) ||
        !take_ue(reader, state, &sps->pic_height_in_map_units_minus1)) {
        return false;
    }
    sps->frame_mbs_only_flag = static_cast<uint8_t>(read_u(reader, 1));
    info->frame_mbs_only = sps->frame_mbs_only_flag;
    if (sps->frame_mbs_only_flag == 0) {
        read_u(reader, 1); // mb_adaptive_frame_field_flag
    }
    read_u(reader, 1); // direct_8x8_inference_flag
    if (!parse_cropping(reader, sps, state)) {
        return false;
    }
    sps->vui_parameters_present_flag = static_cast<uint8_t>(read_u(reader, 1));
    return true;
}

// The picture before cropping, in luma samples.
uint32_t coded_width(const Sps* sps) {
    return (sps->pic_width_in_mbs_minus1 + 1U) * 16;
}
uint32_t coded_height(const Sps* sps) {
    return (2U - sps->frame_mbs_only_flag) * ((sps->pic_height_in_map_units_minus1 + 1U) * 16);
}

// One crop unit for both directions, and the offsets cut to 8 bits: 4:2:0 is taken for granted, and
// the fields of an interlaced picture count double across, too.
void crop_by_legacy_rules(const Sps* sps, AvcSequenceInfo* info) {
    const uint32_t crop_unit = sps->frame_mbs_only_flag != 0 ? 2 : 4;
    info->width =
        coded_width(sps) - crop_unit * ((sps->crop_left & 0xFF) + (sps->crop_right & 0xFF));
    info->height =
        coded_height(sps) - crop_unit * ((sps->crop_top & 0xFF) + (sps->crop_bottom & 0xFF));
}

// 7.4.2.1.1, CropUnitX and CropUnitY. False when nothing of the picture is left.
bool crop_by_standard(const Sps* sps, AvcSequenceInfo* info) {
    const bool planes = sps->separate_colour_planes;
    const uint64_t unit_x =
        !planes && sps->chroma_format_idc != 0 && sps->chroma_format_idc < 3 ? 2 : 1;
    const uint64_t unit_y = (!planes && sps->chroma_format_idc == 1 ? uint64_t{2} : 1) *
                            (2U - sps->frame_mbs_only_flag);
    const uint64_t across = unit_x * (uint64_t{sps->crop_left} + sps->crop_right);
    const uint64_t down = unit_y * (uint64_t{sps->crop_top} + sps->crop_bottom);
    if (across >= coded_width(sps) || down >= coded_height(sps)) {
        return false;
    }
    info->width = coded_width(sps) - static_cast<uint32_t>(across);
    info->height = coded_height(sps) - static_cast<uint32_t>(down);
    return true;
}

// Fields out of their range mark something that is no parameter set.
bool is_plausible(const Sps* sps) {
    constexpr uint8_t deepest_minus8 = 6;
    constexpr uint32_t longest_frame_num_minus4 = 12;
    return sps->chroma_format_idc <= chroma_format_444 &&
           sps->bit_depth_luma_minus8 <= deepest_minus8 &&
           sps->log2_max_frame_num_minus4 <= longest_frame_num_minus4;
}

void store_picture(const Sps* sps, AvcSequenceInfo* info, AvcParseState* state, AvcRules rules) {
    if (rules == AvcRules::legacy) {
        crop_by_legacy_rules(sps, info);
    } else if (!is_plausible(sps) || !crop_by_standard(sps, info)) {
        state->error = 1;
    }
    info->bit_depth = static_cast<uint8_t>(sps->bit_depth_luma_minus8 + 8);
    copy_text(info->codec_name, "AVC/H.264");
    info->profile_idc = sps->profile_idc;
    info->constraint_flags = sps->constraint_flags;
    info->level_idc = sps->level_idc;
    info->chroma_format_idc = static_cast<uint8_t>(sps->chroma_format_idc);
    info->separate_colour_planes = sps->separate_colour_planes;
    info->frame_num_bits = static_cast<uint8_t>((sps->log2_max_frame_num_minus4 & 0xF) + 4);
    FormatAvcProfileLevel(info->profile_level, sizeof info->profile_level, sps->profile_idc,
        sps->level_idc, rules, sps->constraint_flags);
}

void store_aspect(const AvcVui* vui, AvcSequenceInfo* info, AvcRules rules) {
    const bool extended = vui->aspect_ratio_idc == extended_sar;
    if (vui->aspect_ratio_info_present_flag != 0) {
        const SampleAspect aspect = extended ? SampleAspect{vui->sar_width, vui->sar_height}
                                             : avc_sample_aspect(vui->aspect_ratio_idc);
        if (aspect.width != 0 && aspect.height != 0) {
            info->sar_width = aspect.width;
            info->sar_height = aspect.height;
        }
    }
    if (rules == AvcRules::standard) {
        info->aspect[0] = '\0';
        if (info->sar_width != 0) {
            format_text(
                info->aspect, sizeof info->aspect, "%d:%d", info->sar_width, info->sar_height);
        }
    } else if (vui->aspect_ratio_info_present_flag == 0) {
        copy_text(info->aspect, "Unspecified");
    } else if (extended) {
        format_text(info->aspect, sizeof info->aspect, "%d:%d", vui->sar_width, vui->sar_height);
    } else {
        AvcAspectRatioName(info->aspect, sizeof info->aspect, vui->aspect_ratio_idc);
    }
}

// `vui` is a cleared record when the stream has none.
void store_vui(const AvcVui* vui, AvcSequenceInfo* info, AvcRules rules) {
    store_aspect(vui, info, rules);
    info->range_told = vui->video_signal_type_complete;
    info->full_range = vui->video_full_range_flag;
    info->colour_primaries = vui->colour_primaries;
    info->transfer_characteristics = vui->transfer_characteristics;
    info->matrix_coefficients = vui->matrix_coefficients;
    if (vui->timing_complete) {
        // Two ticks, one per field, make a frame.
        info->frame_rate = divide(vui->time_scale, vui->num_units_in_tick) * 0.5;
        info->fixed_frame_rate = vui->fixed_frame_rate_flag;
        info->num_units_in_tick = vui->num_units_in_tick;
        info->time_scale = vui->time_scale;
    }
    if (vui->nal_hrd.complete) {
        const uint32_t value = vui->nal_hrd.bit_rate_value_minus1 + 1; // wraps
        info->bit_rate = std::ldexp(value, 6 + vui->nal_hrd.bit_rate_scale);
        info->cbr = vui->nal_hrd.cbr_flag;
    }
}

} // namespace

void ParseAvcSequenceParameterSet(const uint8_t* nal, uint32_t length, AvcSequenceInfo* info,
    AvcParseState* state, AvcRules rules) {
    if (length == 0) {
        return;
    }
    RbspReader reader = rbsp_reader({nal, length});
    state->total_bits = static_cast<uint32_t>(reader.total_bits);
    Sps sps{};
    if (!parse_sps(&reader, &sps, info, state, rules)) {
        return;
    }
    AvcVui vui{};
    if (sps.vui_parameters_present_flag != 0) {
        state->vui_start = static_cast<uint32_t>(reader.position);
        parse_avc_vui(&reader, &vui, state);
    }
    state->end_pos = static_cast<uint32_t>(reader.position);
    store_picture(&sps, info, state, rules);
    store_vui(&vui, info, rules);
}

bool read_avc_sps(Bytes nal, AvcSequenceInfo* info) {
    AvcParseState state;
    ParseAvcSequenceParameterSet(
        nal.data(), static_cast<uint32_t>(nal.size()), info, &state, AvcRules::standard);
    return info->width != 0;
}

int find_avc_sps(Bytes stream, AvcSequenceInfo* info) {
    constexpr uint8_t nal_sps = 7;
    constexpr size_t longest = 4096; // an SPS has some dozen bytes
    for (int64_t at = find_start_code(stream, 0); at >= 0;
         at = find_start_code(stream, static_cast<size_t>(at) + 3)) {
        const Bytes nal = stream.subspan(static_cast<size_t>(at) + 3);
        if ((nal[0] & 0x9F) != nal_sps || (nal[0] & 0x60) == 0) { // nal_ref_idc must not be 0
            continue;
        }
        *info = {};
        AvcParseState state{};
        ParseAvcSequenceParameterSet(nal.data(),
            static_cast<uint32_t>(std::min(nal.size(), longest)), info, &state, AvcRules::standard);
        if (state.error == 0 &&
            avc_profile_name(info->profile_idc, AvcRules::standard) != nullptr) {
            return 0;
        }
    }
    *info = {};
    return 1;
}

} // namespace zat
