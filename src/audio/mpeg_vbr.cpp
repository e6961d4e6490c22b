// The headers that encoders put into the first frame of a Layer III stream, at the place of its
// silent main data: "Xing" (also written as "Info" by constant-rate encoders) behind the side
// information, "VBRI" at a fixed place. No standard describes them.
#include "audio/mpeg_audio.h"
#include "common/text/text.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

constexpr uint32_t vbri_offset = 36;

// Fields of a Xing or Info header, from its name on.
constexpr uint32_t xing_flags = 7; // lowest byte of a big-endian word
constexpr uint32_t xing_frames = 8;
constexpr uint32_t xing_bytes = 12; // whether or not the frame count is there
constexpr uint32_t xing_gogo = 116;
constexpr uint32_t xing_encoder = 120;
constexpr uint32_t xing_method = 129;
constexpr uint8_t flag_frames = 1;
constexpr uint8_t flag_bytes = 2;

// Fields of a VBRI header, from its name on.
constexpr uint32_t vbri_bytes = 10;
constexpr uint32_t vbri_frames = 14;

// Longest encoder string, and the byte behind it that ends it.
constexpr uint32_t encoder_limit = sizeof(MpegAudioInfo::encoder_string) - 1;
static_assert(vbri_offset + xing_encoder + encoder_limit + 1 <= vbr_header_reach);

// Where a Xing header stands: behind header and side information (ISO/IEC 11172-3 and 13818-3,
// 2.4.1.7).
uint32_t xing_offset(const MpegAudioInfo* info) {
    const bool mono = info->channel_mode == 3;
    if (info->version_code == 10) {
        return mono ? 21 : 36;
    }
    return mono ? 13 : 21;
}

// LAME's "VBR method", by the low half of its byte.
void name_vbr_method(uint8_t method, MpegAudioInfo* info) {
    static constexpr const char* names[10] = {"unknown", "CBR", "ABR", "VBR-OLD/RH", "VBR-NEW/MTRH",
        "VBR-MT", "FULL-VBR4", "VBR-NEW/MT", "CBR-2PASS", "ABR-2PASS"};
    if (method < std::size(names)) {
        copy_text(info->vbr_method_name, names[method]);
    } else if (method == 15) {
        copy_text(info->vbr_method_name, "reserved");
    } else {
        format_text(info->vbr_method_name, sizeof info->vbr_method_name, "unknown(0x%.2x)", method);
    }
}

// Copies the printable text at `bytes` without a space that ends it.
void copy_encoder(const uint8_t* bytes, MpegAudioInfo* info) {
    const auto* start = reinterpret_cast<const char*>(bytes);
    std::string_view text = printable_text({start, encoder_limit + 1});
    if (text.size() > encoder_limit || text.ends_with(' ')) {
        text.remove_suffix(1);
    }
    copy_text(info->encoder_string, text);
}

// The encoder's name and method from a Xing or Info header; the annotation goes to `annotation`.
void parse_encoder(const uint8_t* header, MpegAudioInfo* info, char* annotation) {
    if (IsNotPrintable(static_cast<char>(header[xing_encoder])) == 0) {
        copy_encoder(header + xing_encoder, info);
    }
    if (std::strncmp(info->encoder_string, "LAME", 4) == 0) {
        name_vbr_method(header[xing_method] & 0x0F, info);
    } else if (info->encoder_string[0] != '\0') {
        format_text(annotation, sizeof info->encoder_annotation, "[%s]", info->encoder_string);
    }
    if (starts_with(header + xing_gogo, "GOGO")) {
        copy_text(annotation, sizeof info->encoder_annotation, "[GOGO]");
    }
}

// Samples of a frame for the average. The 1151, one less than such a frame has, stays: shown rates
// are compared with those of earlier reports.
double samples_per_frame(const MpegAudioInfo* info) {
    if (info->version_code == 10 && info->layer == 1) {
        return 384;
    }
    return info->version_code != 10 && info->layer == 3 ? 576 : 1151;
}

