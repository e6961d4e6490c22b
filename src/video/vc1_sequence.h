// The sequence headers of VC-1 video (SMPTE 421M): of the Advanced profile in the stream (6.1), of
// the others beside it (annex J).
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

enum Vc1Profile : uint8_t { vc1_simple, vc1_main, vc1_complex, vc1_advanced };

struct Vc1Sequence {
    uint8_t profile = vc1_simple;
    // Advanced profile only.
    uint8_t level = 0;
    uint8_t interlaced = 0;
    uint8_t chroma_format = 0; // 1: 4:2:0
    uint32_t width = 0;        // MAX_CODED_WIDTH
    uint32_t height = 0;
    uint32_t display_width = 0; // 0 when not told
    uint32_t display_height = 0;
    uint16_t aspect_width = 0; // of a sample; 0 when not told
    uint16_t aspect_height = 0;
    uint32_t frame_rate_numerator = 0; // 0 when not told
    uint32_t frame_rate_denominator = 0;
    uint8_t colour_primaries = 2; // codes of ITU-T H.273; 2 is unspecified
    uint8_t transfer_characteristics = 2;
    uint8_t matrix_coefficients = 2;
};

// Reads what follows the start code 00 00 01 0F. Returns 0, or 1 when it is no whole header of the
// Advanced profile; the record is then left as it was.
int read_vc1_sequence(Vc1Sequence* sequence, Bytes bytes);

// Reads STRUCT_C, the four bytes beside a stream of the Simple or Main profile.
int read_vc1_struct_c(Vc1Sequence* sequence, Bytes bytes);

// Finds the first header of the Advanced profile in a byte stream. Returns 0, or 1 without one.
int find_vc1_sequence(Bytes stream, Vc1Sequence* sequence);

// "Simple", "Main", "Complex", "Advanced".
const char* vc1_profile_name(uint32_t profile);

} // namespace zat
