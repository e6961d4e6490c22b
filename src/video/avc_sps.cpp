#include "video/avc_sps.h"

#include "common/numbers.h"
#include "common/text.h"
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
    uint8_t level_idc = 0;
    uint32_t chroma_format_idc = 0;
    uint8_t bit_depth_luma_minus8 = 0;
    uint16_t pic_width_in_mbs_minus1 = 0;
    uint16_t pic_height_in_map_units_minus1 = 0;
    uint8_t frame_mbs_only_flag = 0;
    // Cut to 8 bits.
    uint8_t crop_left = 0;
    uint8_t crop_right = 0;
    uint8_t crop_top = 0;
    uint8_t crop_bottom = 0;
    uint8_t vui_parameters_present_flag = 0;
};

// Reads an Exp-Golomb field, cut to the width of its target; false when it left the data.
template <class Field>
bool take_ue(RbspReader* reader, AvcParseState* state, Field* value) {
    *value = static_cast<Field>(read_ue(reader));
    return !avc_overrun(reader, state);
}

bool pass_ue(RbspReader* reader, AvcParseState* state) {
    uint32_t ignored = 0;
    return take_ue(reader, state, &ignored);
}

// scaling_list(). Every scale counts from 8, not from the entry before it, so that a list ends
// early exactly at a delta of -8 modulo 256.
void pass_scaling_list(RbspReader* reader, int entries) {
    constexpr uint32_t base_scale = 8;
    uint32_t next_scale = base_scale;
    for (int i = 0; i < entries && next_scale != 0; ++i) {
        next_scale = (base_scale + read_se(reader)) % 256; // delta_scale
    }
}

void pass_scaling_matrix(RbspReader* reader, uint32_t chroma_format_idc) {
    constexpr int lists_4x4 = 6;
    const int lists = chroma_format_idc == chroma_format_444 ? 12 : 8;
    for (int i = 0; i < lists; ++i) {
        if (read_u(reader, 1) != 0) { // seq_scaling_list_present_flag
            pass_scaling_list(reader, i < lists_4x4 ? 16 : 64);
        }
    }
}

bool parse_high_profile_fields(RbspReader* reader, Sps* sps, AvcParseState* state) {
    if (!take_ue(reader, state, &sps->chroma_format_idc)) {
        return false;
    }
    if (sps->chroma_format_idc == chroma_format_444) {
        read_u(reader, 1); // separate_colour_plane_flag
    }
    if (!take_ue(reader, state, &sps->bit_depth_luma_minus8) ||
        !pass_ue(reader, state)) { // bit_depth_chroma_minus8
        return false;
    }
    read_u(reader, 1);            // qpprime_y_zero_transform_bypass_flag
    if (read_u(reader, 1) != 0) { // seq_scaling_matrix_present_flag
        pass_scaling_matrix(reader, sps->chroma_format_idc);
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
bool parse_sps(RbspReader* reader, Sps* sps, AvcSequenceInfo* info, AvcParseState* state) {
    read_u(reader, 8); // the NAL unit's header
    sps->profile_idc = static_cast<uint8_t>(read_u(reader, 8));
    read_u(reader, 8); // constraint_set flags, reserved_zero_2bits
    sps->level_idc = static_cast<uint8_t>(read_u(reader, 8));
    if (!pass_ue(reader, state)) { // seq_parameter_set_id
        return false;
    }
    const bool high = std::ranges::find(high_profiles, sps->profile_idc) != std::end(high_profiles);
    if (high && !parse_high_profile_fields(reader, sps, state)) {
        return false;
    }
    if (!pass_ue(reader, state) || // log2_max_frame_num_minus4
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

void store_picture(const Sps* sps, AvcSequenceInfo* info) {
    // One crop unit for both directions: 4:2:0 is taken for granted, and the fields of an
    // interlaced picture count double across, too.
    const uint32_t crop_unit = sps->frame_mbs_only_flag != 0 ? 2 : 4;
    const uint32_t fields = 2U - sps->frame_mbs_only_flag;
    info->width = (sps->pic_width_in_mbs_minus1 + 1U) * 16 -
                  crop_unit * (uint32_t{sps->crop_left} + sps->crop_right);
    info->height = fields * ((sps->pic_height_in_map_units_minus1 + 1U) * 16) -
                   crop_unit * (uint32_t{sps->crop_top} + sps->crop_bottom);
    info->bit_depth = static_cast<uint8_t>(sps->bit_depth_luma_minus8 + 8);
    copy_text(info->codec_name, "AVC/H.264");
    FormatAvcProfileLevel(
        info->profile_level, sizeof info->profile_level, sps->profile_idc, sps->level_idc);
}

// `vui` is a cleared record when the stream has none.
void store_vui(const AvcVui* vui, AvcSequenceInfo* info) {
    if (vui->aspect_ratio_info_present_flag == 0) {
        copy_text(info->aspect, "Unspecified");
    } else if (vui->aspect_ratio_idc == extended_sar) {
        format_text(info->aspect, sizeof info->aspect, "%d:%d", vui->sar_width, vui->sar_height);
    } else {
        AvcAspectRatioName(info->aspect, sizeof info->aspect, vui->aspect_ratio_idc);
    }
    if (vui->timing_complete) {
        // Two ticks, one per field, make a frame.
        info->frame_rate = divide(vui->time_scale, vui->num_units_in_tick) * 0.5;
        info->fixed_frame_rate = vui->fixed_frame_rate_flag;
    }
    if (vui->nal_hrd.complete) {
        const uint32_t value = vui->nal_hrd.bit_rate_value_minus1 + 1; // wraps
        info->bit_rate = std::ldexp(value, 6 + vui->nal_hrd.bit_rate_scale);
        info->cbr = vui->nal_hrd.cbr_flag;
    }
}

} // namespace

void ParseAvcSequenceParameterSet(
    const uint8_t* nal, uint32_t length, AvcSequenceInfo* info, AvcParseState* state) {
    if (length == 0) {
        return;
    }
    RbspReader reader = rbsp_reader({nal, length});
    state->total_bits = static_cast<uint32_t>(reader.total_bits);
    Sps sps{};
    if (!parse_sps(&reader, &sps, info, state)) {
        return;
    }
    AvcVui vui{};
    if (sps.vui_parameters_present_flag != 0) {
        state->vui_start = static_cast<uint32_t>(reader.position);
        parse_avc_vui(&reader, &vui, state);
    }
    state->end_pos = static_cast<uint32_t>(reader.position);
    store_picture(&sps, info);
    store_vui(&vui, info);
}

} // namespace zat
