// The video usability information of an H.264 sequence parameter set (ITU-T H.264, Annex E).
#pragma once

#include "video/avc_sps.h"
#include "video/rbsp_reader.h"

#include <cstdint>

namespace zat {

// E.1.2: of the first of the alternative schedulers. `complete` once that was read within the data.
struct AvcHrd {
    uint32_t cpb_cnt_minus1 = 0;
    uint8_t bit_rate_scale = 0;
    uint32_t bit_rate_value_minus1 = 0;
    uint8_t cbr_flag = 0;
    bool complete = false;
};

// E.1.1.
struct AvcVui {
    uint8_t aspect_ratio_info_present_flag = 0;
    uint8_t aspect_ratio_idc = 0;
    uint16_t sar_width = 0;
    uint16_t sar_height = 0;
    bool video_signal_type_complete = false; // the fields up to the range were read
    uint8_t video_full_range_flag = 0;
    // Codes of ITU-T H.273; 2, unspecified, where the stream does not tell them.
    uint8_t colour_primaries = 2;
    uint8_t transfer_characteristics = 2;
    uint8_t matrix_coefficients = 2;
    uint8_t timing_info_present_flag = 0;
    uint32_t num_units_in_tick = 0;
    uint32_t time_scale = 0;
    uint8_t fixed_frame_rate_flag = 0;
    bool timing_complete = false; // the timing was read within the data
    uint8_t nal_hrd_parameters_present_flag = 0;
    AvcHrd nal_hrd;
    uint8_t vcl_hrd_parameters_present_flag = 0;
    AvcHrd vcl_hrd;
};

constexpr uint8_t extended_sar = 255;

// Sets state->error and end_pos when the position has left the data. Returns whether it has.
bool avc_overrun(const RbspReader* reader, AvcParseState* state);

// Reads an Exp-Golomb field, cut to the width of its target; false when it left the data.
template <class Field>
bool take_ue(RbspReader* reader, AvcParseState* state, Field* value) {
    *value = static_cast<Field>(read_ue(reader));
    return !avc_overrun(reader, state);
}

inline bool pass_ue(RbspReader* reader, AvcParseState* state) {
    uint32_t ignored = 0;
    return take_ue(reader, state, &ignored);
}

// Reads vui_parameters() and keeps its positions and aspect fields in the state. Stops behind the
// field that overran, with state->error set.
void parse_avc_vui(RbspReader* reader, AvcVui* vui, AvcParseState* state);

} // namespace zat
