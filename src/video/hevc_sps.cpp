#include "video/hevc_sps.h"

#include "common/bytes/start_code.h"
#include "common/record/details.h"
#include "common/text/text.h"
#include "video/hevc_syntax.h"

#include <iterator>

namespace zat {

namespace {

constexpr uint8_t nal_type_sps = 33;
constexpr size_t nal_header_size = 2;

constexpr size_t config_header_size = 23;
constexpr size_t largest_config = 65536; // parameter sets beyond it are none

uint8_t nal_type(Bytes nal) {
    return nal[0] >> 1 & 0x3F;
}

// general_profile_idc of the profiles that Table A.2 divides by constraint flags.
constexpr uint8_t range_extensions = 4;

enum Constraint : uint16_t {
    max_12bit = 1 << 8,
    max_10bit = 1 << 7,
    max_8bit = 1 << 6,
    max_422chroma = 1 << 5,
    max_420chroma = 1 << 4,
    max_monochrome = 1 << 3,
    intra = 1 << 2,
    one_picture_only = 1 << 1,
};

struct FlagWord {
    uint16_t flag;
    const char* word;
};

template <size_t N>
const char* first_word(const FlagWord (&words)[N], uint16_t flags, const char* otherwise) {
    for (const FlagWord& row : words) {
        if ((flags & row.flag) != 0) {
            return row.word;
        }
    }
    return otherwise;
}

void range_extensions_name(uint16_t flags, char* out, size_t size) {
    static constexpr FlagWord chroma[] = {
        {max_monochrome, "Monochrome"}, {max_420chroma, "Main"}, {max_422chroma, "Main 4:2:2"}};
    static constexpr FlagWord depth[] = {{max_8bit, ""}, {max_10bit, " 10"}, {max_12bit, " 12"}};
    static constexpr FlagWord use[] = {{one_picture_only, " Still Picture"}, {intra, " Intra"}};
    format_text(out, size, "%s%s%s", first_word(chroma, flags, "Main 4:4:4"),
        first_word(depth, flags, " 16"), first_word(use, flags, ""));
}

// Annex A.3, and F, G, H and I for the extensions.
void profile_name(const HevcSequence& sequence, char* out, size_t size) {
    static constexpr const char* names[] = {"", "Main", "Main 10", "Main Still Picture", "",
        "High Throughput", "Multiview Main", "Scalable Main", "3D Main", "Screen-Extended",
        "Scalable Extensions", "High Throughput SCC"};
    const uint8_t profile = sequence.profile_idc;
    if (profile == range_extensions) {
        range_extensions_name(sequence.constraint_flags, out, size);
    } else if (profile < std::size(names)) {
        copy_text(out, size, names[profile]);
    } else {
        format_text(out, size, "Profile %d", profile);
    }
}

void hevc_level_name(uint8_t level_idc, char* out, size_t size) {
    const int tenths = level_idc / 3;
    out[0] = '\0';
    if (tenths != 0) {
        format_text(out, size, tenths % 10 != 0 ? "%d.%d" : "%d", tenths / 10, tenths % 10);
    }
}

void set_scan(ZatStream* stream, const HevcSequence& sequence) {
    if (stream->scan != 0) {
        return;
    }
    if (sequence.field_sequence || (sequence.interlaced_source && !sequence.progressive_source)) {
        stream->scan = ZAT_SCAN_INTERLACED;
    } else if (sequence.progressive_source && !sequence.interlaced_source) {
        stream->scan = ZAT_SCAN_PROGRESSIVE;
    }
}

} // namespace

bool parse_hevc_sps(Bytes nal, HevcSequence* sequence) {
    if (nal.size() <= nal_header_size || nal_type(nal) != nal_type_sps || (nal[0] & 1) != 0 ||
        nal[1] >> 3 != 0) { // nuh_layer_id
        return false;
    }
    return parse_hevc_sps_fields(nal.subspan(nal_header_size), sequence);
}

bool parse_hevc_config(Bytes record, HevcSequence* sequence) {
    constexpr uint8_t version = 1;
    if (record.size() < config_header_size || record[0] != version) {
        return false;
    }
    const uint8_t* p = record.data();
    sequence->profile_idc = p[1] & 0x1F;
    sequence->progressive_source = (p[6] & 0x80) != 0;
    sequence->interlaced_source = (p[6] & 0x40) != 0;
    sequence->constraint_flags = static_cast<uint16_t>(ReadBE16(p + 6) >> 3 & 0x1FF);
    sequence->level_idc = p[12];
    sequence->chroma_format_idc = p[16] & 3;
    sequence->chroma_known = true;
    sequence->bit_depth = static_cast<uint8_t>((p[17] & 7) + 8);

    // Arrays of NAL units: their type, count, and each with its length.
    Bytes left = record.first(std::min(record.size(), largest_config)).subspan(config_header_size);
    for (int arrays = p[22]; arrays > 0 && left.size() >= 3; --arrays) {
        uint32_t units = ReadBE16(left.data() + 1);
        left = left.subspan(3);
        for (; units > 0 && left.size() >= 2; --units) {
            const size_t length = std::min<size_t>(ReadBE16(left.data()), left.size() - 2);
            if (parse_hevc_sps(left.subspan(2, length), sequence)) {
                return true;
            }
            left = left.subspan(2 + length);
        }
    }
    return true;
}

bool find_hevc_sps(Bytes stream, HevcSequence* sequence) {
    constexpr size_t prefix_size = 3;
    for (int64_t at = find_start_code_prefix(stream, 0); at >= 0;) {
        stream = stream.subspan(static_cast<size_t>(at) + prefix_size);
        at = find_start_code_prefix(stream, 0);
        if (parse_hevc_sps(at < 0 ? stream : stream.first(static_cast<size_t>(at)), sequence)) {
            return true;
        }
    }
    return false;
}

void hevc_codec_text(const HevcSequence& sequence, char (&out)[hevc_text_size]) {
    char profile[32];
    char level[16];
    profile_name(sequence, profile, sizeof profile);
    hevc_level_name(sequence.level_idc, level, sizeof level);
    format_text(out, sizeof out, "HEVC/H265%s%s%s%s", profile[0] != '\0' ? " " : "", profile,
        profile[0] != '\0' && level[0] != '\0' ? "@" : "", profile[0] != '\0' ? level : "");
}

void set_hevc_facts(ZatStream* stream, const HevcSequence& sequence) {
    copy_text(stream->codec, "HEVC");
    profile_name(sequence, stream->profile, sizeof stream->profile);
    hevc_level_name(sequence.level_idc, stream->level, sizeof stream->level);
    stream->bit_depth = sequence.bit_depth;
    if (stream->width == 0 || stream->height == 0) {
        stream->width = sequence.width;
        stream->height = sequence.height * (sequence.field_sequence ? 2 : 1);
    }
    if (sequence.chroma_known) {
        copy_text(stream->chroma, chroma_format_name(sequence.chroma_format_idc));
    }
    set_pixel_aspect(stream, sequence.pixel_aspect_width, sequence.pixel_aspect_height);
    set_colour(stream, sequence.colour);
    set_scan(stream, sequence);
    if (stream->frame_rate == 0) {
        // A field sequence's ticks are fields.
        set_frame_rate(stream, sequence.time_scale,
            uint64_t{sequence.num_units_in_tick} * (sequence.field_sequence ? 2 : 1));
    }
}

} // namespace zat
