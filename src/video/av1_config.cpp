#include "video/av1_config.h"

#include "common/bytes/bits.h"
#include "common/record/details.h"
#include "common/text/text.h"

#include <algorithm>
#include <iterator>

namespace zat {

namespace {

constexpr uint32_t obu_sequence_header = 1;
constexpr int most_units = 16; // looked at

constexpr uint32_t most_levels = 24; // seq_level_idx from here on is reserved, 31 none

constexpr uint8_t bt709_primaries = 1;
constexpr uint8_t srgb_transfer = 13;
constexpr uint8_t identity_matrix = 0;

// uvlc() (4.10.3)
uint64_t read_uvlc(BitReader* reader) {
    int zeros = 0;
    while (!reader->failed && !read_flag(reader)) {
        ++zeros;
    }
    if (zeros >= 32) {
        return UINT32_MAX;
    }
    return read_bits(reader, zeros) + (uint64_t{1} << zeros) - 1;
}

// timing_info() (5.5.3)
void parse_timing(BitReader* reader, Av1Sequence* sequence) {
    const uint32_t units = read_bits(reader, 32);
    const uint32_t scale = read_bits(reader, 32);
    if (read_flag(reader)) { // equal_picture_interval
        sequence->num_units_in_display_tick = units;
        sequence->time_scale = scale;
        sequence->ticks_per_picture = read_uvlc(reader) + 1;
    }
}

// Timing, decoder model and operating points. Keeps the first point's level.
void parse_operating_points(BitReader* reader, Av1Sequence* sequence) {
    int delay_length = 0;
    bool model_present = false;
    if (read_flag(reader)) { // timing_info_present_flag
        parse_timing(reader, sequence);
        model_present = read_flag(reader); // decoder_model_info_present_flag
        if (model_present) {
            delay_length = static_cast<int>(read_bits(reader, 5)) + 1;
            skip_bits(reader, 32 + 5 + 5);
        }
    }
    const bool delay_present = read_flag(reader); // initial_display_delay_present_flag
    const uint32_t points = read_bits(reader, 5) + 1;
    for (uint32_t i = 0; i < points; ++i) {
        skip_bits(reader, 12); // operating_point_idc
        const uint32_t level = read_bits(reader, 5);
        if (i == 0) {
            sequence->level_idx = static_cast<uint8_t>(level);
        }
        skip_bits(reader, level > 7 ? 1 : 0);     // seq_tier
        if (model_present && read_flag(reader)) { // decoder_model_present_for_this_op
            skip_bits(reader, static_cast<size_t>(2 * delay_length) + 1);
        }
        if (delay_present && read_flag(reader)) { // initial_display_delay_present_for_this_op
            skip_bits(reader, 4);
        }
    }
}

// From enable_interintra_compound to order_hint_bits_minus_1.
void pass_inter_tools(BitReader* reader) {
    skip_bits(reader, 4); // interintra, masked, warped motion, dual filter
    const bool order_hint = read_flag(reader);
    skip_bits(reader, order_hint ? 2 : 0); // jnt_comp, ref_frame_mvs
    const bool choose = read_flag(reader); // seq_choose_screen_content_tools
    if (choose || read_flag(reader)) {     // seq_force_screen_content_tools
        if (!read_flag(reader)) {          // seq_choose_integer_mv
            skip_bits(reader, 1);          // seq_force_integer_mv
        }
    }
    skip_bits(reader, order_hint ? 3 : 0);
}

// color_config() (5.5.2)
void parse_colour(BitReader* reader, Av1Sequence* sequence) {
    const bool high = read_flag(reader);
    const bool twelve = sequence->profile == 2 && high && read_flag(reader);
    sequence->bit_depth = twelve ? 12 : high ? 10 : 8;
    sequence->monochrome = sequence->profile != 1 && read_flag(reader);
    ColourCodes colour;
    if (read_flag(reader)) { // color_description_present_flag
        colour.primaries = static_cast<uint8_t>(read_bits(reader, 8));
        colour.transfer = static_cast<uint8_t>(read_bits(reader, 8));
        colour.matrix = static_cast<uint8_t>(read_bits(reader, 8));
    }
    const bool is_rgb = !sequence->monochrome && colour.primaries == bt709_primaries &&
                        colour.transfer == srgb_transfer && colour.matrix == identity_matrix;
    colour.full_range = is_rgb || read_flag(reader);
    colour.range_known = true;
    sequence->colour = colour;
    if (sequence->monochrome || is_rgb) {
        sequence->subsampling_x = sequence->monochrome;
        sequence->subsampling_y = sequence->monochrome;
    } else if (sequence->profile == 2 && twelve) {
        sequence->subsampling_x = read_flag(reader);
        sequence->subsampling_y = sequence->subsampling_x && read_flag(reader);
    } else {
        sequence->subsampling_x = sequence->profile != 1;
        sequence->subsampling_y = sequence->profile == 0;
    }
}

// sequence_header_obu() (5.5.1)
bool parse_sequence_header(Bytes payload, Av1Sequence* sequence) {
    BitReader reader{payload};
    Av1Sequence read;
    read.profile = static_cast<uint8_t>(read_bits(&reader, 3));
    skip_bits(&reader, 1); // still_picture
    const bool reduced = read_flag(&reader);
    if (reduced) {
        read.level_idx = static_cast<uint8_t>(read_bits(&reader, 5));
    } else {
        parse_operating_points(&reader, &read);
    }
    const int width_bits = static_cast<int>(read_bits(&reader, 4)) + 1;
    const int height_bits = static_cast<int>(read_bits(&reader, 4)) + 1;
    read.width = read_bits(&reader, width_bits) + 1;
    read.height = read_bits(&reader, height_bits) + 1;
    if (!reduced && read_flag(&reader)) { // frame_id_numbers_present_flag
        skip_bits(&reader, 7);
    }
    skip_bits(&reader, 3); // 128x128 superblocks, filter intra, intra edge filter
    if (!reduced) {
        pass_inter_tools(&reader);
    }
    skip_bits(&reader, 3); // superres, cdef, restoration
    parse_colour(&reader, &read);
    if (reader.failed) {
        return false;
    }
    *sequence = read;
    return true;
}

const char* profile_name(uint8_t profile) {
    static constexpr const char* names[] = {"Main", "High", "Professional"};
    return profile < std::size(names) ? names[profile] : "";
}

// Annex A.3: 2.0 is 0.
void av1_level_name(uint8_t level_idx, char* out, size_t size) {
    out[0] = '\0';
    if (level_idx < most_levels) {
        format_text(out, size, "%d.%d", 2 + level_idx / 4, level_idx % 4);
    }
}

const char* chroma_name(const Av1Sequence& sequence) {
    return chroma_format_name(sequence.monochrome       ? 0
                              : !sequence.subsampling_x ? 3
                              : sequence.subsampling_y  ? 1
                                                        : 2);
}

} // namespace

bool parse_av1_units(Bytes units, Av1Sequence* sequence) {
    for (int i = 0; i < most_units && !units.empty(); ++i) {
        BitReader reader{units};
        skip_bits(&reader, 1); // obu_forbidden_bit
        const uint32_t type = read_bits(&reader, 4);
        const bool extended = read_flag(&reader);
        const bool sized = read_flag(&reader);
        skip_bits(&reader, extended ? 9 : 1);
        uint64_t size = 0;
        bool goes_on = sized;
        for (int shift = 0; goes_on && shift < 56; shift += 7) { // leb128()
            const uint32_t byte = read_bits(&reader, 8);
            size |= uint64_t{byte & 0x7F} << shift;
            goes_on = (byte & 0x80) != 0;
        }
        if (reader.failed) {
            return false;
        }
        Bytes payload = units.subspan(reader.position / 8);
        if (sized) {
            payload = payload.first(static_cast<size_t>(std::min<uint64_t>(size, payload.size())));
        }
        if (type == obu_sequence_header) {
            return parse_sequence_header(payload, sequence);
        }
        units = units.subspan(reader.position / 8 + payload.size());
    }
    return false;
}

bool parse_av1_config(Bytes record, Av1Sequence* sequence) {
    constexpr size_t fixed_size = 4;
    constexpr uint8_t marker_and_version = 0x81;
    if (record.size() < fixed_size || record[0] != marker_and_version) {
        return false;
    }
    sequence->profile = record[1] >> 5;
    sequence->level_idx = record[1] & 0x1F;
    const bool high = (record[2] & 0x40) != 0;
    const bool twelve = (record[2] & 0x20) != 0;
    sequence->bit_depth = !high ? 8 : twelve ? 12 : 10;
    sequence->monochrome = (record[2] & 0x10) != 0;
    sequence->subsampling_x = (record[2] & 0x08) != 0;
    sequence->subsampling_y = (record[2] & 0x04) != 0;
    parse_av1_units(record.subspan(fixed_size), sequence);
    return true;
}

void av1_codec_text(const Av1Sequence& sequence, char (&out)[av1_text_size]) {
    char level[16];
    av1_level_name(sequence.level_idx, level, sizeof level);
    const char* profile = profile_name(sequence.profile);
    const bool both = profile[0] != '\0' && level[0] != '\0';
    format_text(out, sizeof out, "AV1%s%s%s%s", profile[0] != '\0' ? " " : "", profile,
        both ? "@" : "", both ? level : "");
}

void set_av1_facts(ZatStream* stream, const Av1Sequence& sequence) {
    copy_text(stream->codec, "AV1");
    copy_text(stream->profile, profile_name(sequence.profile));
    av1_level_name(sequence.level_idx, stream->level, sizeof stream->level);
    stream->bit_depth = sequence.bit_depth;
    copy_text(stream->chroma, chroma_name(sequence));
    if (stream->width == 0 || stream->height == 0) {
        stream->width = sequence.width;
        stream->height = sequence.height;
    }
    if (stream->frame_rate == 0) {
        set_frame_rate(stream, sequence.time_scale,
            sequence.num_units_in_display_tick * sequence.ticks_per_picture);
    }
    set_colour(stream, sequence.colour);
}

} // namespace zat
