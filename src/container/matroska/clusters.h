// The blocks of a Matroska segment's clusters (RFC 9559, 5.1.3 and 10): their heads only, payload
// is stepped over.
#pragma once

#include "common/record/frame_timing.h"
#include "container/matroska/segment.h"

namespace zat::matroska {

// What a block's head tells.
struct BlockHead {
    uint64_t track = 0;
    int64_t time = 0; // relative to the cluster's
    int64_t duration = 0;
    uint32_t frames = 1;
    int64_t payload = 0; // bytes of all frames
    Span first_frame;
};

// Reads a simple block or a block group. False for other elements and for a block that is cut.
bool read_block(Reader* reader, const Element& element, BlockHead* head);

int64_t read_cluster_time(Reader* reader, const Element& element);

// Frame times are kept of the first video tracks that have no rate of their own.
constexpr uint32_t timed_tracks = 2;

struct ClusterWalk {
    uint32_t timed[timed_tracks]; // indices of tracks
    FrameTimes times[timed_tracks];
    uint32_t timed_count = 0;
    // Whether a walk of a part would tell something: rates or times that nothing else tells.
    bool wants_rates = false;
    uint64_t wants_frame = 0; // bits of the tracks whose first frame is looked for
    bool damaged = false;     // a cluster was not read to its end
};

// Looks at the clusters that begin near the first one, or at all for a thorough walk. When those
// are all there are, every block is counted and segment->counted set; else only as much is looked
// at as the wishes need.
void walk_clusters(Reader* reader, bool thorough, Segment* segment, ClusterWalk* walk);

// Seconds of a frame by the default duration; 0 without one that can be.
double frame_duration(const Track& track);

// Seconds between a counted track's first block and the end of its last one; 0 when it has less
// than two frames.
double counted_duration(const Segment& segment, const Track& track);

} // namespace zat::matroska
