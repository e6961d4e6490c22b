#include "video/avc_vui.h"

namespace zat {

namespace {

constexpr uint8_t extended_sar_threshold = 254;
constexpr uint32_t cpb_cnt_limit = 32;

uint32_t position_of(const RbspReader* reader) {
    return static_cast<uint32_t>(reader->position);
}

// Each of these reads one field and tells whether it still lay within the data.
bool take_u(RbspReader* reader, AvcParseState* state, int n, uint32_t* value) {
    *value = read_u(reader, n);
    return !avc_overrun(reader, state);
}

bool pass_u(RbspReader* reader, AvcParseState* state, int n) {
    uint32_t ignored = 0;
    return take_u(reader, state, n, &ignored);
}

// The same for fields of one kind in a row.
bool pass_each_u(RbspReader* reader, AvcParseState* state, int n, int fields) {
    bool within = true;
    for (int i = 0; i < fields && within; ++i) {
        within = pass_u(reader, state, n);
    }
    return within;
}

bool pass_each_ue(RbspReader* reader, AvcParseState* state, int fields) {
    bool within = true;
    for (int i = 0; i < fields && within; ++i) {
        within = pass_ue(reader, state);
    }
    return within;
}

// hrd_parameters()
bool parse_hrd(RbspReader* reader, AvcHrd* hrd, AvcParseState* state) {
    hrd->cpb_cnt_minus1 = read_ue(reader);
    if (hrd->cpb_cnt_minus1 >= cpb_cnt_limit) {
        hrd->cpb_cnt_minus1 = 1;
        state->cpb_clamped = 1;
    }
    uint32_t scale = 0;
    if (!take_u(reader, state, 4, &scale) || // bit_rate_scale
        !pass_u(reader, state, 4)) {         // cpb_size_scale
        return false;
    }
    hrd->bit_rate_scale = static_cast<uint8_t>(scale);
    for (uint32_t i = 0; i <= hrd->cpb_cnt_minus1; ++i) {
        uint32_t bit_rate_value_minus1 = 0;
        if (!take_ue(reader, state, &bit_rate_value_minus1) ||
            !pass_ue(reader, state)) { // cpb_size_value_minus1
            return false;
        }
        const uint32_t cbr_flag = read_u(reader, 1);
        if (i == 0) {
            hrd->bit_rate_value_minus1 = bit_rate_value_minus1;
            hrd->cbr_flag = static_cast<uint8_t>(cbr_flag);
            hrd->complete = !rbsp_overrun(reader);
        }
    }
    // initial_cpb_removal_delay_length_minus1, cpb_removal_delay_length_minus1,
    // dpb_output_delay_length_minus1, time_offset_length
    return pass_each_u(reader, state, 5, 4);
}

bool parse_aspect(RbspReader* reader, AvcVui* vui, AvcParseState* state) {
    state->aspect_field_pos[0] = position_of(reader);
    vui->aspect_ratio_info_present_flag = static_cast<uint8_t>(read_u(reader, 1));
    state->aspect_ratio_info_present_flag = vui->aspect_ratio_info_present_flag;
    if (vui->aspect_ratio_info_present_flag == 0) {
        return true;
    }
    state->aspect_field_pos[1] = position_of(reader);
    vui->aspect_ratio_idc = static_cast<uint8_t>(read_u(reader, 8));
    state->aspect_ratio_idc = vui->aspect_ratio_idc;
    if (avc_overrun(reader, state)) {
        return false;
    }
    if (vui->aspect_ratio_idc <= extended_sar_threshold) {
        return true;
    }
    state->aspect_field_pos[2] = position_of(reader);
    vui->sar_width = static_cast<uint16_t>(read_u(reader, 16));
    state->sar_width = vui->sar_width;
    if (avc_overrun(reader, state)) {
        return false;
    }
    state->aspect_field_pos[3] = position_of(reader);
    vui->sar_height = static_cast<uint16_t>(read_u(reader, 16));
    state->sar_height = vui->sar_height;
    return !avc_overrun(reader, state);
}

bool parse_colours(RbspReader* reader, AvcVui* vui, AvcParseState* state) {
    for (uint8_t* code :
        {&vui->colour_primaries, &vui->transfer_characteristics, &vui->matrix_coefficients}) {
        uint32_t value = 0;
        if (!take_u(reader, state, 8, &value)) {
            return false;
        }
        *code = static_cast<uint8_t>(value);
    }
    return true;
}

// From overscan_info_present_flag to the chroma sample locations.
bool parse_display_info(RbspReader* reader, AvcVui* vui, AvcParseState* state) {
    uint32_t present = 0;
    if (!take_u(reader, state, 1, &present) ||         // overscan_info_present_flag
        (present != 0 && !pass_u(reader, state, 1))) { // overscan_appropriate_flag
        return false;
    }
    if (!take_u(reader, state, 1, &present)) { // video_signal_type_present_flag
        return false;
    }
    if (present != 0) {
        uint32_t range = 0;
        uint32_t colour_description_present_flag = 0;
        if (!pass_u(reader, state, 3) ||         // video_format
            !take_u(reader, state, 1, &range) || // video_full_range_flag
            !take_u(reader, state, 1, &colour_description_present_flag)) {
            return false;
        }
        vui->video_full_range_flag = static_cast<uint8_t>(range);
        vui->video_signal_type_complete = true;
        if (colour_description_present_flag != 0 && !parse_colours(reader, vui, state)) {
            return false;
        }
    }
    // chroma_loc_info_present_flag; chroma_sample_loc_type_top_field and _bottom_field
    return take_u(reader, state, 1, &present) && (present == 0 || pass_each_ue(reader, state, 2));
}

bool parse_timing(RbspReader* reader, AvcVui* vui, AvcParseState* state) {
    uint32_t value = 0;
    if (!take_u(reader, state, 1, &value)) {
        return false;
    }
    vui->timing_info_present_flag = static_cast<uint8_t>(value);
    if (value == 0) {
        return true;
    }
    if (!take_u(reader, state, 32, &vui->num_units_in_tick) ||
        !take_u(reader, state, 32, &vui->time_scale) || !take_u(reader, state, 1, &value)) {
        return false;
    }
    vui->fixed_frame_rate_flag = static_cast<uint8_t>(value);
    vui->timing_complete = true;
    return true;
}

bool parse_hrds(RbspReader* reader, AvcVui* vui, AvcParseState* state) {
    uint32_t present = 0;
    if (!take_u(reader, state, 1, &present)) {
        return false;
    }
    vui->nal_hrd_parameters_present_flag = static_cast<uint8_t>(present);
    if (present != 0) {
        state->nal_hrd_start = position_of(reader);
        if (!parse_hrd(reader, &vui->nal_hrd, state)) {
            return false;
        }
    }
    vui->vcl_hrd_parameters_present_flag = static_cast<uint8_t>(read_u(reader, 1));
    if (vui->vcl_hrd_parameters_present_flag != 0) {
        state->vcl_hrd_start = position_of(reader);
        if (!parse_hrd(reader, &vui->vcl_hrd, state)) {
            return false;
        }
    }
    const bool any = (present | vui->vcl_hrd_parameters_present_flag) != 0;
    return !any || pass_u(reader, state, 1); // low_delay_hrd_flag
}

void pass_bitstream_restriction(RbspReader* reader, AvcParseState* state) {
    uint32_t bitstream_restriction_flag = 0;
    if (!pass_u(reader, state, 1) || // pic_struct_present_flag
        !take_u(reader, state, 1, &bitstream_restriction_flag) || bitstream_restriction_flag == 0 ||
        !pass_u(reader, state, 1)) { // motion_vectors_over_pic_boundaries_flag
        return;
    }
    // max_bytes_per_pic_denom, max_bits_per_mb_denom, log2_max_mv_length_horizontal,
    // log2_max_mv_length_vertical, max_num_reorder_frames, max_dec_frame_buffering
    pass_each_ue(reader, state, 6);
}

} // namespace

bool avc_overrun(const RbspReader* reader, AvcParseState* state) {
    if (!rbsp_overrun(reader)) {
        return false;
    }
    state->end_pos = position_of(reader);
    state->error = 1;
    return true;
}

void parse_avc_vui(RbspReader* reader, AvcVui* vui, AvcParseState* state) {
    if (parse_aspect(reader, vui, state) && parse_display_info(reader, vui, state) &&
        parse_timing(reader, vui, state) && parse_hrds(reader, vui, state)) {
        pass_bitstream_restriction(reader, state);
    }
}

} // namespace zat
