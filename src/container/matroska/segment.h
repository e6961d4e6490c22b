// What a Matroska segment tells of itself and its tracks.
#pragma once

#include "container/matroska/ebml.h"
#include "video/colour_names.h"

#include <cstdint>

namespace zat::matroska {

// Tracks that are kept; further ones are only counted.
constexpr uint32_t most_tracks = 64;
constexpr uint32_t most_tags = 16; // elements `Tags`

enum TrackType : uint8_t { track_video = 1, track_audio = 2, track_subtitle = 0x11 };

// The video element of a track entry. What is not told is 0.
struct VideoSettings {
    uint32_t width = 0; // pixels after cropping
    uint32_t height = 0;
    uint32_t display_width = 0;
    uint32_t display_height = 0;
    uint8_t display_unit = 0;
    uint8_t interlaced = 0;
    uint8_t field_order = 2; // 2: undetermined
    uint8_t bits_per_channel = 0;
    uint8_t chroma_format = 0; // one above chroma_format_idc
    double frame_rate = 0;
    ColourCodes colour;
    uint8_t uncompressed_fourcc[4] = {};
    Span dolby_vision; // configuration record
};

struct AudioSettings {
    double sample_rate = 0; // Hz
    double output_rate = 0;
    uint32_t channels = 0;
    uint32_t bits = 0;
};

// How frames and the codec's private data were changed on their way into the file.
struct Encodings {
    static constexpr uint32_t longest_prefix = 16;

    uint8_t prefix[longest_prefix] = {}; // header stripping: what to put back in front
    uint32_t prefix_size = 0;
    bool strips_frames = false;
    bool strips_private = false;
    bool frames_packed = false; // compressed or encrypted
    bool private_packed = false;
    bool encrypted = false;
};

// The statistics tags of a track. What there is none of is 0.
struct Statistics {
    uint64_t bit_rate = 0; // bit/s
    uint64_t frames = 0;
    uint64_t bytes = 0;
    double duration = 0; // seconds
};

// The blocks of a track that were looked at. Times are in units of the timestamp scale.
struct BlockCounts {
    uint64_t blocks = 0;
    uint64_t frames = 0;
    uint64_t bytes = 0;
    int64_t first_time = 0;
    int64_t last_time = 0;    // where the last block starts
    int64_t last_end = 0;     // by the blocks that tell their duration
    uint64_t last_frames = 0; // in the last block
    Span first_frame;
};

struct Track {
    uint64_t number = 0;
    uint64_t uid = 0;
    uint64_t default_duration = 0; // ns
    uint8_t type = 0;
    uint32_t flags = 0; // ZatStreamFlag
    char codec_id[64] = "";
    char language[24] = ""; // empty: none is told
    bool language_told = false;
    Span name;
    Span encoder; // a tag
    Span codec_private;
    VideoSettings video;
    AudioSettings audio;
    Encodings encodings;
    Statistics statistics;
    BlockCounts counts;
};

constexpr uint64_t default_timestamp_scale = 1'000'000;

struct Segment {
    Segment() {} // leaves the tracks as they are: clearing them all costs more than reading one

    Span span;            // the data, as far as the file has it
    int64_t said_end = 0; // where the size says that it ends
    bool unknown_size = false;
    bool is_webm = false;

    uint64_t timestamp_scale = default_timestamp_scale; // ns
    double duration = 0;                                // in units of the scale
    bool duration_told = false;
    int64_t date = 0; // ns from 2001
    bool date_told = false;
    Span title;
    Span muxing_app;
    Span writing_app;

    union {
        Track tracks[most_tracks]; // those that are counted
    };
    uint32_t track_count = 0; // may be more than are kept

    int64_t first_cluster = -1; // where its identifier stands
    bool counted = false;       // every block was looked at
    uint32_t chapters = 0;
    uint32_t attachments = 0;
    uint32_t pictures = 0;             // among them
    int64_t bytes_behind_clusters = 0; // of attachments behind the first cluster
    uint32_t parts_read = 0;           // bits of the kinds of element
    uint32_t tags_count = 0;
    Span tags[most_tags]; // read behind the tracks that they are about
    int64_t cues = -1;    // where a seek head says that they stand
    Span tag_title;
    Span tag_artist;
};

constexpr uint32_t kept_tracks(const Segment& segment) {
    return segment.track_count < most_tracks ? segment.track_count : most_tracks;
}

// Seconds of a time in units of the scale.
inline double seconds_of(const Segment& segment, double time) {
    return time * static_cast<double>(segment.timestamp_scale) / 1e9;
}

// Reads the segment's head, all elements in front of its clusters and those that its seek heads
// point to. False when there is no segment.
bool read_segment(Reader* reader, Segment* segment);

// Reads an element of the segment's level; the first of each kind counts. Clusters and seek heads
// are not looked at.
void read_part(Reader* reader, const Element& element, Segment* segment);

} // namespace zat::matroska
