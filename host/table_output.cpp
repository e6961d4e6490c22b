#include "table_output.h"

#include "encoding.h"
#include "text_width.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace host {

namespace {

constexpr size_t narrow_type_width = 10;
constexpr size_t wide_type_width = 14; // "Monkey's Audio"
constexpr size_t duration_width = 8;
constexpr size_t narrow_video_width = 21; // "H.264 1920x1080 29.97"
constexpr size_t wide_video_width = 30;   // "MPEG-4 Visual 1280x720 23.976"
constexpr size_t narrow_audio_width = 11;
constexpr size_t wide_audio_width = 14; // "E-AC-3 6ch +2"
constexpr size_t bit_rate_width = 6;
constexpr size_t wide_columns = 100; // a terminal with room for the wider columns

template <class... Arguments>
std::string formatted(const char* format, Arguments... arguments) {
    char out[64];
    std::snprintf(out, sizeof out, format, arguments...);
    return out;
}

std::string duration_text(double seconds) {
    if (!std::isfinite(seconds) || seconds <= 0 || seconds >= 1e9) {
        return "";
    }
    if (seconds < 10) {
        return formatted("%.1fs", seconds);
    }
    const auto whole = static_cast<uint64_t>(seconds);
    const auto hours = static_cast<unsigned>(whole / 3600);
    const auto minutes = static_cast<unsigned>(whole / 60 % 60);
    const auto rest = static_cast<unsigned>(whole % 60);
    return hours != 0 ? formatted("%u:%02u:%02u", hours, minutes, rest)
                      : formatted("%u:%02u", minutes, rest);
}

std::string bit_rate_text(uint64_t bit_rate) {
    const double kilobits = static_cast<double>(bit_rate) / 1000;
    if (bit_rate == 0) {
        return "";
    }
    return kilobits < 9999.5 ? formatted("%.0fk", kilobits) : formatted("%.1fM", kilobits / 1000);
}

std::string codec_text(const ZatStream& stream) {
    return repaired_utf8(stream.codec[0] != '\0' ? stream.codec : stream.codec_id);
}

std::string video_text(const ZatStream& stream) {
    std::string out = codec_text(stream);
    if (stream.width != 0 && stream.height != 0) {
        out += formatted(" %ux%u", stream.width, stream.height);
    }
    if (std::isfinite(stream.frame_rate) && stream.frame_rate > 0) {
        out += formatted(" %.5g", stream.frame_rate);
    }
    return out;
}

std::string audio_text(const ZatStream& stream) {
    return codec_text(stream) + (stream.channels != 0 ? formatted(" %uch", stream.channels) : "");
}

// The first stream of the kind, and how many more there are.
std::string streams_text(const Description& description, uint32_t kind,
    std::string (*text_of)(const ZatStream& stream)) {
    if (description.details == nullptr) {
        return "";
    }
    const ZatStream* begin = description.details->streams;
    const ZatStream* end =
        begin + std::min<uint32_t>(description.details->stream_count, ZAT_STREAM_SLOTS);
    const auto is_kind = [&](const ZatStream& stream) { return stream.kind == kind; };
    const ZatStream* first = std::find_if(begin, end, is_kind);
    if (first == end) {
        return "";
    }
    const auto more = static_cast<unsigned>(std::count_if(first + 1, end, is_kind));
    return text_of(*first) + (more != 0 ? formatted(" +%u", more) : "");
}

std::string left(const std::string& text, size_t width) {
    const std::string cut = cut_to_width(printable(text), width);
    return cut + std::string(width - text_width(cut), ' ');
}

std::string right(const std::string& text, size_t width) {
    return std::string(width - std::min(text.size(), width), ' ') + text;
}

} // namespace

std::string table_line(const Description& description, size_t columns) {
    if (!description.error.empty()) {
        return "";
    }
    const ZatDetails* details = description.details.get();
    const bool is_wide = columns == 0 || columns >= wide_columns;
    const size_t type_width = is_wide ? wide_type_width : narrow_type_width;
    const size_t video_width = is_wide ? wide_video_width : narrow_video_width;
    const size_t audio_width = is_wide ? wide_audio_width : narrow_audio_width;
    std::string line =
        left(description.format.empty() ? "-" : repaired_utf8(description.format), type_width) +
        " " + right(duration_text(details != nullptr ? details->duration : 0), duration_width) +
        "  " + left(streams_text(description, ZAT_STREAM_VIDEO, video_text), video_width) + " " +
        left(streams_text(description, ZAT_STREAM_AUDIO, audio_text), audio_width) + " " +
        right(bit_rate_text(details != nullptr ? details->bit_rate : 0), bit_rate_width) + "  " +
        printable(repaired_utf8(description.path));
    return (columns != 0 ? cut_to_width(line, columns) : line) + "\n";
}

} // namespace host
