#include "audio/midi/midi_track.h"

#include <algorithm>
#include <iterator>

namespace zat {

namespace {

constexpr uint8_t status_bit = 0x80;
constexpr uint8_t status_system = 0xF0;
constexpr uint8_t status_exclusive = 0xF0;
constexpr uint8_t status_escape = 0xF7;
constexpr uint8_t status_meta = 0xFF;

constexpr uint8_t meta_name = 0x03;
constexpr uint8_t meta_end = 0x2F;
constexpr uint8_t meta_tempo = 0x51;
constexpr uint32_t tempo_size = 3;

constexpr int most_quantity_bytes = 4;

// Data bytes of the channel messages 8x to Ex.
constexpr uint8_t message_sizes[] = {2, 2, 2, 2, 1, 1, 2};

// The bytes of a track one by one; at its end they are 0 and `ended` is set.
struct Cursor {
    Reader* reader;
    Span events;
    int64_t view_at = 0; // offset of the view
    Bytes view = {};
    size_t used = 0; // bytes of it
    bool ended = false;
};

bool load(Cursor* cursor) {
    cursor->view_at += static_cast<int64_t>(cursor->used);
    cursor->used = 0;
    cursor->view =
        read_view(cursor->reader, cursor->events, cursor->view_at, BlockReader::jump_size);
    cursor->ended = cursor->view.empty();
    return !cursor->ended;
}

uint8_t next_byte(Cursor* cursor) {
    if (cursor->used >= cursor->view.size() && !load(cursor)) {
        return 0;
    }
    return cursor->view[cursor->used++];
}

int64_t offset_of(const Cursor& cursor) {
    return cursor.view_at + static_cast<int64_t>(cursor.used);
}

void skip(Cursor* cursor, uint32_t count) {
    const size_t left = cursor->view.size() - cursor->used;
    if (count <= left) {
        cursor->used += count;
        return;
    }
    cursor->view_at = offset_of(*cursor) + count;
    cursor->view = {};
    cursor->used = 0;
}

// A number of seven bits a byte. False for one of more than four bytes, or that is cut off.
bool read_quantity(Cursor* cursor, uint32_t* value) {
    *value = 0;
    for (int i = 0; i < most_quantity_bytes; ++i) {
        const uint8_t byte = next_byte(cursor);
        *value = *value << 7 | (byte & 0x7FU);
        if ((byte & status_bit) == 0) {
            return !cursor->ended;
        }
    }
    return false;
}

void add_tempo(MidiTempoMap* tempos, const MidiTempo& tempo) {
    if (tempo.microseconds_per_quarter == 0) {
        return;
    }
    if (tempos->count == MidiTempoMap::limit) {
        tempos->is_full = true;
        return;
    }
    // Mostly behind all others.
    MidiTempo* end = tempos->changes + tempos->count;
    MidiTempo* place = end;
    while (place > tempos->changes && (place - 1)->tick > tempo.tick) {
        --place;
    }
    std::copy_backward(place, end, end + 1);
    *place = tempo;
    ++tempos->count;
}

enum class Next : uint8_t { event, end, damage };

Next read_meta(Cursor* cursor, MidiTempoMap* tempos, MidiTrack* track) {
    const uint8_t type = next_byte(cursor);
    uint32_t size = 0;
    if (!read_quantity(cursor, &size)) {
        return Next::damage;
    }
    if (type == meta_end) {
        return Next::end;
    }
    if (type == meta_tempo && size == tempo_size) {
        uint32_t tempo = 0;
        for (uint32_t i = 0; i < tempo_size; ++i) {
            tempo = tempo << 8 | next_byte(cursor);
        }
        if (cursor->ended) {
            return Next::damage;
        }
        add_tempo(tempos, {track->ticks, tempo});
        return Next::event;
    }
    if (type == meta_name && size_of(track->name) == 0) {
        track->name = sub_span(cursor->events, offset_of(*cursor), size);
    }
    skip(cursor, size);
    return Next::event;
}

// `running` is the status of the last channel message, which the next may leave out.
Next read_event(Cursor* cursor, uint8_t* running, MidiTempoMap* tempos, MidiTrack* track) {
    uint8_t status = next_byte(cursor);
    uint32_t read = 0;
    if ((status & status_bit) == 0) {
        status = *running;
        read = 1;
    }
    if (status == 0 || cursor->ended) {
        return Next::damage;
    }
    if (status < status_system) {
        *running = status;
        skip(cursor, message_sizes[(status >> 4) - 8] - read);
        return Next::event;
    }
    if (status == status_meta) {
        return read_meta(cursor, tempos, track);
    }
    uint32_t size = 0;
    if ((status != status_exclusive && status != status_escape) || !read_quantity(cursor, &size)) {
        return Next::damage;
    }
    skip(cursor, size);
    return Next::event;
}

} // namespace

void walk_midi_track(Reader* reader, Span events, MidiTempoMap* tempos, MidiTrack* track) {
    *track = {};
    Cursor cursor{.reader = reader, .events = events};
    uint8_t running = 0;
    Next next = Next::event;
    while (next == Next::event && offset_of(cursor) < size_of(events)) {
        uint32_t delta = 0;
        if (!read_quantity(&cursor, &delta)) {
            next = Next::damage;
            break;
        }
        const uint64_t ticks = uint64_t{track->ticks} + delta;
        track->ticks = static_cast<uint32_t>(std::min<uint64_t>(ticks, UINT32_MAX));
        next = read_event(&cursor, &running, tempos, track);
    }
    track->is_damaged = next == Next::damage || offset_of(cursor) > size_of(events);
}

double midi_seconds(const MidiTempoMap& tempos, uint32_t ticks, uint32_t ticks_per_quarter) {
    constexpr double microsecond = 1e6;
    uint64_t sum = 0; // of ticks times tempo: 2^56 at the most
    uint32_t tick = 0;
    uint32_t tempo = midi_default_tempo;
    for (size_t i = 0; i < tempos.count && tempos.changes[i].tick < ticks; ++i) {
        sum += uint64_t{tempos.changes[i].tick - tick} * tempo;
        tick = tempos.changes[i].tick;
        tempo = tempos.changes[i].microseconds_per_quarter;
    }
    sum += uint64_t{ticks - tick} * tempo;
    return static_cast<double>(sum) / ticks_per_quarter / microsecond;
}

} // namespace zat
