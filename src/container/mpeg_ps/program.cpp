#include "container/mpeg_ps/program.h"

#include "common/file/file_access.h"
#include "common/record/output.h"
#include "common/record/stream_lines.h"
#include "container/mpeg_ps/describe.h"
#include "container/mpeg_ps/walk.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace zat::ps {

namespace {

// Steps of the search for the clocks at the end, and the longest look for some between.
constexpr int64_t tail_sizes[] = {262'144, 1'048'576, 2'097'152};
constexpr int64_t probe_size = 262'144;
constexpr int32_t probes_between = 14;

// All of this is looked at, be it a program's packets or bare video.
constexpr uint32_t first_read = 135'168;

// Bytes of a stream that are searched for its headers. A video that was cut may be far from the
// next one; audio has a header in every frame.
constexpr uint64_t video_search_limit = 1'048'576;
constexpr uint64_t audio_search_limit = 262'144;

// Whether the pictures of a video that tells no frame rate are counted still.
bool is_counting(const Stream& stream) {
    constexpr int64_t most_fields = int64_t{FrameTimes::most} * 2;
    return stream.form == Form::generic_video && stream.facts.frame_rate == 0 &&
           stream.pictures != nullptr && stream.pictures->count_unit != nullptr &&
           stream.pictures->count.coded_fields < most_fields;
}

bool wants_payload(const Stream& stream) {
    return is_shown(stream) && (stream.form == Form::unknown || is_counting(stream)) &&
           stream.searched < (stream.kind == Kind::video ? video_search_limit : audio_search_limit);
}

void count_collected(Stream* stream, Follows follows) {
    const Bytes collected{stream->collect, stream->collected};
    const size_t done = count_stretch(stream->pictures, collected, 0, follows);
    stream->collected -= static_cast<uint32_t>(done);
    std::memmove(stream->collect, stream->collect + done, stream->collected);
    stream->counted_stamps = stream->times.count;
}

bool describe(Stream* stream, Follows follows) {
    const bool described = describe_stream(stream, follows);
    if (described && stream->form == Form::generic_video) {
        drop_nonsense(&stream->facts); // of the frame rate
        if (stream->pictures != nullptr) {
            start_count(stream->pictures, *stream);
        }
    }
    return described;
}

// Describes the stream once enough is collected: what little has come since the last attempt is
// waited for.
void attempt(Stream* stream) {
    constexpr uint32_t patience = 1024;
    const bool full = stream->collected == Stream::collect_size;
    if (stream->collected < stream->next_attempt && !full) {
        return;
    }
    stream->next_attempt = stream->collected + std::max(patience, stream->collected / 2);
    if (!describe(stream, Follows::more) && full) {
        constexpr uint32_t kept = 2048; // headers that the buffer's end cut
        std::memmove(stream->collect, stream->collect + Stream::collect_size - kept, kept);
        stream->collected = kept;
        stream->next_attempt = Stream::collect_size;
    }
}

void take_pack(Program* program, const Unit& unit, ClockTrack* clocks) {
    if (!unit.in_order) {
        return; // a start code in other data may look like one
    }
    if (!program->any_pack) {
        program->any_pack = true;
        program->mpeg2 = unit.pack.mpeg2;
        program->byte_rate = unit.pack.byte_rate;
    }
    add_clock(clocks, {unit.position, unit.pack.clock});
}

void take_head_packet(Program* program, const Unit& unit) {
    if (unit.code == id_program_stream_map) {
        StreamMap map;
        if (read_stream_map(&map, unit.head) == 0) {
            declare_streams(&program->table, map);
        }
        return;
    }
    Payload payload;
    if (!find_payload(&program->table, unit, &payload)) {
        return;
    }
    Stream* stream = stream_of(&program->table, payload);
    if (stream == nullptr) {
        return;
    }
    payload.end = std::min(payload.end, program->source.size);
    ++stream->packets;
    stream->timed_packets += stream->times.count < FrameTimes::most ? 1 : 0;
    const int64_t start = payload.start + (payload.kind == Kind::lpcm ? lpcm_header_size : 0);
    stream->bytes += static_cast<uint64_t>(std::max<int64_t>(payload.end - start, 0));
    if (unit.packet.pts != no_clock) {
        add_stamp(&stream->head, unit.packet.pts);
        if (stream->kind == Kind::video && stream->head.doubtful == no_clock) {
            add_frame_time(&stream->times, stream->head.last);
        }
    }
    if (unit.packet.scrambling != 0) {
        stream->facts.flags |= ZAT_FLAG_ENCRYPTED;
    } else {
        collect_payload(&program->source, stream, payload);
    }
}

// Whether each frame has its stamp: of several that begin in one packet only the first has one.
// Where none can be counted and most packets have a stamp, that is not known.
bool stamps_all_frames(const Stream& stream) {
    const int64_t frames = stream.pictures->count.coded_fields / 2;
    return frames > 1 ? frames * 4 <= int64_t{stream.counted_stamps} * 5
                      : stream.timed_packets * 2 >= stream.times.count * 3;
}

// The frame rate of a video whose headers tell none.
void measure_rate(Stream* stream) {
    if (stream->form != Form::generic_video || stream->facts.frame_rate != 0) {
        return;
    }
    FrameTimes* times = &stream->pictures->count.times;
    if (times->count > 2) { // of two, pictures that are shown between them may be missing
        measure_picture_rate(stream, times);
    }
    if (stream->facts.frame_rate == 0 && stamps_all_frames(*stream)) {
        measure_frame_rate(&stream->facts, &stream->times, clock_seconds(1));
    }
    stream->frame_seconds = stream->facts.frame_rate > 0 ? 1 / stream->facts.frame_rate : 0;
}

// Some writers' clocks step back where they put off a stream: no recording begins there when the
// time stamps of none go back as far. Returns how far the clocks go.
int64_t unrest_of(const StreamTable& table, const ClockTrack& clocks) {
    bool stamped = false;
    int64_t step_back = 0;
    for (size_t i = 0; i < table.count; ++i) {
        const Stream& stream = table.streams[i];
        if (is_shown(stream)) {
            stamped = stamped || has_stamps(stream.head);
            step_back = std::max(step_back, stream.head.step_back);
        }
    }
    return stamped && step_back < clocks.jump_back / 2 ? clocks.jump_back : 0;
}

void walk_head(Program* program, int64_t from, int64_t to, Begin begin) {
    // No packet is longer than 64 KiB: where none begins in much more than that there are none.
    constexpr int64_t start_limit = 131'072;
    Walk walk;
    walk_start(&walk, &program->source, from,
        begin == Begin::at_unit ? to : std::min(to, from + start_limit), begin);
    ClockTrack clocks;
    Unit unit;
    while (next_unit(&walk, &unit)) {
        if (program->stream_at < 0) {
            program->stream_at = unit.position;
            walk.end = std::min(to, program->source.size);
        }
        if (unit.code == id_pack) {
            take_pack(program, unit, &clocks);
        } else if (unit.code > id_system_header) {
            take_head_packet(program, unit);
        }
    }
    program->damaged = walk.damaged;
    if (has_clock(clocks)) {
        program->clocks.unrest = unrest_of(program->table, clocks);
        program->clocks.tracks[program->clocks.count++] = clocks;
    }
    for (size_t i = 0; i < program->table.count; ++i) {
        Stream* stream = &program->table.streams[i];
        if (stream->form == Form::unknown && wants_payload(*stream) && stream->collected > 0) {
            describe(stream, Follows::nothing);
        }
        if (is_counting(*stream)) {
            count_collected(stream, Follows::nothing);
        }
        measure_rate(stream);
    }
}

// Walks a stretch at the end for its clocks and the last time stamps. Returns whether both were
// found.
bool walk_tail(Program* program, int64_t from, ClockTrack* clocks) {
    for (size_t i = 0; i < program->table.count; ++i) {
        program->table.streams[i].tail = {};
    }
    *clocks = {};
    bool any_stamp = false;
    bool video_stamp = false;
    bool any_video = false;
    source_read_ahead(&program->source, from, Program::block_size);
    Walk walk;
    walk_start(&walk, &program->source, from, program->source.size, Begin::anywhere);
    Unit unit;
    while (next_unit(&walk, &unit)) {
        if (unit.code == id_pack) {
            take_pack(program, unit, clocks);
            continue;
        }
        Payload payload;
        if (unit.code < id_system_header || unit.packet.pts == no_clock ||
            !find_payload(&program->table, unit, &payload)) {
            continue;
        }
        Stream* stream = known_stream(&program->table, payload);
        if (stream != nullptr && is_shown(*stream)) {
            add_stamp(&stream->tail, unit.packet.pts);
            any_stamp = true;
        }
    }
    for (size_t i = 0; i < program->table.count; ++i) {
        const Stream& stream = program->table.streams[i];
        any_video = any_video || stream.kind == Kind::video;
        video_stamp = video_stamp || (stream.kind == Kind::video && has_stamps(stream.tail));
    }
    return (has_clock(*clocks) || !program->any_pack) && (any_video ? video_stamp : any_stamp);
}

// The clocks of a stretch between head and tail: all of them, or the first ones that agree.
void probe(Program* program, int64_t from, bool all) {
    constexpr uint32_t usual_probe = 16'384; // of packs of 2 KiB, as they mostly are
    source_read_ahead(&program->source, from, usual_probe);
    Walk walk;
    walk_start(&walk, &program->source, from, from + probe_size, Begin::anywhere);
    ClockTrack clocks;
    Unit unit;
    while ((all || clocks.steps == 0) && next_unit(&walk, &unit)) {
        if (unit.code == id_pack) {
            take_pack(program, unit, &clocks);
        }
    }
    if (clocks.steps > 0) {
        program->clocks.tracks[program->clocks.count++] = clocks;
    }
}

void read_rest(Program* program, int64_t head_end) {
    const int64_t size = program->source.size;
    ClockTrack tail;
    int64_t tail_start = size;
    for (const int64_t tail_size : tail_sizes) {
        tail_start = std::max(head_end, size - tail_size);
        if (walk_tail(program, tail_start, &tail) || tail_start == head_end) {
            break;
        }
    }
    // Whether anything was joined shows soon; how long its parts are takes more.
    ClockProbes* clocks = &program->clocks;
    const int32_t head_count = clocks->count;
    for (const bool all : {false, true}) {
        clocks->count = head_count;
        const int64_t step = (tail_start - head_end) / (probes_between + 1);
        for (int32_t i = 1; i <= probes_between && step >= probe_size; ++i) {
            probe(program, head_end + i * step, all);
        }
        if (has_clock(tail)) {
            clocks->tracks[clocks->count++] = tail;
        }
        if (!clock_time(*clocks, size, program->byte_rate).joined) {
            return;
        }
    }
}

} // namespace

Program* start_program(const WorkMemory& memory, FileRecord* file) {
    if (memory.bytes == nullptr) {
        return nullptr;
    }
    // The large tables behind are left alone: their entries are cleared when they come into use.
    std::memset(memory.bytes, 0, offsetof(Program, source));
    auto* program = reinterpret_cast<Program*>(memory.bytes);
    program->stream_at = -1;
    program->clocks.count = 0;
    program->clocks.unrest = 0;
    program->table.count = 0;
    program->table.plain_ac3 = false;
    reader_open(&program->reader, file);
    block_enlarge(&program->reader.block, program->block, sizeof program->block);
    return program;
}

void collect_payload(Source* source, Stream* stream, const Payload& payload) {
    int64_t position = payload.start;
    while (position < payload.end && wants_payload(*stream)) {
        const auto count = static_cast<uint32_t>(
            std::min<int64_t>(Stream::collect_size - stream->collected, payload.end - position));
        const uint32_t read =
            source_read(source, position, stream->collect + stream->collected, count);
        if (read == 0) {
            return;
        }
        position += read;
        stream->collected += read;
        stream->searched += read;
        if (stream->form == Form::unknown) {
            attempt(stream);
        }
        if (is_counting(*stream)) {
            count_collected(stream, Follows::more);
        }
    }
}

uint32_t read_program(Program* program, const InfoRecord& record, int64_t from) {
    const int64_t size = program->source.size;
    const int64_t rest = std::max<int64_t>(size - from, 0);
    const auto budget = static_cast<uint32_t>(
        std::min<int64_t>(std::max(record.scan_budget, least_scan_budget), rest));
    const bool all = (record.options & (option_thorough | option_check)) != 0;
    const int64_t head_end = all ? size : from + budget;
    // Headers of a dozen bytes behind one another are more than any true stream has.
    reader_allow(
        &program->reader, {400'000 + (all ? size / 2 : 0), (16LL << 20) + (all ? size * 8 : 0)});
    source_read_ahead(&program->source, from, first_read);
    PackHeader pack;
    const Bytes start = source_view(&program->source, from, pack_header_limit);
    walk_head(program, from, head_end,
        read_pack_header(&pack, start) == 0 ? Begin::at_unit : Begin::anywhere);
    program->walked = head_end - from;
    program->whole = head_end >= size;
    if (!program->whole && program->stream_at >= 0) {
        read_rest(program, head_end);
    }
    sort_streams(&program->table);
    return budget;
}

} // namespace zat::ps
