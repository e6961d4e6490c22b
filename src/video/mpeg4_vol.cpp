#include "video/mpeg4_vol.h"

#include "common/bytes/bits.h"
#include "common/bytes/start_code.h"
#include "video/mpeg4_vop.h"

#include <bit>

namespace zat {

namespace {

constexpr uint8_t vol_first_code = 0x20;
constexpr uint8_t vol_last_code = 0x2F;
constexpr uint8_t visual_object_sequence_code = 0xB0;

constexpr uint32_t extended_pixel_aspect = 15;
enum Shape : uint32_t { shape_rectangular = 0, shape_binary_only = 2, shape_grayscale = 3 };

void read_control_parameters(BitReader* reader, Mpeg4Vol* vol) {
    if (read_bits(reader, 1) == 0) { // vol_control_parameters
        return;
    }
    vol->chroma_format = static_cast<uint8_t>(read_bits(reader, 2)); // chroma_format
    skip_bits(reader, 1);                                            // low_delay
    if (read_bits(reader, 1) != 0) {                                 // vbv_parameters
        skip_bits(reader, 16 + 16);     // first_half_bit_rate, latter_half_bit_rate
        skip_bits(reader, 16 + 3);      // first_half_ and latter_half_vbv_buffer_size
        skip_bits(reader, 11 + 1 + 16); // first_half_ and latter_half_vbv_occupancy
    }
}

// The time base. False without its marker bits.
bool read_time_base(BitReader* reader, Mpeg4Vol* vol) {
    bool markers = read_bits(reader, 1) != 0;          // marker_bit
    const uint32_t resolution = read_bits(reader, 16); // vop_time_increment_resolution
    markers = read_bits(reader, 1) != 0 && markers;    // marker_bit
    vol->time_increment_resolution = static_cast<uint16_t>(resolution);
    if (read_bits(reader, 1) != 0) { // fixed_vop_rate
        // As many bits as the values below the resolution need, at least one.
        const int bits = resolution > 1 ? std::bit_width(resolution - 1) : 1;
        vol->fixed_time_increment = static_cast<uint16_t>(read_bits(reader, bits));
    }
    return markers && resolution != 0;
}

// The depth of what alone may have another one than 8 bits (table 9-1).
void read_bit_depth(
    BitReader reader, uint32_t object_type, bool is_first_version, bool has_shape, Mpeg4Vol* vol) {
    constexpr uint32_t n_bit_type = 6;
    skip_bits(&reader, 1);                                                 // obmc_disable
    const bool sprite = read_bits(&reader, is_first_version ? 1 : 2) != 0; // sprite_enable
    if (!is_first_version && has_shape) {
        skip_bits(&reader, 1); // sadct_disable
    }
    const bool not_8_bit = read_bits(&reader, 1) != 0;
    skip_bits(&reader, 4);                       // quant_precision
    const uint32_t bits = read_bits(&reader, 4); // bits_per_pixel
    if (object_type == n_bit_type && !sprite && not_8_bit && !reader.failed && bits >= 4 &&
        bits <= 12) {
        vol->bit_depth = static_cast<uint8_t>(bits);
    }
}

struct ProfileRange {
    uint8_t first;
    uint8_t last;
    const char* profile;
    const char* levels[8]; // of the codes from the first one on
};

// ISO/IEC 14496-2, table G.1.
constexpr ProfileRange profile_ranges[] = {
    {0x01, 0x06, "Simple", {"1", "2", "3", "4a", "5", "6"}},
    {0x08, 0x09, "Simple", {"0", "0b"}},
    {0x10, 0x12, "Simple Scalable", {"0", "1", "2"}},
    {0x21, 0x22, "Core", {"1", "2"}},
    {0x32, 0x34, "Main", {"2", "3", "4"}},
    {0x42, 0x42, "N-Bit", {"2"}},
    {0x51, 0x51, "Scalable Texture", {"1"}},
    {0x61, 0x62, "Simple Face Animation", {"1", "2"}},
    {0x63, 0x64, "Simple FBA", {"1", "2"}},
    {0x71, 0x72, "Basic Animated Texture", {"1", "2"}},
    {0x81, 0x82, "Hybrid", {"1", "2"}},
    {0x91, 0x94, "Advanced Real Time Simple", {"1", "2", "3", "4"}},
    {0xA1, 0xA3, "Core Scalable", {"1", "2", "3"}},
    {0xB1, 0xB4, "Advanced Coding Efficiency", {"1", "2", "3", "4"}},
    {0xC1, 0xC2, "Advanced Core", {"1", "2"}},
    {0xD1, 0xD3, "Advanced Scalable Texture", {"1", "2", "3"}},
    {0xE1, 0xE4, "Simple Studio", {"1", "2", "3", "4"}},
    {0xE5, 0xE8, "Core Studio", {"1", "2", "3", "4"}},
    {0xF0, 0xF5, "Advanced Simple", {"0", "1", "2", "3", "4", "5"}},
    {0xF7, 0xF7, "Advanced Simple", {"3b"}},
    {0xF8, 0xFD, "FGS", {"0", "1", "2", "3", "4", "5"}},
};

} // namespace

int read_mpeg4_vol(Mpeg4Vol* vol, Bytes bytes) {
    BitReader reader{bytes};
    Mpeg4Vol found;
    uint32_t version = 1;
    skip_bits(&reader, 1);                              // random_accessible_vol
    const uint32_t object_type = read_bits(&reader, 8); // video_object_type_indication
    if (read_bits(&reader, 1) != 0) {                   // is_object_layer_identifier
        version = read_bits(&reader, 4);                // video_object_layer_verid
        skip_bits(&reader, 3);                          // video_object_layer_priority
    }
    found.aspect_ratio_info = static_cast<uint8_t>(read_bits(&reader, 4)); // aspect_ratio_info
    if (found.aspect_ratio_info == extended_pixel_aspect) {
        found.par_width = static_cast<uint8_t>(read_bits(&reader, 8));  // par_width
        found.par_height = static_cast<uint8_t>(read_bits(&reader, 8)); // par_height
    }
    read_control_parameters(&reader, &found);
    const uint32_t shape = read_bits(&reader, 2); // video_object_layer_shape
    if (shape == shape_grayscale && version != 1) {
        skip_bits(&reader, 4); // video_object_layer_shape_extension
    }
    if (!read_time_base(&reader, &found)) {
        return 1;
    }
    if (shape == shape_rectangular) {
        skip_bits(&reader, 1);                 // marker_bit
        found.width = read_bits(&reader, 13);  // video_object_layer_width
        skip_bits(&reader, 1);                 // marker_bit
        found.height = read_bits(&reader, 13); // video_object_layer_height
        skip_bits(&reader, 1);                 // marker_bit
    }
    if (shape != shape_binary_only) {
        found.interlaced = static_cast<uint8_t>(read_bits(&reader, 1)); // interlaced
    }
    if (reader.failed || (shape == shape_rectangular && (found.width == 0 || found.height == 0))) {
        return 1;
    }
    read_bit_depth(reader, object_type, version == 1, shape != shape_rectangular, &found);
    *vol = found;
    return 0;
}

int find_mpeg4_headers(Bytes stream, Mpeg4Headers* headers) {
    *headers = {};
    for (int64_t at = find_start_code(stream, 0); at >= 0;
         at = find_start_code(stream, static_cast<size_t>(at) + 3)) {
        const Bytes behind = stream.subspan(static_cast<size_t>(at) + start_code_size);
        const uint8_t code = stream[static_cast<size_t>(at) + 3];
        if (code == visual_object_sequence_code) {
            headers->profile_level = byte_at(behind, 0);
        } else if (code >= vol_first_code && code <= vol_last_code &&
                   read_mpeg4_vol(&headers->vol, behind) == 0) {
            headers->vol_found = true;
            return 0;
        } else if (code == vop_start_code) {
            headers->profile_level = 0; // of data that a header would have to precede
        }
    }
    return 1;
}

Mpeg4Profile mpeg4_profile(uint32_t profile_and_level_indication) {
    for (const ProfileRange& row : profile_ranges) {
        if (profile_and_level_indication >= row.first && profile_and_level_indication <= row.last) {
            return {row.profile, row.levels[profile_and_level_indication - row.first]};
        }
    }
    return {nullptr, nullptr};
}

} // namespace zat
