#include "container/matroska/live.h"

#include "common/bytes/numbers.h"
#include "common/file/file_window.h"
#include "container/matroska/clusters.h"
#include "container/matroska/ids.h"
#include "container/matroska/levels.h"

#include <algorithm>
#include <limits>

namespace zat::matroska {

namespace {

constexpr int64_t search_step = 256 << 10;
constexpr int64_t search_limit = 8 << 20;
constexpr uint32_t cluster_id_size = 4;

// In units of the timestamp scale.
struct Times {
    int64_t first = std::numeric_limits<int64_t>::max();
    int64_t end = std::numeric_limits<int64_t>::min();
};

// A frame's duration in units of the scale.
int64_t default_step(const Segment& segment, uint64_t track_number) {
    const Track* end = segment.tracks + kept_tracks(segment);
    const Track* track = std::find_if(
        segment.tracks, end, [=](const Track& each) { return each.number == track_number; });
    const double step = track != end ? frame_duration(*track) : 0;
    return clamp_to_integer<int64_t>(
        step * 1e9 / static_cast<double>(segment.timestamp_scale) + 0.5);
}

void add_cluster(Reader* reader, const Segment& segment, const Element& cluster, Times* times) {
    int64_t time = 0;
    BlockHead head;
    ElementCursor cursor = children_of(cluster.data);
    Element element;
    while (next_element(reader, &cursor, &element)) {
        if (cluster.unknown_size && is_level1(element.id)) {
            return;
        }
        if (element.id == id_timestamp) {
            time = read_cluster_time(reader, element);
        } else if (read_block(reader, element, &head)) {
            const int64_t start = time + head.time;
            const int64_t length =
                head.duration != 0 ? head.duration : default_step(segment, head.track);
            times->first = std::min(times->first, start);
            times->end = std::max(times->end, start + length);
        }
    }
}

// Whether a cluster starts here and not bytes that look like one.
bool read_cluster_at(Reader* reader, const Segment& segment, int64_t position, Element* cluster) {
    ElementCursor cursor = {segment.span, position};
    Element child;
    if (!next_element(reader, &cursor, cluster) || cluster->id != id_cluster) {
        return false;
    }
    ElementCursor inner = children_of(cluster->data);
    return next_element(reader, &inner, &child) &&
           (child.id == id_timestamp || child.id == id_position || child.id == id_prev_size);
}

// The last cluster, searched for from the end.
bool find_last_cluster(Reader* reader, const Segment& segment, Element* cluster) {
    const int64_t limit = std::max(segment.first_cluster, segment.span.end - search_limit);
    FileWindow window;
    window_open(&window, reader->block.file, limit, search_step + cluster_id_size);
    for (int64_t end = segment.span.end; end > limit; end -= search_step) {
        const int64_t start = std::max(limit, end - search_step);
        window_move(&window, start);
        window_load_all(&window);
        const Bytes bytes = window_bytes(&window);
        bool found = false;
        for (int64_t at = find_byte_pair(bytes, 0, 0x1F, 0x43); at >= 0;
             at = find_byte_pair(bytes, static_cast<size_t>(at) + 1, 0x1F, 0x43)) {
            Element candidate;
            if (has_at(bytes, static_cast<size_t>(at), "\x1F\x43\xB6\x75") &&
                read_cluster_at(reader, segment, start + at, &candidate)) {
                *cluster = candidate;
                found = true;
            }
        }
        if (found) {
            return true;
        }
    }
    return false;
}

// The last time of the cues, where no cluster's own can be found.
int64_t last_cue_time(Reader* reader, const Segment& segment) {
    int64_t last = std::numeric_limits<int64_t>::min();
    ElementCursor cursor = {segment.span, segment.cues};
    Element cues;
    if (segment.cues < 0 || !next_element(reader, &cursor, &cues) || cues.id != id_cues) {
        return last;
    }
    ElementCursor points = children_of(cues.data);
    Element point;
    while (next_element(reader, &points, &point)) {
        ElementCursor parts = children_of(point.data);
        Element part;
        while (point.id == id_cue_point && next_element(reader, &parts, &part)) {
            if (part.id == id_cue_time) {
                last = std::max(last, read_cluster_time(reader, part));
            }
        }
    }
    return last;
}

// What was counted: no cluster needs another look.
Times counted_times(const Segment& segment) {
    Times times;
    for (uint32_t i = 0; i < kept_tracks(segment); ++i) {
        const BlockCounts& counts = segment.tracks[i].counts;
        if (counts.blocks != 0) {
            const int64_t end = counts.last_time + default_step(segment, segment.tracks[i].number);
            times.first = std::min(times.first, counts.first_time);
            times.end = std::max({times.end, end, counts.last_end});
        }
    }
    return times;
}

double seconds_between(const Segment& segment, const Times& times) {
    return times.end > times.first ? seconds_of(segment, static_cast<double>(times.end) -
                                                             static_cast<double>(times.first))
                                   : 0;
}

} // namespace

double measured_duration(Reader* reader, const Segment& segment) {
    if (segment.counted) {
        return seconds_between(segment, counted_times(segment));
    }
    Times times;
    ElementCursor cursor = {segment.span, segment.first_cluster};
    Element first;
    Element last;
    if (segment.first_cluster < 0 || !next_element(reader, &cursor, &first)) {
        return 0;
    }
    add_cluster(reader, segment, first, &times);
    if (find_last_cluster(reader, segment, &last)) {
        if (last.start != first.start) {
            add_cluster(reader, segment, last, &times);
        }
    } else if (first.data.end < segment.span.end - search_limit) {
        times.end = last_cue_time(reader, segment);
    }
    return seconds_between(segment, times);
}

} // namespace zat::matroska
