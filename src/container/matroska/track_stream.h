// What the container tells of a track, whatever its codec, and the lines of tracks.
#pragma once

#include "common/record/extra_lines.h"
#include "common/record/output.h"
#include "container/matroska/clusters.h"
#include "container/matroska/codecs.h"

namespace zat::matroska {

// What all tracks are described from.
struct Source {
    Reader* reader = nullptr;
    const Segment* segment = nullptr;
    ClusterWalk* walk = nullptr;
    double duration = 0;          // seconds of the whole
    bool names_languages = false; // some track tells one
    Output out;
    ExtraLines* extra = nullptr;
};

// Facts of the track: names, flags, statistics and what was counted.
ZatStream track_stream(const Source& source, const Track& track, ZatStreamKind kind);

// The bit rate by the statistics, else by what was counted; 0 without them. Of the blocks that were
// looked at when that was a part only, and then marked as estimated.
void set_bit_rate(const Source& source, const Track& track, ZatStream* stream);

// Copies the private data, and the first frame, as far as `size` goes, with what header stripping
// took off put back. Empty when they are packed.
Bytes read_private(const Source& source, const Track& track, uint8_t* buffer, uint32_t size);
Bytes read_first_frame(const Source& source, const Track& track, uint8_t* buffer, uint32_t size);

// The first of the packets that Xiph lacing joins in the private data.
Bytes first_xiph_packet(Bytes packets);

// Whether the track is described by its first frame too.
bool wants_first_frame(const Track& track);

// Whether the track's rate is nowhere but in its blocks.
bool wants_counted_rate(const Track& track);

// The bit rate of an audio track, by whatever tells it; 0 when nothing does.
uint64_t known_audio_rate(const Source& source, const Track& track);

// Each adds a track's line and its details.
void add_video(const Source& source, uint32_t index);
void add_audio(const Source& source, uint32_t index);
void add_other(const Source& source, uint32_t index);

} // namespace zat::matroska
