#include "video/vp9.h"

#include "common/bytes/bits.h"
#include "common/text/text.h"

#include <array>

namespace zat {

namespace {

constexpr uint32_t frame_marker = 2;
constexpr uint32_t frame_sync_code = 0x498342;

// color_space (7.2.2) as codes of ITU-T H.273.
struct ColourSpace {
    uint8_t primaries;
    uint8_t transfer;
    uint8_t matrix;
};
constexpr std::array<ColourSpace, 8> colour_spaces{
    {{2, 2, 2}, {6, 6, 6}, {1, 1, 1}, {6, 6, 6}, {7, 7, 7}, {9, 14, 9}, {2, 2, 2}, {1, 13, 0}}};
constexpr uint32_t unknown_space = 0;
constexpr uint32_t rgb_space = 7;

// color_config() (6.2.2)
void parse_colour(BitReader* reader, Vp9Sequence* sequence) {
    sequence->bit_depth = sequence->profile < 2 ? 8 : read_bits(reader, 1) != 0 ? 12 : 10;
    const uint32_t space = read_bits(reader, 3);
    ColourCodes colour{
        colour_spaces[space].primaries, colour_spaces[space].transfer, colour_spaces[space].matrix};
    colour.range_known = true;
    colour.full_range = space == rgb_space || read_bits(reader, 1) != 0;
    const bool odd_profile = sequence->profile % 2 != 0;
    bool subsampling_x = space != rgb_space;
    bool subsampling_y = space != rgb_space;
    if (odd_profile && space != rgb_space) {
        subsampling_x = read_bits(reader, 1) != 0;
        subsampling_y = read_bits(reader, 1) != 0;
    }
    skip_bits(reader, odd_profile ? 1 : 0); // reserved_zero
    sequence->chroma_format = !subsampling_x ? 3 : subsampling_y ? 1 : 2;
    sequence->chroma_known = true;
    if (space == unknown_space) { // the container may know more
        colour.primaries = sequence->colour.primaries;
        colour.transfer = sequence->colour.transfer;
        colour.matrix = sequence->colour.matrix;
    }
    sequence->colour = colour;
}

// 4:2:0 stands for two values, which differ in where the samples lie.
void set_chroma(Vp9Sequence* sequence, uint32_t chroma_subsampling) {
    static constexpr uint8_t formats[] = {1, 1, 2, 3};
    if (chroma_subsampling < std::size(formats)) {
        sequence->chroma_format = formats[chroma_subsampling];
        sequence->chroma_known = true;
    }
}

} // namespace

bool parse_vp9_frame(Bytes frame, Vp9Sequence* sequence) {
    BitReader reader{frame};
    Vp9Sequence read = *sequence;
    const bool marked = read_bits(&reader, 2) == frame_marker;
    const uint32_t low = read_bits(&reader, 1);
    read.profile = static_cast<uint8_t>(read_bits(&reader, 1) << 1 | low);
    read.profile_known = true;
    skip_bits(&reader, read.profile == 3 ? 1 : 0);
    const bool shows_existing = read_bits(&reader, 1) != 0;
    const bool is_key = read_bits(&reader, 1) == 0; // frame_type
    skip_bits(&reader, 2);                          // show_frame, error_resilient_mode
    if (!marked || shows_existing || !is_key || read_bits(&reader, 24) != frame_sync_code) {
        return false;
    }
    parse_colour(&reader, &read);
    read.width = read_bits(&reader, 16) + 1;
    read.height = read_bits(&reader, 16) + 1;
    if (reader.failed) {
        return false;
    }
    *sequence = read;
    return true;
}

bool parse_vp9_config(Bytes record, Vp9Sequence* sequence) {
    constexpr size_t fixed_size = 10;
    constexpr uint8_t version = 1;
    if (record.size() < fixed_size || record[0] != version) {
        return false;
    }
    sequence->profile = record[4];
    sequence->profile_known = true;
    sequence->level = record[5];
    sequence->bit_depth = record[6] >> 4;
    set_chroma(sequence, record[6] >> 1 & 7);
    sequence->colour = {record[7], record[8], record[9], true, (record[6] & 1) != 0};
    return true;
}

void parse_vp9_features(Bytes features, Vp9Sequence* sequence) {
    enum : uint8_t { feature_profile = 1, feature_level, feature_depth, feature_chroma };
    while (features.size() >= 3) {
        const uint8_t length = features[1];
        const uint8_t value = features[2];
        if (length == 1 && features[0] == feature_profile) {
            sequence->profile = value;
            sequence->profile_known = true;
        } else if (length == 1 && features[0] == feature_level) {
            sequence->level = value;
        } else if (length == 1 && features[0] == feature_depth) {
            sequence->bit_depth = value;
        } else if (length == 1 && features[0] == feature_chroma) {
            set_chroma(sequence, value);
        }
        features = features.subspan(std::min<size_t>(2U + length, features.size()));
    }
}

void vp9_codec_text(const Vp9Sequence& sequence, char (&out)[vp9_text_size]) {
    format_text(
        out, sizeof out, sequence.profile_known ? "VP9 Profile %d" : "VP9", sequence.profile);
}

void set_vp9_facts(ZatStream* stream, const Vp9Sequence& sequence) {
    copy_text(stream->codec, "VP9");
    if (sequence.profile_known) {
        format_text(stream->profile, sizeof stream->profile, "Profile %d", sequence.profile);
    }
    if (sequence.level != 0) {
        format_text(stream->level, sizeof stream->level, sequence.level % 10 != 0 ? "%d.%d" : "%d",
            sequence.level / 10, sequence.level % 10);
    }
    stream->bit_depth = sequence.bit_depth;
    if (sequence.chroma_known) {
        copy_text(stream->chroma, chroma_format_name(sequence.chroma_format));
    }
    if (stream->width == 0 || stream->height == 0) {
        stream->width = sequence.width;
        stream->height = sequence.height;
    }
    set_colour(stream, sequence.colour);
}

} // namespace zat
