#include "video/hevc_syntax.h"

#include "video/rbsp_reader.h"

#include <algorithm>
#include <iterator>

namespace zat {

namespace {

constexpr uint32_t most_reference_sets = 64;     // num_short_term_ref_pic_sets
constexpr uint32_t most_pictures = 16;           // of a reference picture set
constexpr uint32_t most_long_term_pictures = 32; // num_long_term_ref_pics_sps
constexpr uint8_t extended_sar = 255;

void skip(RbspReader* reader, int bits) {
    for (; bits > 0; bits -= 32) {
        read_u(reader, std::min(bits, 32));
    }
}

void skip_ue(RbspReader* reader, int count) {
    for (int i = 0; i < count; ++i) {
        read_ue(reader);
    }
}

// emulation_prevention_three_byte, which the reader's total counts.
uint64_t prevention_bytes(Bytes rbsp) {
    uint64_t count = 0;
    for (size_t i = 0; i < rbsp.size(); ++i) {
        if (has_at(rbsp, i, "\0\0\3")) {
            ++count;
            i += 2;
        }
    }
    return count;
}

// profile_tier_level( 1, sps_max_sub_layers_minus1 )
void parse_profile_tier_level(RbspReader* reader, uint32_t sub_layers, HevcSequence* sequence) {
    skip(reader, 3); // general_profile_space, general_tier_flag
    sequence->profile_idc = static_cast<uint8_t>(read_u(reader, 5));
    skip(reader, 32); // general_profile_compatibility_flag
    sequence->progressive_source = read_u(reader, 1) != 0;
    sequence->interlaced_source = read_u(reader, 1) != 0;
    skip(reader, 2); // general_non_packed_constraint_flag, general_frame_only_constraint_flag
    sequence->constraint_flags = static_cast<uint16_t>(read_u(reader, 9));
    skip(reader, 35);
    sequence->level_idc = static_cast<uint8_t>(read_u(reader, 8));
    if (sub_layers == 0) {
        return;
    }
    int bits = 0;
    for (uint32_t i = 0; i < 8; ++i) { // the flags are padded to eight pairs
        const bool profile_present = read_u(reader, 1) != 0;
        const bool level_present = read_u(reader, 1) != 0;
        bits += i < sub_layers ? (profile_present ? 88 : 0) + (level_present ? 8 : 0) : 0;
    }
    skip(reader, bits);
}

void parse_picture_size(RbspReader* reader, HevcSequence* sequence) {
    const uint32_t chroma = read_ue(reader); // chroma_format_idc
    const bool separate_planes = chroma == 3 && read_u(reader, 1) != 0;
    const uint32_t width = read_ue(reader);
    const uint32_t height = read_ue(reader);
    uint64_t left_right = 0;
    uint64_t top_bottom = 0;
    if (read_u(reader, 1) != 0) { // conformance_window_flag
        left_right = uint64_t{read_ue(reader)} + read_ue(reader);
        top_bottom = uint64_t{read_ue(reader)} + read_ue(reader);
    }
    if (rbsp_overrun(reader) || chroma > 3) {
        return;
    }
    sequence->chroma_format_idc = static_cast<uint8_t>(chroma);
    sequence->chroma_known = true;
    left_right *= !separate_planes && (chroma == 1 || chroma == 2) ? 2 : 1; // SubWidthC
    top_bottom *= !separate_planes && chroma == 1 ? 2 : 1;                  // SubHeightC
    sequence->width = left_right < width ? static_cast<uint32_t>(width - left_right) : 0;
    sequence->height = top_bottom < height ? static_cast<uint32_t>(height - top_bottom) : 0;
}

void pass_scaling_list_data(RbspReader* reader) {
    for (int size = 0; size < 4; ++size) {
        for (int matrix = 0; matrix < 6; matrix += size == 3 ? 3 : 1) {
            if (read_u(reader, 1) == 0) { // scaling_list_pred_mode_flag
                read_ue(reader);          // scaling_list_pred_matrix_id_delta
                continue;
            }
            // scaling_list_dc_coef_minus8, scaling_list_delta_coef
            skip_ue(reader, (size > 1 ? 1 : 0) + std::min(64, 1 << (4 + 2 * size)));
        }
    }
}

// st_ref_pic_set( index ). Returns NumDeltaPocs; `previous` is that of the set before.
uint32_t pass_reference_set(RbspReader* reader, uint32_t index, uint32_t previous) {
    if (index != 0 && read_u(reader, 1) != 0) { // inter_ref_pic_set_prediction_flag
        read_u(reader, 1);                      // delta_rps_sign
        read_ue(reader);                        // abs_delta_rps_minus1
        uint32_t pictures = 0;
        for (uint32_t i = 0; i <= previous; ++i) {
            const bool used_by_current = read_u(reader, 1) != 0;
            pictures += used_by_current || read_u(reader, 1) != 0 ? 1 : 0; // use_delta_flag
        }
        return pictures;
    }
    const uint32_t pictures =
        std::min(read_ue(reader), most_pictures) + std::min(read_ue(reader), most_pictures);
    for (uint32_t i = 0; i < pictures; ++i) {
        read_ue(reader);   // delta_poc_minus1
        read_u(reader, 1); // used_by_curr_pic_flag
    }
    return pictures;
}

// From behind the bit depths to vui_parameters_present_flag, whose value it returns.
bool pass_coding_tools(RbspReader* reader, uint32_t sub_layers) {
    const uint32_t picture_order_bits = read_ue(reader) + 4;
    const bool each_layer = read_u(reader, 1) != 0; // sps_sub_layer_ordering_info_present_flag
    skip_ue(reader, static_cast<int>(each_layer ? sub_layers + 1 : 1) * 3);
    skip_ue(reader, 6); // block sizes and hierarchy depths
    const bool scaling_lists = read_u(reader, 1) != 0;
    if (scaling_lists && read_u(reader, 1) != 0) { // sps_scaling_list_data_present_flag
        pass_scaling_list_data(reader);
    }
    skip(reader, 2);              // amp_enabled_flag, sample_adaptive_offset_enabled_flag
    if (read_u(reader, 1) != 0) { // pcm_enabled_flag
        skip(reader, 8);
        skip_ue(reader, 2);
        skip(reader, 1);
    }
    const uint32_t sets = read_ue(reader);
    if (sets > most_reference_sets) {
        return false;
    }
    uint32_t pictures = 0;
    for (uint32_t i = 0; i < sets && !rbsp_overrun(reader); ++i) {
        pictures = pass_reference_set(reader, i, pictures);
    }
    if (read_u(reader, 1) != 0) { // long_term_ref_pics_present_flag
        const uint32_t count = read_ue(reader);
        if (count > most_long_term_pictures || picture_order_bits > 16) {
            return false;
        }
        skip(reader, static_cast<int>(count * (picture_order_bits + 1)));
    }
    skip(reader, 2); // sps_temporal_mvp_enabled_flag, strong_intra_smoothing_enabled_flag
    return read_u(reader, 1) != 0 && !rbsp_overrun(reader);
}

// Table E.1.
struct Ratio {
    uint8_t width;
    uint8_t height;
};
constexpr Ratio sample_aspects[] = {{0, 0}, {1, 1}, {12, 11}, {10, 11}, {16, 11}, {40, 33},
    {24, 11}, {20, 11}, {32, 11}, {80, 33}, {18, 11}, {15, 11}, {64, 33}, {160, 99}, {4, 3}, {3, 2},
    {2, 1}};

void parse_aspect(RbspReader* reader, HevcSequence* sequence) {
    if (read_u(reader, 1) == 0) { // aspect_ratio_info_present_flag
        return;
    }
    const uint32_t code = read_u(reader, 8);
    const uint32_t width = code == extended_sar ? read_u(reader, 16) : 0;
    const uint32_t height = code == extended_sar ? read_u(reader, 16) : 0;
    if (rbsp_overrun(reader)) {
        return;
    }
    const Ratio named = code < std::size(sample_aspects) ? sample_aspects[code] : Ratio{};
    sequence->pixel_aspect_width = static_cast<uint16_t>(width + named.width);
    sequence->pixel_aspect_height = static_cast<uint16_t>(height + named.height);
}

void parse_video_signal_type(RbspReader* reader, HevcSequence* sequence) {
    if (read_u(reader, 1) == 0) { // video_signal_type_present_flag
        return;
    }
    ColourCodes colour;
    skip(reader, 3); // video_format
    colour.range_known = true;
    colour.full_range = read_u(reader, 1) != 0;
    if (read_u(reader, 1) != 0) { // colour_description_present_flag
        colour.primaries = static_cast<uint8_t>(read_u(reader, 8));
        colour.transfer = static_cast<uint8_t>(read_u(reader, 8));
        colour.matrix = static_cast<uint8_t>(read_u(reader, 8));
    }
    if (!rbsp_overrun(reader)) {
        sequence->colour = colour;
    }
}

// vui_parameters(), up to its timing.
void parse_vui(RbspReader* reader, HevcSequence* sequence) {
    parse_aspect(reader, sequence);
    if (read_u(reader, 1) != 0) { // overscan_info_present_flag
        skip(reader, 1);
    }
    parse_video_signal_type(reader, sequence);
    if (read_u(reader, 1) != 0) { // chroma_loc_info_present_flag
        skip_ue(reader, 2);
    }
    skip(reader, 1); // neutral_chroma_indication_flag
    const bool field_sequence = read_u(reader, 1) != 0;
    skip(reader, 1);              // frame_field_info_present_flag
    if (read_u(reader, 1) != 0) { // default_display_window_flag
        skip_ue(reader, 4);
    }
    if (rbsp_overrun(reader)) {
        return;
    }
    sequence->field_sequence = field_sequence;
    if (read_u(reader, 1) != 0) { // vui_timing_info_present_flag
        const uint32_t ticks = read_u(reader, 32);
        const uint32_t scale = read_u(reader, 32);
        if (!rbsp_overrun(reader)) {
            sequence->num_units_in_tick = ticks;
            sequence->time_scale = scale;
        }
    }
}

} // namespace

bool parse_hevc_sps_fields(Bytes rbsp, HevcSequence* sequence) {
    RbspReader reader = rbsp_reader(rbsp);
    reader.total_bits -= prevention_bytes(rbsp) * 8; // a cut set is one at every length
    skip(&reader, 4);                                // sps_video_parameter_set_id
    const uint32_t sub_layers = read_u(&reader, 3);  // sps_max_sub_layers_minus1
    skip(&reader, 1);                                // sps_temporal_id_nesting_flag
    HevcSequence read = *sequence;
    parse_profile_tier_level(&reader, sub_layers, &read);
    if (rbsp_overrun(&reader)) {
        return false;
    }
    skip_ue(&reader, 1); // sps_seq_parameter_set_id
    parse_picture_size(&reader, &read);
    const uint32_t depth = read_ue(&reader); // bit_depth_luma_minus8
    skip_ue(&reader, 1);                     // bit_depth_chroma_minus8
    if (rbsp_overrun(&reader) || depth > 8) {
        return false;
    }
    read.bit_depth = static_cast<uint8_t>(depth + 8);
    if (pass_coding_tools(&reader, sub_layers)) {
        parse_vui(&reader, &read);
    }
    *sequence = read;
    return true;
}

} // namespace zat
