#include "common/record/details.h"
#include "common/record/extra_lines.h"
#include "common/record/record_lines.h"
#include "common/record/stream_lines.h"
#include "container/mpeg_ps/describe.h"
#include "container/mpeg_ps/program.h"

#include <algorithm>

namespace zat::ps {

namespace {

double stamped_seconds(const Stream& stream) {
    return has_stamps(stream.head)
               ? clock_seconds(stamp_span(stream.head, stream.tail)) + stream.frame_seconds
               : 0;
}

// Of a stream that plays on behind what was read of the file, no time is known.
double known_seconds(const Program& program, const PlayTime& time, const Stream& stream) {
    if (program.bare) {
        return time.seconds;
    }
    const bool has_end = program.whole || has_stamps(stream.tail);
    return has_end && !time.joined ? stamped_seconds(stream) : 0;
}

// The longest stream by its time stamps, which is what players show; by the clocks where stamps of
// the end are missing or another recording was joined.
PlayTime play_time(const Program& program) {
    PlayTime time;
    const ClockTime clock = clock_time(program.clocks, program.source.size, program.byte_rate);
    bool has_end = program.whole;
    bool stamped = false;
    for (size_t i = 0; i < program.table.count; ++i) {
        const Stream& stream = program.table.streams[i];
        if (!is_shown(stream)) {
            continue;
        }
        time.joined = time.joined || stream.head.jumps > 0 || stream.tail.jumps > 0;
        time.seconds = std::max(time.seconds, stamped_seconds(stream));
        has_end = has_end || has_stamps(stream.tail);
        stamped = stamped || has_stamps(stream.head);
    }
    time.joined = time.joined || clock.joined;
    if (time.joined || (clock.known && (!has_end || !stamped))) {
        time.seconds = clock.known ? clock.seconds : 0;
        time.estimated = time.joined && clock.known;
    }
    return time.seconds > 0 ? time : program.told;
}

// Where the streams begin, behind the first one of those that play.
void set_starts(Program* program) {
    int64_t first = no_clock;
    const auto start_of = [](const Stream& stream) {
        return (stream.head.anchor + stream.head.lowest + clock_modulus) % clock_modulus;
    };
    for (size_t i = 0; i < program->table.count; ++i) {
        const Stream& stream = program->table.streams[i];
        if (is_shown(stream) && has_stamps(stream.head) &&
            (first == no_clock || clock_distance(first, start_of(stream)) < 0)) {
            first = start_of(stream);
        }
    }
    for (size_t i = 0; i < program->table.count; ++i) {
        Stream* stream = &program->table.streams[i];
        if (first != no_clock && has_stamps(stream->head)) {
            stream->facts.start = clock_seconds(clock_distance(first, start_of(*stream)));
        }
    }
}

// Bit rates by the payload that was seen.
void set_rate(const Program& program, double seconds, Stream* stream) {
    ZatStream* facts = &stream->facts;
    if (program.whole) {
        facts->bytes = stream->bytes;
    }
    if (stream->kind != Kind::video || seconds <= 0 || program.walked <= 0 ||
        stream->packets == 0) {
        return;
    }
    double bytes = static_cast<double>(stream->bytes);
    if (!program.whole) {
        bytes *= static_cast<double>(program.source.size) / static_cast<double>(program.walked);
        if (facts->bit_rate != 0) {
            return; // the header's own is no worse
        }
        facts->estimated |= ZAT_ESTIMATED_BIT_RATE;
    }
    facts->nominal_bit_rate = facts->bit_rate;
    facts->bit_rate = mean_bit_rate(bytes, seconds);
}

// "0xE1 ": the PES id, or the substream within its id.
void format_prefix(const Stream& stream, char (&prefix)[8]) {
    const uint8_t id = substream_of(stream) != 0 ? substream_of(stream) : id_of(stream);
    format_text(prefix, sizeof prefix, "0x%02X ", id);
}

uint64_t details_id(const Stream& stream) {
    return substream_of(stream) != 0 || id_of(stream) == id_private_1 ? stream.key : id_of(stream);
}

void add_shown_stream(const Program& program, const Output& out, bool numbered, Stream* stream) {
    char prefix[8] = "";
    if (numbered) {
        format_prefix(*stream, prefix);
    }
    if (stream->form == Form::unknown) {
        name_stream(stream, program.mpeg2);
        if (stream->packets == 0 && program.whole) {
            append_text(stream->line, " no data");
            stream->facts.flags |= ZAT_FLAG_NO_DATA;
        }
    }
    stream->facts.id = program.bare ? 0 : details_id(*stream);
    if (stream->form == Form::generic_video) {
        drop_nonsense(&stream->facts);
        add_video_stream(out, stream->facts,
            {.codec = bounded_text(stream->codec),
                .prefix = bounded_text(prefix),
                .bits = stream->bits});
    } else {
        add_stream_line(out, stream->facts, bounded_text(stream->line), bounded_text(prefix));
    }
}

void add_kind(Program* program, const Output& out, ZatStreamKind kind) {
    const bool video = kind == ZAT_STREAM_VIDEO;
    const auto wanted = [video](const Stream& stream) {
        return is_shown(stream) && (stream.kind == Kind::video) == video &&
               (stream.packets > 0 || stream.declared);
    };
    int count = 0;
    for (size_t i = 0; i < program->table.count; ++i) {
        count += wanted(program->table.streams[i]) ? 1 : 0;
    }
    for (size_t i = 0; i < program->table.count; ++i) {
        Stream* stream = &program->table.streams[program->table.order[i]];
        if (wanted(*stream)) {
            add_shown_stream(*program, out, count > 1, stream);
        }
    }
}

struct OtherName {
    const char* line;
    const char* codec;
    Kind kind;
    bool numbered;
};

constexpr OtherName other_names[] = {
    {"[DVD subtitle]", "VobSub", Kind::dvd_subtitle, true},
    {"[SVCD subtitle]", "SVCD subtitle", Kind::svcd_subtitle, false},
    {"[CVD subtitle]", "CVD subtitle", Kind::cvd_subtitle, false},
    {"[DVD navigation]", "DVD navigation", Kind::navigation, false},
};

void add_other(const Output& out, Stream* stream, ExtraLines* extra) {
    for (const OtherName& row : other_names) {
        if (row.kind != stream->kind || stream->packets == 0) {
            continue;
        }
        if (row.numbered) {
            add_stream_fact(extra, "%s 0x%02X", row.line, substream_of(*stream));
        } else {
            add_stream_fact(extra, "%s", row.line);
        }
        copy_utf8(stream->facts.codec, row.codec);
        stream->facts.id = details_id(*stream);
        add_stream(out.details, stream->facts);
    }
}

// What the sequence line has no room for.
void add_sequence_facts(const MpegVideoHeaders& sequence, ExtraLines* extra) {
    const char* fraction = frame_rate_fraction(sequence.header.frame_rate_code);
    if (fraction[0] != '\0') {
        add_fact(extra, "%s", fraction);
    }
    const SequenceDisplayExtension& display = sequence.display;
    const bool has_size =
        display.display_horizontal_size != 0 && display.display_vertical_size != 0;
    if (has_size && (display.display_horizontal_size != sequence.header.width ||
                        display.display_vertical_size != sequence.header.height)) {
        add_fact(extra, "display %dx%d", static_cast<int32_t>(display.display_horizontal_size),
            static_cast<int32_t>(display.display_vertical_size));
    }
    const GopTime& gop = sequence.gop;
    if (gop.found && (gop.hours | gop.minutes | gop.seconds | gop.pictures) != 0) {
        add_fact(
            extra, "GOP %.2d:%.2d:%.2d:%.2d", gop.hours, gop.minutes, gop.seconds, gop.pictures);
    }
}

} // namespace

void write_program(Program* program, const Output& out, const char* format) {
    const PlayTime time = play_time(*program);
    out.record->play_time = time.seconds;
    if (out.details != nullptr) {
        copy_utf8(out.details->format, format);
        out.details->estimated |= time.estimated ? uint32_t{ZAT_ESTIMATED_DURATION} : 0;
    }
    for (size_t i = 0; i < program->table.count; ++i) {
        Stream* stream = &program->table.streams[i];
        stream->facts.duration = known_seconds(*program, time, *stream);
        set_rate(
            *program, stream->facts.duration > 0 ? stream->facts.duration : time.seconds, stream);
    }
    if (!time.joined) {
        set_starts(program);
    }
    add_kind(program, out, ZAT_STREAM_VIDEO);
    add_kind(program, out, ZAT_STREAM_AUDIO);
    ExtraLines extra;
    const Stream* first_sequence = nullptr;
    for (size_t i = 0; i < program->table.count; ++i) {
        Stream* stream = &program->table.streams[program->table.order[i]];
        add_other(out, stream, &extra);
        if (first_sequence == nullptr && stream->form == Form::mpeg_sequence) {
            first_sequence = stream;
        }
    }
    if (first_sequence != nullptr) {
        add_sequence_facts(first_sequence->sequence, &extra);
    }
    if (time.joined) {
        add_note(out, &extra, "joined");
    }
    if (time.estimated) {
        add_note(out, &extra, "time estimated");
    }
    note_work_limit(out, program->reader);
    write_extra_lines(extra, out.record);
}

} // namespace zat::ps
