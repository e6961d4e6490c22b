// The typed details of a track that is a stream.
#pragma once

#include "container/mp4/movie.h"
#include "container/mp4/sample_entry.h"
#include "zat/details.h"

namespace zat::mp4 {

// What the parts that describe a kind of stream work on.
struct TrackFacts {
    Reader* reader = nullptr;
    Track* track = nullptr;
    SampleEntry entry;
    uint32_t format = 0; // of the entry, that before encryption where it is encrypted
    EsBox es;
    double seconds = 0; // of the samples that are counted
    uint64_t claim = 0; // bit/s that a configuration tells
};

// The kind of stream that a track's handler announces.
ZatStreamKind stream_kind(const Track& track);

// Adds the track as a stream.
void describe_track(Reader* reader, const Movie& movie, Track* track, ZatDetails* details);

// Each sets codec and format, by the sample entry and the configurations in it.
void describe_video_track(TrackFacts* facts, ZatStream* stream);
void describe_audio_track(TrackFacts* facts, ZatStream* stream);
void describe_other_track(TrackFacts* facts, ZatStream* stream);

// Sets the codec by the object type or, without one that tells it, by the entry's format.
void set_track_codec(const TrackFacts& facts, ZatStream* stream);

// The scale and the duration of a movie's or a track's media header, both 0 when they are not told.
struct HeaderTime {
    uint32_t scale = 0; // units per second
    uint64_t duration = 0;
};

HeaderTime read_header_time(Reader* reader, Span header);

} // namespace zat::mp4
