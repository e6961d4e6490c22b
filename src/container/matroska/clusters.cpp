#include "container/matroska/clusters.h"

#include "common/bytes/bits.h"
#include "container/matroska/ids.h"
#include "container/matroska/levels.h"

#include <algorithm>
#include <limits>

namespace zat::matroska {

namespace {

constexpr int64_t near_size = 4 << 20; // of the first cluster: the ones that begin in it are read
// A part's blocks are near each other; laces make their heads long.
constexpr Allowance part_allowance = {500'000, 8 << 20};
constexpr Allowance thorough_allowance = {1 << 24, 1LL << 32};
constexpr uint32_t clusters_searched = 4; // for first frames
// Lacing bits of a block's flags.
enum Lacing : uint8_t { lacing_none = 0, lacing_xiph = 2, lacing_fixed = 4, lacing_ebml = 6 };

// Takes the sizes of a Xiph lace off the front. Returns the first one.
uint64_t pass_xiph_sizes(Bytes* left, uint32_t count) {
    uint64_t first = 0;
    for (uint32_t i = 0; i < count; ++i) {
        uint64_t size = 0;
        uint8_t byte = 255;
        while (byte == 255 && !left->empty()) {
            byte = (*left)[0];
            size += byte;
            *left = left->subspan(1);
        }
        first = i == 0 ? size : first;
    }
    return first;
}

// The same of an EBML lace: all sizes but the first are differences.
uint64_t pass_ebml_sizes(Bytes* left, uint32_t count) {
    const uint64_t first = count != 0 ? parse_vint(*left).value : 0;
    size_t at = 0;
    for (uint32_t i = 0; i < count && at < left->size(); ++i) {
        const int length = VintLength((*left)[at]);
        at += static_cast<size_t>(length != 0 ? length : 1);
    }
    *left = left->subspan(std::min(at, left->size()));
    return first;
}

// Reads the head of a block and of its laces. False when it is cut.
bool read_block_head(Reader* reader, Span data, BlockHead* head) {
    constexpr uint32_t plain_size = 16;   // of a head without laces
    constexpr uint32_t laced_size = 2048; // and with the sizes of 256 frames, mostly
    Bytes bytes = read_view(reader, data, 0, plain_size);
    const Vint track = parse_vint(bytes);
    if (track.length == 0 || bytes.size() < track.length + 3U) {
        return false;
    }
    head->track = track.value;
    head->time = static_cast<int16_t>(ReadBE16(bytes.data() + track.length));
    const uint8_t lacing = bytes[track.length + 2U] & lacing_ebml;
    uint32_t head_size = track.length + 3U;
    uint64_t first_size = UINT64_MAX;
    if (lacing != lacing_none) {
        bytes = read_view(reader, data, 0, laced_size);
        if (bytes.size() <= head_size) {
            return false;
        }
        head->frames = bytes[head_size] + 1U;
        Bytes left = bytes.subspan(head_size + 1);
        if (lacing == lacing_xiph) {
            first_size = pass_xiph_sizes(&left, head->frames - 1);
        } else if (lacing == lacing_ebml) {
            first_size = pass_ebml_sizes(&left, head->frames - 1);
        }
        head_size = static_cast<uint32_t>(bytes.size() - left.size());
        if (lacing == lacing_fixed || head->frames == 1) {
            first_size = static_cast<uint64_t>(size_of(data) - head_size) / head->frames;
        }
    }
    const Span payload = sub_span(data, head_size);
    head->payload = size_of(payload);
    head->first_frame = sub_span(payload, 0,
        static_cast<int64_t>(std::min<uint64_t>(first_size, static_cast<uint64_t>(head->payload))));
    return true;
}

} // namespace

int64_t read_cluster_time(Reader* reader, const Element& element) {
    constexpr uint64_t latest = uint64_t{1} << 62;
    return static_cast<int64_t>(std::min(read_uint(reader, element, 0), latest));
}

bool read_block(Reader* reader, const Element& element, BlockHead* head) {
    constexpr uint64_t longest = uint64_t{1} << 40; // what is longer is no duration
    *head = {};
    if (element.id == id_simple_block) {
        return read_block_head(reader, element.data, head);
    }
    bool has_block = false;
    if (element.id == id_block_group) {
        ElementCursor cursor = children_of(element.data);
        Element child;
        while (next_element(reader, &cursor, &child)) {
            if (child.id == id_block && !has_block) {
                has_block = read_block_head(reader, child.data, head);
            } else if (child.id == id_block_duration) {
                const uint64_t duration = read_uint(reader, child, 0);
                head->duration = duration < longest ? static_cast<int64_t>(duration) : 0;
            }
        }
    }
    return has_block;
}

namespace {

Track* find_track(Segment* segment, uint64_t number) {
    Track* end = segment->tracks + kept_tracks(*segment);
    Track* track = std::find_if(
        segment->tracks, end, [=](const Track& each) { return each.number == number; });
    return track != end ? track : nullptr;
}

void count_block(const BlockHead& head, int64_t cluster_time, Segment* segment, ClusterWalk* walk) {
    Track* track = find_track(segment, head.track);
    if (track == nullptr) {
        return;
    }
    const auto index = static_cast<uint32_t>(track - segment->tracks);
    BlockCounts* counts = &track->counts;
    const int64_t time = cluster_time + head.time;
    if (counts->blocks == 0) {
        counts->first_time = time;
        counts->last_time = time;
        counts->first_frame = head.first_frame;
        walk->wants_frame &= ~(uint64_t{1} << index);
    }
    ++counts->blocks;
    counts->frames += head.frames;
    const uint32_t stripped = track->encodings.strips_frames ? track->encodings.prefix_size : 0;
    counts->bytes += static_cast<uint64_t>(head.payload) + uint64_t{head.frames} * stripped;
    counts->first_time = std::min(counts->first_time, time);
    if (time >= counts->last_time) {
        counts->last_time = time;
        counts->last_frames = head.frames;
    }
    if (head.duration != 0) {
        counts->last_end = std::max(counts->last_end, time + head.duration);
    }
    for (uint32_t i = 0; i < walk->timed_count; ++i) {
        if (walk->timed[i] == index) {
            add_frame_time(&walk->times[i], time);
        }
    }
}

// Reads a cluster's blocks. Returns where it ends: a cluster of unknown size does at the next
// element of its level.
int64_t read_cluster(Reader* reader, const Element& cluster, Segment* segment, ClusterWalk* walk) {
    int64_t time = 0;
    BlockHead head;
    ElementCursor cursor = children_of(cluster.data);
    Element element;
    while (next_element(reader, &cursor, &element)) {
        if (cluster.unknown_size && is_level1(element.id)) {
            return element.start;
        }
        if (element.id == id_timestamp) {
            time = read_cluster_time(reader, element);
        } else if (read_block(reader, element, &head)) {
            count_block(head, time, segment, walk);
        }
    }
    walk->damaged |= !cluster.unknown_size && cursor.position < cluster.data.end;
    return cluster.unknown_size ? cursor.position : cluster.data.end;
}

// Whether every cluster begins near the first one, as far as sizes tell; steps from one to the
// next.
bool may_count_all(Reader* reader, int64_t limit, const Segment& segment) {
    ElementCursor cursor = {segment.span, segment.first_cluster};
    Element element;
    while (next_level1(reader, &cursor, &element)) {
        if (element.id == id_cluster && element.start >= limit) {
            return false;
        }
        if (element.id == id_cluster && element.unknown_size) {
            return true;
        }
    }
    return !reader->limited;
}

bool is_whole(const Segment& segment, const FileRecord* file) {
    return segment.unknown_size || segment.said_end <= file->size;
}

} // namespace

void walk_clusters(Reader* reader, bool thorough, Segment* segment, ClusterWalk* walk) {
    if (segment->first_cluster < 0) {
        return;
    }
    reader_allow(reader, thorough ? thorough_allowance : part_allowance);
    const int64_t limit = thorough ? segment->span.end : segment->first_cluster + near_size;
    const FileRecord* file = reader->block.file;
    const bool counts_all =
        is_whole(*segment, file) && (thorough || may_count_all(reader, limit, *segment));
    ElementCursor cursor = {segment->span, segment->first_cluster};
    Element element;
    bool all = true;
    uint32_t clusters = 0;
    while (next_level1(reader, &cursor, &element)) {
        if (element.id != id_cluster) {
            read_part(reader, element, segment);
            continue;
        }
        const bool wanted = counts_all || walk->wants_rates ||
                            (walk->wants_frame != 0 && clusters < clusters_searched);
        if (element.start >= limit || !wanted) {
            all = false;
            break;
        }
        cursor.position = read_cluster(reader, element, segment, walk);
        ++clusters;
    }
    // Of a segment that tells its size, and mostly its time, what was lost would be missing.
    const bool lost = (cursor.damaged || walk->damaged) && !segment->unknown_size;
    segment->counted = counts_all && all && !lost && !reader->limited;
}

double frame_duration(const Track& track) {
    // Shorter ones are time bases, and longer ones none at all.
    constexpr uint64_t shortest = 1'000'000'000 / 240;
    constexpr uint64_t longest = 100'000'000'000;
    const bool is_told = track.default_duration >= shortest && track.default_duration <= longest;
    return is_told ? static_cast<double>(track.default_duration) * 1e-9 : 0;
}

double counted_duration(const Segment& segment, const Track& track) {
    const BlockCounts& counts = track.counts;
    if (counts.frames < 2 || counts.last_time <= counts.first_time) {
        return 0;
    }
    const auto length = static_cast<double>(counts.last_time - counts.first_time);
    if (counts.last_end > counts.last_time) {
        return seconds_of(segment, static_cast<double>(counts.last_end - counts.first_time));
    }
    const double seconds = seconds_of(segment, length);
    const uint64_t steps = counts.frames - counts.last_frames;
    const double told = frame_duration(track);
    const double step = told > 0 ? told : steps != 0 ? seconds / static_cast<double>(steps) : 0;
    return seconds + step * static_cast<double>(counts.last_frames);
}

} // namespace zat::matroska
