// The PES packets of the streams: their time stamps, and the part of their payload that tells what
// they are.
#include "container/mpeg_ts/analysis.h"

#include "common/bytes/start_code.h"
#include "container/mpeg_ts/describe.h"

#include <algorithm>
#include <cstring>

namespace zat::ts {

namespace {

constexpr uint8_t most_false_headers = 16; // then the stream is given up
constexpr int64_t joint = 60 * clock_rate; // time stamps of one recording lie closer
constexpr int64_t reordering = clock_rate; // frames stand this far behind their order at most

void keep_stamp(Analysis* analysis, Unit* unit, int64_t ticks) {
    if (unit->stamps == 0 && analysis->stamped_count < stamped_units) {
        unit->stamps = ++analysis->stamped_count;
    }
    if (unit->stamps != 0 && unit->stamp_count < stamp_slots) {
        analysis->stamps[unit->stamps - 1][unit->stamp_count] = ticks;
    }
    ++unit->stamp_count;
}

void take_stamp(Analysis* analysis, const Stream& stream, Unit* unit, int64_t pts) {
    if (pts == no_clock) {
        return;
    }
    if (!unit->has_stamps) {
        unit->has_stamps = true;
        unit->first_stamp = pts;
    }
    // Counted from the one before, so that a wrap of the clock is none.
    const int64_t step = clock_distance(unit->first_stamp + unit->latest, pts);
    unit->latest += step;
    unit->stamps_return = unit->stamps_return || step < -reordering;
    if (step > joint || step < -joint) {
        unit->stamps_jump = true;
        unit->earlier += unit->highest - unit->lowest + unit->step;
        unit->lowest = unit->latest;
        unit->highest = unit->latest;
    }
    unit->step = step > 0 && (unit->step == 0 || step < unit->step) ? step : unit->step;
    unit->lowest = std::min(unit->lowest, unit->latest);
    unit->highest = std::max(unit->highest, unit->latest);
    if (text_of(stream.codec).kind == ZAT_STREAM_VIDEO) {
        keep_stamp(analysis, unit, unit->latest);
    }
}

// Whether more frames than the first one tell something: of these codecs a mean is shown, or the
// part that tells them comes now and then.
bool counts_frames(Codec codec) {
    switch (codec) {
    case Codec::aac:
    case Codec::eac3:
    case Codec::truehd:
    case Codec::dts_hd_hra:
    case Codec::dts_hd_ma:
    case Codec::dts:
        return true;
    default:
        return false;
    }
}

// Room in the pool.
void reserve_capture(Analysis* analysis, const Stream& stream, Unit* unit) {
    const ZatStreamKind kind = text_of(stream.codec).kind;
    uint32_t size = 0;
    if (kind == ZAT_STREAM_VIDEO) {
        size = video_capture;
    } else if (kind == ZAT_STREAM_AUDIO) {
        const bool is_large =
            counts_frames(stream.codec) && analysis->capture_count++ < first_captures;
        size = is_large ? audio_capture : small_capture;
    }
    unit->capture = analysis->pool_used;
    unit->capacity = std::min(size, capture_pool - analysis->pool_used);
    analysis->pool_used += unit->capacity;
    unit->capture_closed = unit->capacity == 0;
}

void append(Analysis* analysis, Unit* unit, Bytes data) {
    const size_t count = std::min<size_t>(data.size(), unit->capacity - unit->captured);
    std::memcpy(analysis->pool + unit->capture + unit->captured, data.data(), count);
    unit->captured += static_cast<uint32_t>(count);
}

// Where in the edge before a piece and the piece itself a wanted header begins: positions from -3
// on; the piece's size when nowhere.
int64_t find_header(Codec codec, const uint8_t (&edge)[3], Bytes data) {
    uint8_t joined[6];
    std::memcpy(joined, edge, sizeof edge);
    const size_t first = std::min<size_t>(data.size(), sizeof edge);
    std::memcpy(joined + sizeof edge, data.data(), first);
    const Bytes start(joined, sizeof edge + first);
    for (int64_t at = find_start_code(start, 0); at >= 0 && at < 3;
         at = find_start_code(start, static_cast<size_t>(at) + 1)) {
        if (begins_header(codec, start[static_cast<size_t>(at) + 3])) {
            return at - 3;
        }
    }
    for (int64_t at = find_start_code(data, 0); at >= 0;
         at = find_start_code(data, static_cast<size_t>(at) + 1)) {
        if (begins_header(codec, data[static_cast<size_t>(at) + 3])) {
            return at;
        }
    }
    return static_cast<int64_t>(data.size());
}

void keep_edge(Unit* unit, Bytes data) {
    for (const uint8_t byte : data.subspan(data.size() - std::min<size_t>(data.size(), 3))) {
        std::memmove(unit->edge, unit->edge + 1, 2);
        unit->edge[2] = byte;
    }
}

void capture_video(Analysis* analysis, const Stream& stream, Unit* unit, Bytes data) {
    if (unit->captured == 0) {
        const int64_t at = find_header(stream.codec, unit->edge, data);
        if (at < 0) {
            append(analysis, unit, Bytes(unit->edge).last(static_cast<size_t>(-at)));
        }
        if (at == static_cast<int64_t>(data.size())) {
            keep_edge(unit, data);
            return;
        }
        data = data.subspan(static_cast<size_t>(std::max<int64_t>(at, 0)));
    }
    append(analysis, unit, data);
}

// A look on the way, or the last one, when no more of a capture will come.
enum class Look : uint8_t { early, last };

// Looks whether the captured bytes tell what the stream is. The last look at a video header that
// turns out to be none makes way for the next one.
void judge_capture(Analysis* analysis, const Stream& stream, Unit* unit, Look look) {
    if (unit->captured == 0 || unit->described) {
        return;
    }
    unit->judged = unit->captured;
    unit->described = is_described(stream, captured_bytes(analysis, *unit), &unit->wants_stamps);
    if (text_of(stream.codec).kind != ZAT_STREAM_VIDEO || look != Look::last) {
        return;
    }
    if (unit->described) {
        unit->capture_closed = true;
    } else {
        unit->captured = 0;
        unit->judged = 0;
        std::memset(unit->edge, 0xFF, sizeof unit->edge);
        unit->capture_closed = ++unit->false_headers == most_false_headers;
    }
}

void take_payload(Analysis* analysis, const Stream& stream, Unit* unit, Bytes data) {
    const size_t header = std::min<size_t>(unit->header_left, data.size());
    unit->header_left -= static_cast<uint32_t>(header);
    data = data.subspan(header);
    unit->payload += data.size();
    if (data.empty() || unit->capture_closed) {
        return;
    }
    if (unit->capacity == 0) {
        reserve_capture(analysis, stream, unit);
        std::memset(unit->edge, 0xFF, sizeof unit->edge);
    }
    if (text_of(stream.codec).kind == ZAT_STREAM_VIDEO) {
        capture_video(analysis, stream, unit, data);
    } else {
        append(analysis, unit, data);
    }
    if (unit->captured == unit->capacity) {
        judge_capture(analysis, stream, unit, Look::last);
        // Else a false header was thrown away.
        unit->capture_closed = unit->capture_closed || unit->captured == unit->capacity;
    }
}

void begin_packet(Analysis* analysis, const Stream& stream, Unit* unit, Bytes payload) {
    PesHeader header;
    unit->in_packet = read_pes_header(&header, payload) == 0;
    if (!unit->in_packet) {
        return;
    }
    if (!unit->was_read &&
        !(has_video_describer(stream.codec) || has_audio_describer(stream.codec))) {
        unit->described = true;
        unit->capture_closed = true;
    }
    unit->was_read = true;
    unit->stream_id = header.stream_id;
    unit->encrypted = unit->encrypted || header.scrambling != 0;
    unit->header_left = static_cast<uint32_t>(header.payload);
    take_stamp(analysis, stream, unit, header.pts);
}

// What follows a loss does not continue what came before it: enough of it stays, less is dropped.
void lose_packet(Unit* unit, bool is_audio) {
    constexpr uint32_t enough = 4096;
    unit->in_packet = false;
    const bool keeps = unit->described || (is_audio && unit->captured >= enough);
    if (keeps) {
        unit->capture_closed = true;
    } else if (!unit->capture_closed) {
        unit->captured = 0;
        unit->judged = 0;
    }
}

} // namespace

void feed_unit(Analysis* analysis, uint32_t index, const Packet& packet, bool lost) {
    const Stream& stream = analysis->streams[index];
    Unit* unit = &analysis->units[index];
    if (lost) {
        lose_packet(unit, text_of(stream.codec).kind == ZAT_STREAM_AUDIO);
    }
    if (packet.starts_unit) {
        if (text_of(stream.codec).kind == ZAT_STREAM_VIDEO && !unit->capture_closed) {
            judge_capture(analysis, stream, unit, Look::last);
        }
        begin_packet(analysis, stream, unit, packet.payload);
    }
    if (unit->in_packet && !unit->encrypted) {
        take_payload(analysis, stream, unit, packet.payload);
    }
}

void judge_units(Analysis* analysis) {
    for (uint32_t i = 0; i < analysis->stream_count; ++i) {
        Unit* unit = &analysis->units[i];
        if (unit->captured >= unit->judged * 2) { // else little can have changed
            judge_capture(analysis, analysis->streams[i], unit, Look::early);
        }
    }
}

} // namespace zat::ts
