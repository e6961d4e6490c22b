#include "common/record/stream_lines.h"

#include "common/record/channel_layout.h"
#include "common/record/record_lines.h"
#include "common/text/text_codes.h"

namespace zat {

namespace {

constexpr uint32_t largest_side = 65535;
constexpr double lowest_frame_rate = 0.05;
constexpr uint32_t sample_rate_limit = 10'000'000;
constexpr uint32_t channel_limit = 255;
constexpr uint32_t bits_limit = 64;

const char* mark(const ZatStream& stream, uint32_t bit) {
    return (stream.estimated & bit) != 0 ? "~" : "";
}

void append_codec(std::string_view codec, char (&line)[line_size]) {
    append_word(line, "[");
    append_text(line, codec);
    append_text(line, "]");
}

void append_bits(uint32_t bits, char (&line)[line_size]) {
    if (bits != 0 && bits < bits_limit) {
        append_format(line, "%dBit", static_cast<int32_t>(bits));
    }
}

bool is_frame_rate(double rate, double highest) {
    return rate >= lowest_frame_rate && rate <= highest;
}

void append_channels(const ZatStream& stream, uint32_t mask, char (&line)[line_size]) {
    if (stream.channels == 0 || stream.channels >= channel_limit) {
        return;
    }
    char layout[layout_size];
    line_layout(mask != 0 || stream.channels < 3 ? mask : default_channel_mask(stream.channels),
        stream.channels, layout);
    append_format(line, layout[0] != '\0' ? "%dch(%s)" : "%dch",
        static_cast<int32_t>(stream.channels), layout);
}

struct FlagWord {
    uint32_t flag;
    std::string_view word;
};

constexpr FlagWord flag_words[] = {
    {ZAT_FLAG_FORCED, "forced"},
    {ZAT_FLAG_COMMENTARY, "commentary"},
    {ZAT_FLAG_HEARING_IMPAIRED, "hearing impaired"},
    {ZAT_FLAG_VISUAL_IMPAIRED, "visual impaired"},
    {ZAT_FLAG_ENCRYPTED, "encrypted"},
};

void append_title(const ZatStream& stream, char (&line)[line_size]) {
    constexpr size_t title_size = 121; // bytes shown, terminator included
    char title[title_size];
    if (utf8_to_cp932(bounded_text(stream.title), title) != 0) {
        append_format(line, "\"%s\"", title);
    }
}

void append_hdr(const ZatStream& stream, char (&line)[line_size]) {
    const std::string_view transfer = bounded_text(stream.transfer);
    if ((transfer == "PQ" || transfer == "HLG") && bounded_text(stream.primaries) == "BT.2020") {
        append_format(line, "%s BT.2020", stream.transfer);
    }
    if (bounded_text(stream.hdr).find("Dolby Vision") != std::string_view::npos) {
        append_word(line, "DolbyVision");
    }
}

} // namespace

void append_format(char (&line)[line_size], const char* format, ...) {
    char piece[line_size];
    va_list arguments;
    va_start(arguments, format);
    format_text_v(piece, sizeof piece, format, arguments);
    va_end(arguments);
    append_word(line, piece);
}

void append_bit_rate(const ZatStream& stream, char (&line)[line_size]) {
    if (stream.bit_rate != 0 && stream.bit_rate < bit_rate_limit) {
        append_format(line, "%s%.3fkbps", mark(stream, ZAT_ESTIMATED_BIT_RATE),
            static_cast<double>(stream.bit_rate) * 0.001);
    }
}

void append_word(char (&line)[line_size], std::string_view piece) {
    const std::string_view text = bounded_text(line);
    if (!text.empty() && text.back() != ' ' && !piece.empty()) {
        append_text(line, " ");
    }
    append_text(line, piece);
}

void append_remarks(const ZatStream& stream, char (&line)[line_size]) {
    if (stream.language[0] != '\0' && bounded_text(stream.language) != "und") {
        char language[2 * sizeof stream.language]; // the nearest form of a character may be longer
        append_word(line, {language, utf8_to_cp932(bounded_text(stream.language), language)});
    }
    append_title(stream, line);
    for (const FlagWord& row : flag_words) {
        if ((stream.flags & row.flag) != 0) {
            append_word(line, row.word);
        }
    }
    append_hdr(stream, line);
}

void format_video_line(const ZatStream& stream, const LineText& text, char (&line)[line_size]) {
    line[0] = '\0';
    if (stream.width != 0 && stream.height != 0 && stream.width <= largest_side &&
        stream.height <= largest_side) {
        append_format(
            line, "%dx%d", static_cast<int32_t>(stream.width), static_cast<int32_t>(stream.height));
    }
    append_codec(text.codec, line);
    append_bits(text.bits, line);
    if (is_frame_rate(stream.frame_rate, text.highest_frame_rate)) {
        append_format(line, "%s%.3ffps", mark(stream, ZAT_ESTIMATED_FRAME_RATE), stream.frame_rate);
    }
    append_bit_rate(stream, line);
    if (stream.frames != 0) {
        append_format(line, "%s%juf", mark(stream, ZAT_ESTIMATED_FRAMES),
            static_cast<uintmax_t>(stream.frames));
    }
    if (stream.scan != 0) {
        append_word(line, stream.scan == ZAT_SCAN_PROGRESSIVE ? "Progressive" : "interlace");
    }
    if (text.display_width != 0 && text.display_height != 0) {
        append_format(line, "display %dx%d", static_cast<int32_t>(text.display_width),
            static_cast<int32_t>(text.display_height));
    }
}

void format_audio_line(const ZatStream& stream, const LineText& text, char (&line)[line_size]) {
    line[0] = '\0';
    append_codec(text.codec, line);
    if (stream.sample_rate != 0 && stream.sample_rate < text.sample_rate_limit) {
        append_format(line, "%dHz", static_cast<int32_t>(stream.sample_rate));
    }
    append_channels(stream, text.channel_mask, line);
    append_bits(text.bits, line);
    append_bit_rate(stream, line);
}

void add_stream_line(
    const Output& out, const ZatStream& stream, std::string_view line, std::string_view prefix) {
    char whole[line_size];
    copy_text(whole, prefix);
    append_text(whole, line);
    append_remarks(stream, whole);
    if (stream.kind == ZAT_STREAM_VIDEO) {
        add_video_line(out.record, "%s", whole);
    } else {
        add_audio_line(out.record, "%s", whole);
    }
    add_stream(out.details, stream);
}

void set_stream_line(const Output& out, const ZatStream& stream, std::string_view line) {
    InfoRecord* record = out.record;
    (stream.kind == ZAT_STREAM_VIDEO ? record->video_count : record->audio_count) = 0;
    add_stream_line(out, stream, line);
}

void add_video_stream(const Output& out, const ZatStream& stream, const LineText& text) {
    char line[line_size];
    format_video_line(stream, text, line);
    add_stream_line(out, stream, bounded_text(line), text.prefix);
}

void add_audio_stream(const Output& out, const ZatStream& stream, const LineText& text) {
    char line[line_size];
    format_audio_line(stream, text, line);
    add_stream_line(out, stream, bounded_text(line), text.prefix);
}

void drop_nonsense(ZatStream* stream, double highest_frame_rate) {
    if (stream->width > largest_side || stream->height > largest_side) {
        stream->width = 0;
        stream->height = 0;
    }
    if (!is_frame_rate(stream->frame_rate, highest_frame_rate)) {
        stream->frame_rate = 0;
        stream->frame_rate_numerator = 0;
        stream->frame_rate_denominator = 0;
    }
    if (!is_frame_rate(stream->nominal_frame_rate, highest_frame_rate)) {
        stream->nominal_frame_rate = 0;
    }
    if (stream->bit_rate >= bit_rate_limit) {
        stream->bit_rate = 0;
    }
    if (stream->sample_rate >= sample_rate_limit) {
        stream->sample_rate = 0;
    }
    if (stream->channels >= channel_limit) {
        stream->channels = 0;
    }
    if (stream->bit_depth > bits_limit) { // doubles have 64
        stream->bit_depth = 0;
    }
    stream->duration = known_duration(stream->duration);
}

} // namespace zat
