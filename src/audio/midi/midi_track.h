// The events of a track of a standard MIDI file (MIDI Manufacturers Association, "Standard MIDI
// Files 1.0"), as far as the play time needs them.
#pragma once

#include "common/file/reader.h"

#include <cstddef>
#include <cstdint>

namespace zat {

// Microseconds per quarter note until a file sets a tempo.
constexpr uint32_t midi_default_tempo = 500'000;

struct MidiTempo {
    uint32_t tick; // from which it holds
    uint32_t microseconds_per_quarter;
};

// The changes of tempo of all tracks that play together, by time; of several at one time the last.
struct MidiTempoMap {
    static constexpr size_t limit = 2048;

    size_t count = 0;
    bool is_full = false; // there were more
    MidiTempo changes[limit];
};

struct MidiTrack {
    uint32_t ticks = 0;      // at its end
    bool is_damaged = false; // it ends with what is no event
    Span name;               // the first sequence or track name
};

// Walks the events up to the end of the track, and adds its changes of tempo.
void walk_midi_track(Reader* reader, Span events, MidiTempoMap* tempos, MidiTrack* track);

// Seconds from the beginning to a time, at a number of ticks per quarter note that is not 0.
double midi_seconds(const MidiTempoMap& tempos, uint32_t ticks, uint32_t ticks_per_quarter);

} // namespace zat
