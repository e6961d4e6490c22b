// MPEG-1 and MPEG-2 video: the sequence header (ISO/IEC 11172-2, 2.4.2.3; ISO/IEC
// 13818-2, 6.2.2.1), the sequence and sequence display extensions (ISO/IEC 13818-2, 6.2.2.3
// and 6.2.2.4), and the lines made of them. Callers find the start codes themselves, but for
// mpeg2_video_line.
#pragma once

#include "common/bytes/bytes.h"
#include "common/text/text.h"

#include <cstddef>
#include <cstdint>

namespace zat {

// Values of the byte behind the start code prefix.
enum VideoStartCode : uint8_t {
    picture_start_code = 0x00,
    slice_first_code = 0x01,
    slice_last_code = 0xAF,
    sequence_header_code = 0xB3,
    extension_start_code = 0xB5,
    sequence_end_code = 0xB7,
    group_start_code = 0xB8,
};

struct SequenceHeader {
    uint32_t width = 0;
    uint32_t height = 0;
    uint8_t aspect_code = 0;
    uint8_t frame_rate_code = 0;
    uint32_t bit_rate_value = 0; // units of 400 bit/s
    uint32_t vbv_bytes = 0;
    uint8_t marker = 0; // 1 in a true header
};

// The bit_rate_value that marks a variable bit rate.
constexpr uint32_t variable_bit_rate = 0x3FFFF;

struct SequenceExtension {
    uint8_t profile = 0; // escape bit and profile indication together
    uint8_t level = 0;
    uint8_t progressive = 0;
    // The rest, all 0 in an extension that is cut short.
    uint8_t chroma_format = 0;
    uint8_t horizontal_size_extension = 0; // upper bits of what the sequence header has
    uint8_t vertical_size_extension = 0;
    uint16_t bit_rate_extension = 0;
    uint8_t frame_rate_extension_n = 0;
    uint8_t frame_rate_extension_d = 0;
};

struct SequenceDisplayExtension {
    uint32_t display_horizontal_size = 0;
    uint32_t display_vertical_size = 0;
    // Codes of ITU-T H.273; 2, unspecified, without a colour description.
    uint8_t colour_primaries = 2;
    uint8_t transfer_characteristics = 2;
    uint8_t matrix_coefficients = 2;
};

constexpr size_t sequence_header_size = 8;

// Reads the bytes that follow the start code 00 00 01 B3. Returns 0, or 1 when they are fewer than
// sequence_header_size.
int read_sequence_header(SequenceHeader* header, Bytes bytes);

// Both read the bytes that follow the start code 00 00 01 B5. They return 0, or 1 when another kind
// of extension stands there or the bytes end within it; the record is then left as it was.
int read_sequence_extension(SequenceExtension* extension, Bytes bytes);
int read_sequence_display_extension(SequenceDisplayExtension* extension, Bytes bytes);

// Room for every name that profile_level_name writes, terminator included.
constexpr size_t profile_level_size = 32;

// Only the Main profile (4) has names; any other gives an empty text. `out` has
// profile_level_size bytes.
void profile_level_name(uint32_t profile, uint32_t level, char* out);

// Texts of the 4-bit codes; a code above 15 gives an empty one.
const char* mpeg1_aspect_name(uint32_t aspect_code);
const char* mpeg2_aspect_name(uint32_t aspect_code);
const char* frame_rate_name(uint32_t frame_rate_code);

// The exact rate as a fraction, for an extra line; empty for the codes that have none.
const char* frame_rate_fraction(uint32_t frame_rate_code);

// The rate of a frame_rate_code as a ratio; 0 and 0 for the codes that name none.
struct FrameRate {
    uint32_t numerator = 0;
    uint32_t denominator = 0;
};
FrameRate frame_rate_of(uint32_t frame_rate_code);

enum class MpegVideoVersion { mpeg1, mpeg2 };

// The line of a program stream's video; an MPEG-1 stream passes a cleared extension. `out` has
// line_size bytes.
void mpeg_video_line(const SequenceHeader* header, const SequenceExtension* extension,
    MpegVideoVersion version, char* out);

// How a line shows the value that stands for a variable bit rate: as a number like others, with the
// buffer size, or as "VBR".
enum class VariableRate { as_number, as_word };

// The line of a stream that names its codec in front: "MPEG2 1440x1080 16:9 20000kbps 29.97fps
// 1835008Byte Interlace MP@HL1440". MPEG-1 is progressive; it passes a cleared extension. `out` has
// line_size bytes.
void named_video_line(const SequenceHeader* header, const SequenceExtension* extension,
    MpegVideoVersion version, VariableRate variable_rate, char* out);

// The line of a Matroska track: finds the headers in its codec-private data. Returns 0, or 1 with
// an empty line when no whole sequence header is there. `out` has line_size bytes.
int mpeg2_video_line(Bytes codec_private, char* out);

// The same form for MPEG-1 video, by its sequence header.
void mpeg1_video_line(const SequenceHeader& header, char (&out)[line_size]);

} // namespace zat
