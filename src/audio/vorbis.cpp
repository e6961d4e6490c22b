#include "audio/vorbis.h"

namespace zat {

namespace {

constexpr size_t vorbis_fields_size = 17; // audio_channels up to bitrate_minimum
constexpr uint32_t unset = UINT32_MAX;    // a bit rate that the encoder leaves open

const char* rate_mode(const VorbisInfo* info) {
    if (info->bitrate_minimum != info->bitrate_maximum) {
        return "ABR";
    }
    if (info->bitrate_maximum == info->bitrate_nominal) {
        return "CBR";
    }
    return info->bitrate_maximum == unset ? "VBR" : "QB";
}

} // namespace

void vorbis_info(Bytes fields, VorbisInfo* info) {
    uint8_t bytes[vorbis_fields_size];
    copy_padded(fields, bytes);
    info->channels = bytes[0];
    info->sample_rate = ReadLE32(bytes + 1);
    info->bitrate_maximum = ReadLE32(bytes + 5);
    info->bitrate_nominal = ReadLE32(bytes + 9);
    info->bitrate_minimum = ReadLE32(bytes + 13);
}

uint32_t vorbis_bitrate(const VorbisInfo* info) {
    return info->bitrate_minimum != info->bitrate_maximum
               ? (info->bitrate_minimum + info->bitrate_maximum) >> 1
               : info->bitrate_nominal;
}

void FormatVorbisLine(const VorbisInfo* info, uint32_t bitrate, char (&out)[line_size]) {
    const char* mode = rate_mode(info);
    char layout[32] = "";
    if (info->channels == 1) {
        format_text(layout, sizeof layout, "[%s Mono]", mode);
    } else if (info->channels == 2) {
        format_text(layout, sizeof layout, "[%s Stereo]", mode);
    } else if (info->channels > 2) {
        // The count goes out as a character code: hosts know these lines that way.
        format_text(layout, sizeof layout, "[%s %ch]", mode, info->channels);
    }
    format_text(
        out, line_size, "OggVorbis %dHz %s %.3fkbps", info->sample_rate, layout, bitrate * 0.001);
}

} // namespace zat
