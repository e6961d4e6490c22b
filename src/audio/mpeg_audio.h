// MPEG-1, MPEG-2 and MPEG-2.5 audio, Layers I to III: the frame header (ISO/IEC 11172-3, 2.4.1.3
// and 2.4.2.3; ISO/IEC 13818-3, 2.4.2.3), the Xing, Info and VBRI headers that encoders put into
// the first frame, and the description line.
#pragma once

#include "common/bytes/bytes.h"
#include "common/text/text.h"

#include <cstdint>
#include <span>

namespace zat {

// Bytes of a frame header.
constexpr uint32_t mpeg_audio_header_size = 4;

// rate_mode
constexpr int8_t rate_mode_constant = 1;
constexpr int8_t rate_mode_variable = 2;

// What a frame header says. Cleared (`MpegAudioHeader header{}`) before every decode.
struct MpegAudioHeader {
    int8_t version_code = 0; // 10 MPEG-1, 20 MPEG-2, 25 MPEG-2.5, -1 reserved
    int8_t layer = 0;        // 1 to 3, -1 reserved
    uint8_t bitrate_index = 0;
    uint8_t sample_rate_index = 0;
    int8_t padding = 0;               // 0 or 1
    uint8_t channel_mode = 0;         // 0 to 3; 3 is a single channel
    int16_t bitrate = 0;              // kbit/s; -1 for free format and the forbidden index 15
    uint32_t sample_rate = 0;         // Hz; all ones for a reserved code
    char channel_mode_name[32] = {};  // "Stereo", "Joint Stereo", ...
    char mode_extension_text[8] = {}; // "", "/I", "/MS" or "/I/MS"
    uint32_t frame_size = 0;          // bytes, padding included
};

// One stream: its first frame's header, and what encoders put behind it.
struct MpegAudioInfo : MpegAudioHeader {
    double average_bitrate = 0;     // kbit/s, from a Xing or VBRI header; 0 without
    int8_t rate_mode = 0;           // 0 not set, else rate_mode_constant or rate_mode_variable
    uint32_t frame_count = 0;       // from a Xing, Info or VBRI header
    uint32_t byte_count = 0;        // the same: bytes of these frames
    char vbr_method_name[256] = {}; // LAME's method
    char encoder_string[256] = {};
    char vbr_header_kind[132] = {};    // "Xing", "VBRI" or ""
    char encoder_annotation[516] = {}; // "[GOGO]", or "[...]" around a string that is not LAME's
};

// True when the eleven bits of syncword that MPEG-1, 2 and 2.5 share stand at bytes[0] and [1].
constexpr bool IsMpegAudioSync(const uint8_t* bytes) {
    return bytes[0] == 0xFF && (bytes[1] & 0xE0) == 0xE0;
}

// Decodes a frame header without a look at its syncword. The four bytes are the reader's state: a
// complete decode leaves them zero, an early failure leaves the bits not yet read at their top.
//
// Returns 0, or 11 for a reserved version or layer, 13 for a frame size of 0 and 14 for a reserved
// sample rate; the record then holds what was decoded before.
int DecodeMpegAudioHeader(std::span<uint8_t, mpeg_audio_header_size> bytes, MpegAudioHeader* info);

// The same for the header at a frame's start, which stays as it is; missing bytes count as zero.
int read_mpeg_audio_header(Bytes frame, MpegAudioHeader* info);

// Samples of a frame for each channel.
uint32_t mpeg_audio_frame_samples(const MpegAudioHeader* info);

// ParseVbrHeader looks at no byte of the frame from here on.
constexpr uint32_t vbr_header_reach = 36 + 120 + 256;

// Looks for a Xing, Info or VBRI header and an encoder's name in the frame at the bytes' start,
// whose header is decoded already. What lies behind the frame's end, or is missing of it, counts as
// zeros. Fills the rate mode, frame count, average bit rate and the encoder's texts. Returns 0, or
// 1 when the header's counts are unusable: what depends on them is not stored then, but the line
// can still be formatted.
int ParseVbrHeader(Bytes frame, MpegAudioInfo* info);

// Writes the description line, like
// "MPEG1-LayerIII 44100Hz [VBR Xing Joint Stereo] 190.35kbps [LAME3.99r VBR-NEW/MTRH]
// [626bpf/9876f] ". A line without annotation ends with a space. Returns 0.
int FormatMpegAudioLine(const MpegAudioInfo* info, char (&out)[line_size]);

} // namespace zat