double average_bitrate(const MpegAudioInfo* info, uint32_t byte_count, uint32_t frames) {
    const double bits_per_frame = static_cast<double>(byte_count) * 8 / frames;
    return bits_per_frame * info->sample_rate * (1 / samples_per_frame(info)) * 0.001;
}

// "Info" is what encoders of a constant rate write in place of "Xing".
enum class VbrKind : uint8_t { none, xing, info, vbri };

struct VbrHeader {
    VbrKind kind = VbrKind::none;
    const uint8_t* start = nullptr; // its name
};

VbrHeader find_vbr_header(const uint8_t* frame, const MpegAudioInfo* info) {
    const uint8_t* start = frame + xing_offset(info);
    if (starts_with(start, "Xing")) {
        return {VbrKind::xing, start};
    }
    if (starts_with(start, "Info")) {
        return {VbrKind::info, start};
    }
    for (const uint8_t* place : {start, frame + vbri_offset}) {
        if (starts_with(place, "VBRI")) {
            return {VbrKind::vbri, place};
        }
    }
    return {};
}

// What the header counts; 0 where it does not.
struct Counts {
    uint32_t frames = 0;
    uint32_t bytes = 0;
};

// False when the header counts no frames at all.
bool read_counts(const VbrHeader& header, Counts* counts) {
    if (header.kind == VbrKind::none) {
        return true;
    }
    if (header.kind == VbrKind::vbri) {
        counts->bytes = ReadBE32(header.start + vbri_bytes);
        counts->frames = ReadBE32(header.start + vbri_frames);
        return counts->frames != 0;
    }
    const uint8_t flags = header.start[xing_flags];
    if ((flags & flag_frames) != 0) {
        counts->frames = ReadBE32(header.start + xing_frames);
        if (counts->frames == 0) {
            return false;
        }
    }
    if ((flags & flag_bytes) != 0) {
        counts->bytes = ReadBE32(header.start + xing_bytes);
    }
    return true;
}

// The header's own frame is not part of the stream. False when that leaves no frame.
bool set_average_bitrate(Counts* counts, MpegAudioInfo* info) {
    if (counts->frames <= 1) {
        return false;
    }
    info->average_bitrate = average_bitrate(info, counts->bytes, counts->frames - 1);
    if (info->version_code == 10 && info->layer == 1) {
        --counts->frames;
    }
    return true;
}

} // namespace

int ParseVbrHeader(Bytes frame, MpegAudioInfo* info) {
    uint8_t bytes[vbr_header_reach];
    copy_padded(frame.first(std::min<size_t>(frame.size(), info->frame_size)), bytes);
    const VbrHeader header = find_vbr_header(bytes, info);
    const bool is_variable = header.kind == VbrKind::xing || header.kind == VbrKind::vbri;
    if (is_variable) {
        copy_text(info->vbr_header_kind, header.kind == VbrKind::xing ? "Xing" : "VBRI");
        info->rate_mode = rate_mode_variable;
    }
    // Frames of silence begin with the encoder's name where there is no header: eight bytes, of
    // whatever kind those behind the name are.
    if (starts_with(bytes + vbri_offset, "LAME")) {
        copy_text(info->encoder_string,
            bounded_text(reinterpret_cast<const char*>(bytes + vbri_offset), 8));
    }
    Counts counts;
    if (!read_counts(header, &counts)) {
        return 1;
    }
    char annotation[sizeof info->encoder_annotation] = {};
    if (header.kind == VbrKind::xing || header.kind == VbrKind::info) {
        parse_encoder(header.start, info, annotation);
    }
    if (is_variable && !set_average_bitrate(&counts, info)) {
        return 1;
    }
    info->frame_count = counts.frames;
    info->byte_count = counts.bytes;
    if (info->rate_mode != rate_mode_variable) {
        info->rate_mode = rate_mode_constant;
    }
    copy_text(info->encoder_annotation, annotation);
    return 0;
}

} // namespace zat
