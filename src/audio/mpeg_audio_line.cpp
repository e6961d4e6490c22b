#include "audio/mpeg_audio.h"
#include "common/text/text.h"

namespace zat {

namespace {

const char* version_text(int version_code) {
    return version_code == 10 ? "1" : version_code == 20 ? "2" : "2.5";
}

const char* layer_text(int layer) {
    return layer == 1 ? "I" : layer == 2 ? "II" : "III";
}

// Rate mode, header kind and channels, like "[VBR Xing Joint Stereo /MS]".
void format_descriptor(const MpegAudioInfo* info, char (&out)[line_size]) {
    copy_text(out, info->rate_mode == rate_mode_constant ? "[CBR" : "[VBR");
    for (const char* piece :
        {info->vbr_header_kind, info->channel_mode_name, info->mode_extension_text}) {
        if (piece[0] != '\0') {
            AppendWithSeparator(out, piece, separator_space);
        }
    }
    append_text(out, "]");
}

// "[LAME3.99r VBR-NEW/MTRH]", or nothing.
void format_encoder(const MpegAudioInfo* info, char (&out)[line_size]) {
    const bool both = info->encoder_string[0] != '\0' && info->vbr_method_name[0] != '\0';
    format_text(
        out, line_size, "[%s%s%s]", info->encoder_string, both ? " " : "", info->vbr_method_name);
    if (std::string_view(out) == "[]") {
        out[0] = '\0';
    }
}

} // namespace

int FormatMpegAudioLine(const MpegAudioInfo* info, char (&out)[line_size]) {
    char piece[line_size];
    format_descriptor(info, piece);
    const bool constant = info->rate_mode == rate_mode_constant;
    format_text(out, line_size, "MPEG%s-Layer%s %dHz %s %.2fkbps", version_text(info->version_code),
        layer_text(info->layer), static_cast<int32_t>(info->sample_rate), piece,
        constant ? info->bitrate : info->average_bitrate);

    format_encoder(info, piece);
    if (piece[0] != '\0') {
        AppendWithSeparator(out, piece, separator_space);
    }
    const auto size = static_cast<int32_t>(info->frame_size);
    if (info->frame_count != 0) {
        format_text(
            piece, sizeof piece, "[%dbpf/%df]", size, static_cast<int32_t>(info->frame_count));
    } else {
        format_text(piece, sizeof piece, "[%dbpf]", size);
    }
    AppendWithSeparator(out, piece, separator_space);
    AppendWithSeparator(out, info->encoder_annotation, separator_space);
    return 0;
}

} // namespace zat
