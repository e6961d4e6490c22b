#include "container/mpeg_ts/timing.h"

#include <algorithm>

namespace zat::ts {

namespace {

constexpr uint32_t probe_count = 8;
static_assert(probe_count + 2 <= ClockChain::most); // with the head and the tail
constexpr int64_t probe_size = 256 << 10;
constexpr int64_t probed_size = 1 << 20; // for each probe, in smaller files

// The end of the file is read in parts, from the last one on, until it shows the clock and time
// stamps.
constexpr int64_t tail_parts[] = {256 << 10, 768 << 10, 1 << 20};

// What a stretch of the file shows of a program's time.
struct Stretch {
    Clock clock;
    bool has_stamp = false;
    double end = 0; // of the latest frame, in ticks of 90 kHz behind the first stamp of the head
};

struct Timeline {
    Analysis* analysis = nullptr;
    uint32_t program = 0;
    uint16_t pcr_pid = null_pid;
    bool has_stamps = false;
    bool takes_all = false; // of subtitles and data too, where there are no others
    int64_t base = 0;       // the stamp that the others are counted from
    int64_t start = 0;      // the first one, in ticks behind the base
    double end = 0;         // behind the last one's frame
};

bool counts(const Timeline* line, uint32_t stream) {
    const Stream& each = line->analysis->streams[stream];
    const ZatStreamKind kind = text_of(each.codec).kind;
    return each.program == line->program && line->analysis->units[stream].has_stamps &&
           (kind == ZAT_STREAM_VIDEO || kind == ZAT_STREAM_AUDIO || line->takes_all);
}

double frame_ticks(const Unit& unit) {
    return unit.frame_seconds > 0 ? unit.frame_seconds * static_cast<double>(clock_rate)
                                  : static_cast<double>(unit.step);
}

// The span of the head's time stamps.
void gather_stamps(Timeline* line) {
    const Analysis* analysis = line->analysis;
    for (uint32_t i = 0; i < analysis->stream_count; ++i) {
        if (!counts(line, i)) {
            continue;
        }
        const Unit& unit = analysis->units[i];
        if (!line->has_stamps) {
            line->has_stamps = true;
            line->base = unit.first_stamp;
            line->start = unit.lowest;
        }
        const int64_t offset = clock_distance(line->base, unit.first_stamp);
        line->start = std::min(line->start, offset + unit.lowest);
        const double end = static_cast<double>(offset + unit.highest) + frame_ticks(unit);
        line->end = std::max(line->end, end);
    }
}

const Clock* head_clock(const Timeline* line) {
    const uint16_t index = known_of(line->analysis, line->pcr_pid).clock;
    return index != 0 ? &line->analysis->clocks[index - 1] : nullptr;
}

// The program's clock, else the one with the most values.
void choose_clock(Timeline* line) {
    const Analysis* analysis = line->analysis;
    if (line->program < analysis->program_count) {
        line->pcr_pid = analysis->programs[line->program].pcr_pid;
    }
    if (head_clock(line) != nullptr) {
        return;
    }
    uint32_t most = 1;
    for (uint32_t i = 0; i < analysis->clock_count; ++i) {
        if (analysis->clocks[i].count > most) {
            most = analysis->clocks[i].count;
            line->pcr_pid = analysis->clocks[i].pid;
        }
    }
}

void take_stamp(const Timeline* line, const Packet& packet, Stretch* stretch) {
    const uint16_t stream = known_of(line->analysis, packet.pid).stream;
    PesHeader header;
    if (stream == 0 || !packet.starts_unit || packet.scrambling != 0 ||
        !counts(line, stream - 1U) || read_pes_header(&header, packet.payload) != 0 ||
        header.pts == no_clock) {
        return;
    }
    const int64_t from = line->base + line->start;
    const int64_t ticks = clock_elapsed(from % clock_modulus, header.pts) + line->start;
    const double frame = frame_ticks(line->analysis->units[stream - 1]);
    stretch->end = std::max(stretch->end, static_cast<double>(ticks - line->start) + frame);
    stretch->has_stamp = true;
}

// Counts the payload of a stream, for its rate.
void sample_payload(Analysis* analysis, const Packet& packet) {
    constexpr size_t header_size = 9; // of a PES packet, up to its own length
    const uint16_t stream = known_of(analysis, packet.pid).stream;
    if (stream == 0) {
        return;
    }
    size_t size = packet.payload.size();
    if (packet.starts_unit && size >= header_size) {
        size -= std::min(size, header_size + packet.payload[header_size - 1]);
    }
    analysis->units[stream - 1].sampled += size;
}

// Takes what the packets of a piece of the file tell; `ahead` as in file_bytes. Returns the bytes
// used.
int64_t scan(
    const Timeline* line, int64_t position, int64_t size, int64_t ahead, Stretch* stretch) {
    Analysis* analysis = line->analysis;
    const auto wanted = static_cast<uint32_t>(std::min<int64_t>(size, piece_size));
    PacketCursor cursor{file_bytes(analysis, position, wanted, ahead), analysis->layout.stride, 0};
    Packet packet;
    while (next_packet(&cursor, &packet)) {
        if (packet.damaged) {
            continue;
        }
        if (packet.pcr != no_pcr && packet.pid == line->pcr_pid) {
            add_pcr(&stretch->clock, packet.pcr,
                position + static_cast<int64_t>(cursor.position - cursor.stride));
        }
        if (packet.starts_unit && line->has_stamps) {
            take_stamp(line, packet, stretch);
        }
        sample_payload(analysis, packet);
    }
    analysis->sampled += static_cast<int64_t>(cursor.position - cursor.lost);
    return static_cast<int64_t>(cursor.position);
}

void scan_all(const Timeline* line, int64_t start, int64_t end, Stretch* stretch) {
    while (start + packet_size <= end) {
        const int64_t used = scan(line, start, end - start, end - start, stretch);
        if (used == 0) {
            return;
        }
        start += used;
    }
}

// The last clock and the highest stamp of the file.
void read_tail(const Timeline* line, Stretch* tail) {
    Analysis* analysis = line->analysis;
    int64_t end = analysis->file_size;
    for (const int64_t size : tail_parts) {
        const int64_t start = std::max(end - size, analysis->head_end);
        if (start >= end) {
            return;
        }
        Stretch part;
        scan_all(line, start, end, &part);
        if (part.has_stamp && !tail->has_stamp) {
            tail->has_stamp = true;
            tail->end = part.end;
        }
        if (tail->clock.count < 2 && part.clock.count > 0) {
            tail->clock = part.clock;
        }
        const bool has_clock = tail->clock.count > 0 || head_clock(line) == nullptr;
        if (has_clock && (tail->has_stamp || !line->has_stamps)) {
            return;
        }
        end = start;
    }
}

// How many bytes a probe reads at first: two steps of the clock, as they are in the head.
int64_t usual_probe(const Clock& clock) {
    const int64_t steps = std::max<int64_t>(int64_t{clock.count} - 1, 1);
    return 2 * (clock.last_position - clock.first_position) / steps;
}

void read_probe(const Timeline* line, int64_t position, int64_t usual, Stretch* probe) {
    const int64_t end = position + probe_size;
    while (position < end && probe->clock.count < 2) {
        const int64_t ahead = std::min(usual, end - position);
        const int64_t used = scan(line, position, end - position, ahead, probe);
        if (used == 0) {
            return;
        }
        position += used;
    }
}

// The clock's time for all of the file: its part behind the last value is taken to go on at the
// mean pace.
double clock_time(const Timeline* line, const ClockSum& sum) {
    const Layout& layout = line->analysis->layout;
    if (sum.bytes <= 0) {
        return 0;
    }
    const double covered = sum.bytes + layout.stride;
    const auto size = static_cast<double>(line->analysis->file_size - layout.offset);
    return sum.ticks / static_cast<double>(pcr_rate) * std::max(size / covered, 1.0);
}

// Whether the clock and time stamps went back, as they do where a recording ends and one that began
// earlier or at the same time is joined. A clock that jumps alone is damage.
bool goes_back(const Timeline* line) {
    const Clock* clock = head_clock(line);
    if (clock == nullptr || !clock->jumps) {
        return false;
    }
    for (uint32_t i = 0; i < line->analysis->stream_count; ++i) {
        if (counts(line, i) && line->analysis->units[i].stamps_return) {
            return true;
        }
    }
    return false;
}

// A file that was read whole shows its joints itself.
PlayTime whole_file_time(const Timeline* line) {
    const Analysis* analysis = line->analysis;
    PlayTime time;
    for (uint32_t i = 0; i < analysis->stream_count; ++i) {
        const Unit& unit = analysis->units[i];
        if (counts(line, i) && unit.stamps_jump) {
            const auto ticks = static_cast<double>(unit.earlier + unit.highest - unit.lowest);
            time.joined = true;
            time.seconds = std::max(
                time.seconds, (ticks + frame_ticks(unit)) / static_cast<double>(clock_rate));
        }
    }
    if (time.joined) {
        return time;
    }
    if (line->has_stamps && !goes_back(line)) {
        time.seconds =
            (line->end - static_cast<double>(line->start)) / static_cast<double>(clock_rate);
        return time;
    }
    if (const Clock* clock = head_clock(line)) {
        ClockSum sum;
        ClockChain chain;
        add_link(&chain, *clock);
        time.joined = !add_up(chain, &sum);
        time.seconds = clock_time(line, sum);
    }
    return time;
}

bool stamps_jump(const Timeline* line) {
    for (uint32_t i = 0; i < line->analysis->stream_count; ++i) {
        if (counts(line, i) && line->analysis->units[i].stamps_jump) {
            return true;
        }
    }
    return false;
}

void add_probes(const Timeline* line, const Clock& clock, int64_t end, ClockChain* chain) {
    const int64_t start = line->analysis->head_end;
    const int64_t gap = end - start;
    const auto count =
        static_cast<uint32_t>(std::clamp<int64_t>(gap / probed_size, 0, probe_count));
    const int64_t usual = usual_probe(clock);
    for (uint32_t i = 1; i <= count; ++i) {
        Stretch probe;
        read_probe(line, start + gap / (count + 1) * i, usual, &probe);
        add_link(chain, probe.clock);
    }
}

PlayTime probed_time(const Timeline* line) {
    constexpr double farthest = 10; // seconds between the two ways
    Stretch tail;
    read_tail(line, &tail);
    ClockChain chain;
    bool holds = !stamps_jump(line);
    ClockSum sum;
    if (const Clock* clock = head_clock(line)) {
        add_link(&chain, *clock);
        add_probes(line, *clock, line->analysis->file_size - probe_size, &chain);
        add_link(&chain, tail.clock);
        holds = add_up(chain, &sum) && holds;
    }
    PlayTime time;
    if (!holds) {
        time.joined = true;
        const double all = sum.bytes > 0 ? sum.ticks * (1 + sum.loose_bytes / sum.bytes) : 0;
        sum = {all, sum.bytes + sum.loose_bytes, 0};
        time.seconds = clock_time(line, sum);
        return time;
    }
    time.seconds = clock_time(line, sum);
    if (tail.has_stamp && tail.end < static_cast<double>(clock_modulus) / 2) {
        const double stamped = tail.end / static_cast<double>(clock_rate);
        const bool agree = time.seconds == 0 ||
                           (stamped < time.seconds + farthest && stamped > time.seconds - farthest);
        time.seconds = agree ? stamped : time.seconds;
    }
    return time;
}

} // namespace

PlayTime measure_play_time(Analysis* analysis, uint32_t program) {
    Timeline line;
    line.analysis = analysis;
    line.program = program;
    choose_clock(&line);
    if (program < program_slots) {
        gather_stamps(&line);
        if (!line.has_stamps) {
            line.takes_all = true;
            gather_stamps(&line);
        }
    }
    return analysis->whole_file ? whole_file_time(&line) : probed_time(&line);
}

} // namespace zat::ts
