#include "container/mpeg_ts/stream_output.h"

#include "common/record/details.h"
#include "common/record/frame_timing.h"
#include "common/record/record_lines.h"
#include "common/record/stream_lines.h"
#include "container/mpeg_descriptors.h"
#include "container/mpeg_ts/describe.h"

#include <algorithm>
#include <cmath>

namespace zat::ts {

namespace {

constexpr size_t prefix_size = 16;

struct StreamOutput {
    const Analysis* analysis;
    const PlayTime* time;
    int64_t start = 0; // the program's first time stamp
    bool has_start = false;
};

bool is_video(const Stream& stream) {
    return text_of(stream.codec).kind == ZAT_STREAM_VIDEO;
}

bool is_audio(const Stream& stream) {
    return text_of(stream.codec).kind == ZAT_STREAM_AUDIO;
}

void find_start(StreamOutput* output, uint16_t program) {
    const Analysis* analysis = output->analysis;
    for (uint32_t i = 0; i < analysis->stream_count; ++i) {
        const Stream& stream = analysis->streams[i];
        const Unit& unit = analysis->units[i];
        if (stream.program != program || !unit.has_stamps ||
            !(is_video(stream) || is_audio(stream))) {
            continue;
        }
        const int64_t first = unit.first_stamp + unit.lowest;
        if (!output->has_start || clock_distance(output->start, first) < 0) {
            output->start = first;
            output->has_start = true;
        }
    }
}

// Bit/s of the payload: counted where the file was read whole, else by the share of it that was
// read.
void measure_bit_rate(const StreamOutput& output, const Unit& unit, ZatStream* facts) {
    const Analysis* analysis = output.analysis;
    const double seconds = std::floor(output.time->seconds * 10'000 + 0.5) / 10'000; // as shown
    const int64_t packets = analysis->head_end - analysis->lost + analysis->sampled;
    if (seconds <= 0 || packets <= 0) {
        return;
    }
    const auto size = static_cast<double>(analysis->file_size);
    const auto read = static_cast<double>(packets);
    const double payload =
        static_cast<double>(unit.payload + unit.sampled) * (analysis->whole_file ? 1 : size / read);
    facts->bit_rate = mean_bit_rate(payload, seconds);
    if (!analysis->whole_file || output.time->joined) {
        facts->estimated |= ZAT_ESTIMATED_BIT_RATE;
    } else {
        facts->estimated &= ~uint32_t{ZAT_ESTIMATED_BIT_RATE};
    }
}

// The rate by the time stamps, where the stream has no usable one.
void measure_stamps(const Analysis* analysis, const Unit& unit, ZatStream* facts) {
    drop_nonsense(facts);
    if (facts->frame_rate > 0 || unit.stamps == 0) {
        return;
    }
    FrameTimes times;
    const int64_t* stamps = analysis->stamps[unit.stamps - 1];
    for (uint32_t i = 0; i < std::min(unit.stamp_count, stamp_slots); ++i) {
        add_frame_time(&times, stamps[i]);
    }
    measure_frame_rate(facts, &times, 1 / static_cast<double>(clock_rate));
}

void set_common_facts(const StreamOutput& output, uint32_t index, ZatStream* facts) {
    const Analysis* analysis = output.analysis;
    const Stream& stream = analysis->streams[index];
    const Unit& unit = analysis->units[index];
    facts->id = stream.pid;
    facts->flags |= stream.flags;
    if (is_encrypted(analysis, index)) {
        facts->flags |= ZAT_FLAG_ENCRYPTED;
    }
    if (facts->codec[0] == '\0') {
        copy_utf8(facts->codec, text_of(stream.codec).details);
    }
    if (stream.type != 0) {
        format_text(facts->codec_id, sizeof facts->codec_id, "0x%02X", stream.type);
    }
    copy_utf8(facts->language, stream.language);
    if (unit.has_stamps && output.has_start) {
        facts->start = clock_seconds(clock_distance(output.start, unit.first_stamp + unit.lowest));
    }
    if (analysis->whole_file) {
        facts->bytes = unit.payload;
        if (unit.has_stamps && !output.time->joined && !unit.stamps_jump) {
            facts->duration = clock_seconds(unit.highest - unit.lowest) + unit.frame_seconds;
        }
        if (!was_seen(analysis, stream.pid)) {
            facts->flags |= ZAT_FLAG_NO_DATA;
        }
    } else if (unit.has_stamps && (is_video(stream) || is_audio(stream))) {
        facts->duration = output.time->seconds;
        facts->estimated |= ZAT_ESTIMATED_DURATION;
    }
}

// What the present event says of the sound, by the component's tag.
void take_event_audio(const Analysis* analysis, Stream* stream) {
    if (!stream->has_component_tag || stream->program >= program_slots) {
        return;
    }
    const Service* service =
        find_service(&analysis->services, analysis->programs[stream->program].number);
    if (service == nullptr || !service->present.known) {
        return;
    }
    for (uint32_t i = 0; i < service->present.audio_count; ++i) {
        const AudioComponent& component = service->present.audio[i];
        if (component.tag != stream->component_tag) {
            continue;
        }
        stream->dual_mono = stream->dual_mono || component.dual_mono;
        if (stream->language[0] == '\0') {
            add_language(stream->language, Bytes(component.languages).first(3));
            add_language(stream->language, Bytes(component.languages).last(3));
        }
    }
}

// The line of a stream whose headers were not found: its name alone.
void format_name_line(const Stream& stream, char (&line)[line_size]) {
    const bool is_bare = stream.codec == Codec::mpeg1_video || stream.codec == Codec::mpeg2_video;
    format_text(line, line_size, is_bare ? "%s" : "[%s]", text_of(stream.codec).line);
}

void format_stream_line(const Stream& stream, const ZatStream& facts, const StreamText& text,
    bool described, char (&line)[line_size]) {
    const char* codec = text.codec[0] != '\0' ? text.codec : text_of(stream.codec).line;
    const LineText shown{.codec = codec, .bits = text.bits, .channel_mask = text.channel_mask};
    if (!described) {
        format_name_line(stream, line);
    } else if (text.has_line) {
        copy_text(line, bounded_text(text.line));
        if (text.measures_rate) {
            append_bit_rate(facts, line);
        }
    } else if (is_video(stream)) {
        format_video_line(facts, shown, line);
    } else {
        format_audio_line(facts, shown, line);
    }
}

void add_played_stream(const StreamOutput& output, uint32_t index, const Output& out) {
    const Analysis* analysis = output.analysis;
    Stream stream = analysis->streams[index];
    const Unit& unit = analysis->units[index];
    take_event_audio(analysis, &stream);
    ZatStream facts = new_stream(text_of(stream.codec).kind);
    StreamText text;
    const bool described =
        is_video(stream) ? describe_video(stream, captured_bytes(analysis, unit), &facts, &text)
                         : unit.captured != 0 && describe_audio(stream,
                                                     captured_bytes(analysis, unit), &facts, &text);
    if (described && is_video(stream)) {
        measure_stamps(analysis, unit, &facts);
        if (out.details != nullptr) { // lines show none
            find_video_encoder(stream.codec, captured_bytes(analysis, unit), &facts);
        }
    }
    if (described && is_video(stream) && text.has_line) {
        facts.nominal_bit_rate = facts.bit_rate; // a bound
        facts.bit_rate = 0;
        measure_bit_rate(output, unit, &facts);
    } else if (described && text.measures_rate) {
        measure_bit_rate(output, unit, &facts);
    }
    set_common_facts(output, index, &facts);
    copy_utf8(facts.language, stream.language);

    char prefix[prefix_size];
    format_text(prefix, sizeof prefix, "0x%04x ", stream.pid);
    char body[line_size];
    format_stream_line(stream, facts, text, described, body);
    if (facts.bit_rate == 0 && unit.payload != 0) { // no header tells it, so the line does not
        measure_bit_rate(output, unit, &facts);
    }
    char line[line_size];
    copy_text(line, prefix);
    append_text(line, bounded_text(body));
    append_word(line, stream.dual_mono ? "dual mono" : "");
    append_remarks(facts, line);
    append_word(line, (facts.flags & ZAT_FLAG_NO_DATA) != 0 ? "no data" : "");
    if (is_video(stream)) {
        add_video_line(out.record, "%s", line);
    } else {
        add_audio_line(out.record, "%s", line);
    }
    add_stream(out.details, facts);
}

// The identifiers of all data streams of the program that read the same; empty where an earlier
// stream has them in its line.
void format_pids(const Analysis* analysis, uint32_t index, char (&pids)[line_size]) {
    const Stream& stream = analysis->streams[index];
    pids[0] = '\0';
    const bool shares = text_of(stream.codec).kind == ZAT_STREAM_DATA;
    for (uint32_t i = 0; i < analysis->stream_count; ++i) {
        const Stream& other = analysis->streams[i];
        const bool same =
            i == index ||
            (shares && other.program == stream.program && other.codec == stream.codec &&
                bounded_text(other.language) == stream.language &&
                is_encrypted(analysis, i) == is_encrypted(analysis, index));
        if (!same) {
            continue;
        }
        if (i < index) {
            pids[0] = '\0';
            return;
        }
        char pid[prefix_size];
        format_text(pid, sizeof pid, "0x%04x", other.pid);
        if (bounded_text(pids).size() + prefix_size < line_size / 2) {
            AppendWithSeparator(pids, pid, separator_comma);
        }
    }
}

void add_other_stream(
    const StreamOutput& output, uint32_t index, const Output& out, ExtraLines* extra) {
    const Stream& stream = output.analysis->streams[index];
    ZatStream facts = new_stream(text_of(stream.codec).kind);
    set_common_facts(output, index, &facts);
    char pids[line_size];
    format_pids(output.analysis, index, pids);
    if (pids[0] != '\0') {
        char line[line_size];
        format_text(line, sizeof line, "%s [%s]", pids, text_of(stream.codec).line);
        ZatStream shown = facts;
        if (stream.pages[0] != '\0') {
            append_word(line, stream.pages);
            shown.language[0] = '\0'; // the pages have theirs
        }
        append_remarks(shown, line);
        add_stream_fact(extra, "%s", line);
    }
    add_stream(out.details, facts);
}

} // namespace

bool is_encrypted(const Analysis* analysis, uint32_t stream) {
    const Unit& unit = analysis->units[stream];
    return unit.encrypted ||
           (known_of(analysis, analysis->streams[stream].pid).scrambled && !unit.described) ||
           (analysis->streams[stream].flags & ZAT_FLAG_ENCRYPTED) != 0;
}

void add_program_streams(const Analysis* analysis, uint16_t program, const PlayTime& time,
    const Output& out, ExtraLines* extra) {
    StreamOutput output{analysis, &time};
    find_start(&output, program);
    for (uint32_t i = 0; i < analysis->stream_count; ++i) {
        const Stream& stream = analysis->streams[i];
        if (stream.program != program) {
            continue;
        }
        if (is_video(stream) || is_audio(stream)) {
            add_played_stream(output, i, out);
        } else {
            add_other_stream(output, i, out, extra);
        }
    }
}

} // namespace zat::ts
