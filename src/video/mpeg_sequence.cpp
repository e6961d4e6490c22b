#include "video/mpeg_sequence.h"

#include "common/bytes/bits.h"
#include "common/bytes/start_code.h"
#include "common/text/text.h"

#include <array>
#include <cstring>

namespace zat {

namespace {

// extension_start_code_identifier (ISO/IEC 13818-2, table 6-2).
constexpr uint32_t sequence_extension_id = 1;
constexpr uint32_t sequence_display_extension_id = 2;

using CodeNames = std::array<const char*, 16>;

const char* name_of(const CodeNames& names, uint32_t code) {
    return code < names.size() ? names[code] : "";
}

// The words behind the size and rate; an empty name adds none.
void append_scan_and_profile(char* line, const char* scan, const SequenceExtension* extension) {
    char name[profile_level_size];
    profile_level_name(extension->profile, extension->level, name);
    for (const char* word : {scan, static_cast<const char*>(name)}) {
        if (word[0] != '\0') {
            AppendWithSeparator(line, line_size, word, separator_space);
        }
    }
}

} // namespace

int read_sequence_header(SequenceHeader* header, Bytes bytes) {
    if (bytes.size() < sequence_header_size) {
        return 1;
    }
    BitReader reader{bytes};
    header->width = read_bits(&reader, 12);                            // horizontal_size_value
    header->height = read_bits(&reader, 12);                           // vertical_size_value
    header->aspect_code = static_cast<uint8_t>(read_bits(&reader, 4)); // aspect_ratio_information
    header->frame_rate_code = static_cast<uint8_t>(read_bits(&reader, 4)); // frame_rate_code
    header->bit_rate_value = read_bits(&reader, 18);                       // bit_rate_value
    header->marker = static_cast<uint8_t>(read_bits(&reader, 1));          // marker_bit
    header->vbv_bytes = read_bits(&reader, 10) << 11; // vbv_buffer_size_value, units of 2048 bytes
    return 0;
}

int read_sequence_extension(SequenceExtension* extension, Bytes bytes) {
    BitReader reader{bytes};
    const uint32_t id = read_bits(&reader, 4);          // extension_start_code_identifier
    const uint32_t profile = read_bits(&reader, 4);     // profile_and_level_indication, upper half
    const uint32_t level = read_bits(&reader, 4);       // lower half
    const uint32_t progressive = read_bits(&reader, 1); // progressive_sequence
    if (reader.failed || id != sequence_extension_id) {
        return 1;
    }
    extension->profile = static_cast<uint8_t>(profile);
    extension->level = static_cast<uint8_t>(level);
    extension->progressive = static_cast<uint8_t>(progressive);
    const uint32_t chroma_format = read_bits(&reader, 2);
    const uint32_t horizontal_size = read_bits(&reader, 2);
    const uint32_t vertical_size = read_bits(&reader, 2);
    const uint32_t bit_rate = read_bits(&reader, 12);
    skip_bits(&reader, 1 + 8 + 1); // marker_bit, vbv_buffer_size_extension, low_delay
    const uint32_t rate_n = read_bits(&reader, 2);
    const uint32_t rate_d = read_bits(&reader, 5);
    if (!reader.failed) {
        extension->chroma_format = static_cast<uint8_t>(chroma_format);
        extension->horizontal_size_extension = static_cast<uint8_t>(horizontal_size);
        extension->vertical_size_extension = static_cast<uint8_t>(vertical_size);
        extension->bit_rate_extension = static_cast<uint16_t>(bit_rate);
        extension->frame_rate_extension_n = static_cast<uint8_t>(rate_n);
        extension->frame_rate_extension_d = static_cast<uint8_t>(rate_d);
    }
    return 0;
}

int read_sequence_display_extension(SequenceDisplayExtension* extension, Bytes bytes) {
    BitReader reader{bytes};
    const uint32_t id = read_bits(&reader, 4); // extension_start_code_identifier
    skip_bits(&reader, 3);                     // video_format
    SequenceDisplayExtension found;
    if (read_bits(&reader, 1) != 0) { // colour_description
        found.colour_primaries = static_cast<uint8_t>(read_bits(&reader, 8));
        found.transfer_characteristics = static_cast<uint8_t>(read_bits(&reader, 8));
        found.matrix_coefficients = static_cast<uint8_t>(read_bits(&reader, 8));
    }
    const uint32_t width = read_bits(&reader, 14);  // display_horizontal_size
    skip_bits(&reader, 1);                          // marker_bit
    const uint32_t height = read_bits(&reader, 14); // display_vertical_size
    if (reader.failed || id != sequence_display_extension_id) {
        return 1;
    }
    found.display_horizontal_size = width;
    found.display_vertical_size = height;
    *extension = found;
    return 0;
}

// ISO/IEC 13818-2, tables 8-2 and 8-3.
void profile_level_name(uint32_t profile, uint32_t level, char* out) {
    constexpr uint32_t main_profile = 4;
    out[0] = '\0';
    if (profile != main_profile) {
        return;
    }
    switch (level) {
    case 4:
        copy_text(out, profile_level_size, "MP@HL");
        break;
    case 6:
        copy_text(out, profile_level_size, "MP@HL1440");
        break;
    case 8:
        copy_text(out, profile_level_size, "MP@ML");
        break;
    case 10:
        copy_text(out, profile_level_size, "MP@LL");
        break;
    default:
        format_text(out, profile_level_size, "profile:%d level:%d", profile, level);
        break;
    }
}

// After ISO/IEC 11172-2, 2.4.3.2, table of pel aspect ratios, in this program's own words.
const char* mpeg1_aspect_name(uint32_t aspect_code) {
    static constexpr CodeNames names{"forbidden(0)", "1:1", "0.6735", "16:9(PAL)", "2.211:1",
        "0.8055", "16:9(NTSC)", "0.8935", "4:3(PAL)", "0.9815", "1.0255", "1.0695", "4:3(NTSC)",
        "1.1575", "1.2015", "(15)"};
    return name_of(names, aspect_code);
}

// After ISO/IEC 13818-2, table 6-3. The codes it reserves keep MPEG-1 ratios.
const char* mpeg2_aspect_name(uint32_t aspect_code) {
    static constexpr CodeNames names{"forbidden(0)", "1:1", "4:3", "16:9", "2.21:1", "0.8055",
        "0.8437", "0.8935", "0.9375", "0.9815", "1.0255", "1.0695", "1.1250", "1.1575", "1.2015",
        "(15)"};
    return name_of(names, aspect_code);
}

// ISO/IEC 13818-2, table 6-4.
const char* frame_rate_name(uint32_t frame_rate_code) {
    static constexpr CodeNames names{"forbidden(0)", "23.976", "24", "25", "29.97", "30", "50",
        "59.94", "60", "reserved(9)", "reserved(10)", "reserved(11)", "reserved(12)",
        "reserved(13)", "reserved(14)", "reserved(15)"};
    return name_of(names, frame_rate_code);
}

FrameRate frame_rate_of(uint32_t frame_rate_code) {
    static constexpr std::array<FrameRate, 9> rates{{{0, 0}, {24000, 1001}, {24, 1}, {25, 1},
        {30000, 1001}, {30, 1}, {50, 1}, {60000, 1001}, {60, 1}}};
    return frame_rate_code < rates.size() ? rates[frame_rate_code] : FrameRate{};
}

const char* frame_rate_fraction(uint32_t frame_rate_code) {
    static constexpr CodeNames fractions{"...fps", "(24000/1001)fps", "...fps", "...fps",
        "(30000/1001)fps", "...fps", "...fps", "(60000/1001)fps", "", "", "", "", "", "", "", ""};
    return name_of(fractions, frame_rate_code);
}

void mpeg_video_line(const SequenceHeader* header, const SequenceExtension* extension,
    MpegVideoVersion version, char* out) {
    const char* aspect = version == MpegVideoVersion::mpeg1
                             ? mpeg1_aspect_name(header->aspect_code)
                             : mpeg2_aspect_name(header->aspect_code);
    const char* rate = frame_rate_name(header->frame_rate_code);
    if (header->bit_rate_value == variable_bit_rate) {
        format_text(
            out, line_size, "%dx%d %s VBR %sfps", header->width, header->height, aspect, rate);
    } else {
        format_text(out, line_size, "%dx%d %s %dkbps %sfps %dByte", header->width, header->height,
            aspect, header->bit_rate_value * 400 / 1000, rate, header->vbv_bytes);
    }
    append_scan_and_profile(
        out, extension->progressive != 0 ? "Progressive" : "interlace", extension);
}

void named_video_line(const SequenceHeader* header, const SequenceExtension* extension,
    MpegVideoVersion version, VariableRate variable_rate, char* out) {
    const bool is_mpeg1 = version == MpegVideoVersion::mpeg1;
    const char* aspect =
        is_mpeg1 ? mpeg1_aspect_name(header->aspect_code) : mpeg2_aspect_name(header->aspect_code);
    const char* rate = frame_rate_name(header->frame_rate_code);
    const char* name = is_mpeg1 ? "MPEG1" : "MPEG2";
    if (variable_rate == VariableRate::as_word && header->bit_rate_value == variable_bit_rate) {
        format_text(out, line_size, "%s %dx%d %s VBR %sfps", name, header->width, header->height,
            aspect, rate);
    } else {
        format_text(out, line_size, "%s %dx%d %s %dkbps %sfps %dByte", name, header->width,
            header->height, aspect, header->bit_rate_value * 400 / 1000, rate, header->vbv_bytes);
    }
    append_scan_and_profile(
        out, is_mpeg1 || extension->progressive != 0 ? "Progressive" : "Interlace", extension);
}

int mpeg2_video_line(Bytes codec_private, char* out) {
    out[0] = '\0';
    SequenceHeader header{};
    SequenceExtension extension{};
    bool header_found = false;
    bool extension_found = false;
    // Until both are known a further hit of one replaces the earlier one.
    for (int64_t at = find_start_code(codec_private, 0);
         at >= 0 && !(header_found && extension_found);
         at = find_start_code(codec_private, static_cast<size_t>(at) + 3)) {
        const Bytes behind = codec_private.subspan(static_cast<size_t>(at) + start_code_size);
        const uint8_t code = codec_private[static_cast<size_t>(at) + 3];
        if (code == sequence_header_code && read_sequence_header(&header, behind) == 0) {
            header_found = true;
        } else if (code == extension_start_code &&
                   read_sequence_extension(&extension, behind) == 0) {
            extension_found = true;
        }
    }
    if (!header_found) {
        return 1;
    }
    named_video_line(&header, &extension, MpegVideoVersion::mpeg2, VariableRate::as_number, out);
    return 0;
}

void mpeg1_video_line(const SequenceHeader& header, char (&out)[line_size]) {
    const SequenceExtension none;
    named_video_line(&header, &none, MpegVideoVersion::mpeg1, VariableRate::as_number, out);
}

} // namespace zat
