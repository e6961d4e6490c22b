// The H.264 sequence parameter set (ITU-T H.264, 7.3.2.1.1 and Annex E).
#pragma once

#include "common/bytes/bytes.h"
#include "video/avc_names.h"

#include <cstdint>

namespace zat {

// What a stream does not carry keeps the caller's value.
struct AvcSequenceInfo {
    uint32_t width = 0; // luma samples after cropping
    uint32_t height = 0;
    uint8_t bit_depth = 0; // luma
    char codec_name[32] = {};
    char profile_level[32] = {};
    char aspect[32] = {};  // sample aspect ratio
    double frame_rate = 0; // frames per second by the VUI timing; may be infinite or NaN
    double bit_rate = 0;   // bit/s of the first NAL HRD entry
    uint8_t fixed_frame_rate = 0;
    uint8_t cbr = 0;
    uint8_t frame_mbs_only = 0; // 1: progressive frames only

    // The same as codes and numbers.
    uint8_t profile_idc = 0;
    uint8_t constraint_flags = 0; // constraint_set0_flag in the top bit
    uint8_t level_idc = 0;
    uint8_t chroma_format_idc = 1;
    bool separate_colour_planes = false;
    uint8_t frame_num_bits = 4; // of frame_num in slice headers
    uint16_t sar_width = 0;     // sample aspect ratio by the standard; 0 when unspecified
    uint16_t sar_height = 0;
    uint32_t num_units_in_tick = 0; // both 0 without timing
    uint32_t time_scale = 0;
    uint8_t colour_primaries = 2; // codes of ITU-T H.273; 2 is unspecified
    uint8_t transfer_characteristics = 2;
    uint8_t matrix_coefficients = 2;
    uint8_t full_range = 0;
    bool range_told = false;
};

// Positions are bits from the NAL header on, emulation prevention bytes not counted.
struct AvcParseState {
    uint8_t error = 0;       // 1 when a position passed the end of the data
    uint32_t total_bits = 0; // 8 × the NAL's bytes, emulation prevention bytes counted
    uint32_t end_pos = 0;    // where the parse stopped
    uint32_t vui_start = 0;
    uint32_t nal_hrd_start = 0;
    uint32_t vcl_hrd_start = 0;
    uint32_t cpb_clamped = 0; // 1 when a cpb_cnt_minus1 was 32 or more
    char reserved[512] = {};
    uint8_t aspect_ratio_info_present_flag = 0;
    uint8_t aspect_ratio_idc = 0;
    uint16_t sar_width = 0;
    uint16_t sar_height = 0;
    // Of the flag, the idc, the width and the height above.
    uint32_t aspect_field_pos[4] = {};
};

// Parses the NAL unit of `length` bytes that starts at its header byte (nal_unit_type 7). A length
// of 0 writes nothing. The caller clears both records.
//
// state->error tells a truncated parameter set: when it ended before the VUI, the size, depth and
// texts are not written; when it ended inside, they are. By the standard it also tells fields out
// of their range, and an unspecified aspect is an empty text.
void ParseAvcSequenceParameterSet(const uint8_t* nal, uint32_t length, AvcSequenceInfo* info,
    AvcParseState* state, AvcRules rules);

// Reads, by the standard, the parameter set of a decoder configuration. False when it does not tell
// the size.
bool read_avc_sps(Bytes nal, AvcSequenceInfo* info);

// Finds and reads, by the standard, the first whole parameter set of a byte stream (annex B).
// Returns 0, or 1 without one; the record is then cleared.
int find_avc_sps(Bytes stream, AvcSequenceInfo* info);

} // namespace zat
