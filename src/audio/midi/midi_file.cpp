#include "audio/midi/midi_file.h"

#include "audio/midi/midi_track.h"
#include "common/catalogue/codec_names.h"
#include "common/file/riff.h"
#include "common/record/extra_info.h"
#include "common/record/extra_lines.h"
#include "common/record/record_lines.h"
#include "common/record/stream_lines.h"
#include "common/tags/info_list.h"
#include "common/tags/outer_tags.h"
#include "common/text/text.h"
#include "common/text/text_codes.h"

#include <algorithm>

namespace zat {

namespace {

constexpr uint32_t header_fields_size = 6;
constexpr uint16_t format_independent = 2; // tracks that do not play together
constexpr uint32_t riff_chunk_limit = 64;

// Events are looked at one by one, which takes longer than stepping over chunks.
constexpr Allowance event_allowance = {walk_allowance.steps, walk_allowance.bytes / 2};

struct MidiFile {
    Reader reader;
    Span smf; // from "MThd" on
    bool is_riff = false;

    uint16_t format = 0;
    uint16_t tracks = 0;
    uint16_t division = 0;

    MidiTempoMap tempos;
    uint32_t read_tracks = 0;
    uint32_t longest = 0; // ticks
    double seconds = 0;
    int64_t bytes = 0;   // of events
    int64_t missing = 0; // of the last track
    bool is_damaged = false;
    TagTexts texts;
    TagText writer = {};
};

// The sound and the texts of a RIFF file; instruments may stand beside them.
void open_riff(MidiFile* midi) {
    Span rest = sub_span(midi->smf, riff_header_size);
    midi->smf = {};
    Chunk chunk;
    for (uint32_t i = 0; i < riff_chunk_limit && next_chunk(&midi->reader, &rest, &chunk); ++i) {
        if (chunk.id == fourcc("data")) {
            midi->smf = chunk.payload;
        } else if (chunk.id == fourcc("LIST") &&
                   read_be32(&midi->reader, chunk.payload, 0) == fourcc("INFO")) {
            read_info_list(
                &midi->reader, sub_span(chunk.payload, list_type_size), &midi->texts, midi->writer);
        }
    }
}

bool read_header(MidiFile* midi, Span* rest) {
    midi->smf = span_behind_id3v2(&midi->reader);
    midi->is_riff = has_at(read_view(&midi->reader, midi->smf, 0, 4), 0, "RIFF");
    if (midi->is_riff) {
        open_riff(midi);
    }
    Chunk chunk;
    uint8_t fields[header_fields_size];
    if (!read_chunk(&midi->reader, midi->smf, &chunk, std::endian::big) ||
        chunk.id != fourcc("MThd") ||
        !read_all(&midi->reader, chunk.payload, 0, fields, sizeof fields)) {
        return false;
    }
    midi->format = ReadBE16(fields);
    midi->tracks = ReadBE16(fields + 2);
    midi->division = ReadBE16(fields + 4);
    *rest = sub_span(midi->smf, chunk.payload.end - midi->smf.start);
    return true;
}

// The first byte of a division in frames of a second, negative, and its ticks in the second.
bool counts_frames(const MidiFile& midi) {
    return midi.division >= 0x8000;
}

uint32_t frames_per_second(const MidiFile& midi) {
    return 256U - (midi.division >> 8);
}

uint32_t ticks_of_division(const MidiFile& midi) {
    return counts_frames(midi) ? midi.division & 0xFFU : midi.division;
}

double seconds_of(const MidiFile& midi, uint32_t ticks) {
    constexpr uint32_t drop_frame = 29; // stands for 30000/1001
    const uint32_t division = ticks_of_division(midi);
    if (division == 0) {
        return 0;
    }
    if (!counts_frames(midi)) {
        return midi_seconds(midi.tempos, ticks, division);
    }
    const uint32_t frames = frames_per_second(midi);
    const double rate = frames == drop_frame ? 30000.0 / 1001 : frames;
    return ticks / rate / division;
}

void take_name(MidiFile* midi, Span name) {
    if (midi->texts.title[0] == '\0' && size_of(name) != 0) {
        unknown_to_utf8(
            text_of(read_view(&midi->reader, name, 0, tag_text_size)), midi->texts.title);
    }
}

void take_track(MidiFile* midi, const Chunk& chunk) {
    MidiTrack track;
    walk_midi_track(&midi->reader, chunk.payload, &midi->tempos, &track);
    midi->is_damaged = midi->is_damaged || track.is_damaged;
    midi->longest = std::max(midi->longest, track.ticks);
    midi->bytes += size_of(chunk.payload);
    midi->missing = chunk.size - size_of(chunk.payload);
    if (midi->read_tracks == 0) {
        take_name(midi, track.name); // the sequence's
    }
    if (midi->format == format_independent) {
        midi->seconds += seconds_of(*midi, track.ticks);
        midi->tempos.count = 0;
    }
    ++midi->read_tracks;
}

void read_tracks(MidiFile* midi, Span rest) {
    Chunk chunk;
    while (midi->read_tracks < midi->tracks &&
           read_chunk(&midi->reader, rest, &chunk, std::endian::big)) {
        if (chunk.id == fourcc("MTrk")) {
            take_track(midi, chunk);
        }
        rest = {chunk.payload.end, rest.end};
    }
    if (midi->format != format_independent) {
        midi->seconds = seconds_of(*midi, midi->longest);
    }
}

void format_line(const MidiFile& midi, char (&line)[line_size]) {
    format_text(
        line, sizeof line, midi.format <= format_independent ? "[SMF %d]" : "[SMF]", midi.format);
    if (midi.tracks != 0) {
        append_format(line, "%d tracks", midi.tracks);
    }
    if (counts_frames(midi)) {
        append_format(line, "%dfps", static_cast<int32_t>(frames_per_second(midi)));
    }
    if (const uint32_t ticks = ticks_of_division(midi); ticks != 0) {
        append_format(line, "%d ticks", static_cast<int32_t>(ticks));
    }
}

void write_notes(const MidiFile& midi, bool is_estimated, const Output& out) {
    ExtraLines extra;
    if (midi.missing > 0) {
        add_truncated_note(out, &extra, static_cast<uint64_t>(midi.missing));
    } else if (midi.read_tracks < midi.tracks && !midi.reader.limited) {
        add_note(out, &extra, "truncated");
    } else if (midi.is_damaged && !midi.reader.limited) {
        add_note(out, &extra, "damaged");
    }
    if (is_estimated) {
        add_note(out, &extra, "time estimated");
    }
    write_extra_lines(extra, out.record);
}

void describe(MidiFile* midi, const Output& out) {
    const bool is_estimated =
        midi->seconds != 0 && (midi->reader.limited || midi->tempos.is_full || midi->is_damaged ||
                                  midi->missing > 0 || midi->read_tracks < midi->tracks);
    ZatStream stream = new_stream(ZAT_STREAM_AUDIO);
    set_codec(&stream, {"MIDI"});
    if (midi->format <= format_independent) {
        format_text(stream.profile, sizeof stream.profile, "SMF %d", midi->format);
    }
    stream.duration = midi->seconds;
    stream.bytes = static_cast<uint64_t>(midi->bytes);
    stream.estimated = is_estimated ? uint32_t{ZAT_ESTIMATED_DURATION} : 0;
    char line[line_size];
    format_line(*midi, line);
    add_stream_line(out, stream, bounded_text(line));
    out.record->play_time = midi->seconds;
    write_notes(*midi, is_estimated, out);
    if (out.details != nullptr) {
        out.details->duration = stream.duration;
        out.details->estimated |= stream.estimated;
    }
}

} // namespace

int AnalyzeMidiFile(FileRecord* file, const Output& out) {
    MidiFile midi;
    reader_open(&midi.reader, file);
    reader_allow(&midi.reader, event_allowance);
    Span rest;
    const bool has_header = read_header(&midi, &rest);
    if (has_header) {
        read_tracks(&midi, rest);
        describe(&midi, out);
    }
    set_label(out.record, "%s", midi.is_riff ? "[RIFF(RMID)]" : "[MIDI]");
    write_artist_and_title(midi.texts, out);
    append_writer(out, bounded_text(midi.writer));
    if (out.details != nullptr) {
        copy_utf8(out.details->format_profile, midi.is_riff ? "RMID" : "");
    }
    note_work_limit(out, midi.reader);
    return has_header ? 0 : 1;
}

} // namespace zat
