// The elementary streams of a program stream: which they are, how much they carry, when they play,
// and enough of the start of each to describe it.
#pragma once

#include "common/record/frame_timing.h"
#include "common/text/text.h"
#include "container/mpeg_pes.h"
#include "container/mpeg_ps/pack.h"
#include "container/mpeg_ps/picture_count.h"
#include "container/mpeg_ps/source.h"
#include "container/mpeg_ps/timing.h"
#include "container/mpeg_ps/walk.h"
#include "video/mpeg_video_headers.h"
#include "video/stream_facts.h"
#include "zat/details.h"

#include <cstddef>
#include <cstdint>

namespace zat::ps {

enum class Kind : uint8_t {
    other, // carried without a line
    video,
    mpeg_audio,
    aac,
    ac3,
    eac3,
    dts,
    lpcm,
    mlp,
    extension_audio, // of a stream_id_extension: AC-3, DTS or TrueHD
    dvd_subtitle,
    svcd_subtitle,
    cvd_subtitle,
    navigation,
};

enum class Form : uint8_t {
    unknown,       // nothing found yet
    mpeg_sequence, // the sequence line
    generic_video, // `codec` in the brackets of a generic line
    audio_line,    // `line` as it stands
    name_only,     // the brackets alone
};

struct Stream {
    // Of payload that is looked at together: more than a sequence header with both matrices or the
    // largest audio frame needs.
    static constexpr uint32_t collect_size = 16384;

    uint16_t key = 0; // PES id in the upper byte, substream or stream_id_extension in the lower
    uint8_t stream_type = 0; // by the program stream map; 0 without one
    bool declared = false;   // by the program stream map
    Kind kind = Kind::other;
    Form form = Form::unknown;
    uint64_t packets = 0;
    uint64_t bytes = 0; // of payload, substream headers not counted
    StampTrack head;
    StampTrack tail;
    FrameTimes times;            // of a video's frames, in ticks
    uint32_t timed_packets = 0;  // in which they were found
    uint32_t counted_stamps = 0; // of `times`, those that came with what `pictures` counts
    double frame_seconds = 0;
    ZatStream facts;
    MpegVideoHeaders sequence;
    AvcSequenceInfo avc;
    Mpeg4Vol mpeg4;
    bool field_pictures; // of HEVC: each picture is a field
    char codec[video_codec_size];
    uint32_t bits = 0; // per sample, where the codec's headers tell them
    char line[line_size];
    uint64_t searched = 0;     // bytes of payload looked at
    uint32_t next_attempt = 0; // to describe it, once so much is collected
    uint32_t collected = 0;
    uint8_t* collect;         // of collect_size bytes
    PictureCounter* pictures; // of a video whose headers tell no rate, once it is described
};

constexpr size_t stream_limit = 64;

struct StreamTable {
    size_t count = 0;       // streams beyond the limit are left out
    bool plain_ac3 = false; // private stream 1 is AC-3 without substream headers
    Stream streams[stream_limit];
    uint8_t order[stream_limit]; // by key, set by sort_streams
    PictureCounter pictures[stream_limit];
    uint8_t collect[stream_limit][Stream::collect_size];
};

constexpr uint8_t id_of(const Stream& stream) {
    return static_cast<uint8_t>(stream.key >> 8);
}
constexpr uint8_t substream_of(const Stream& stream) {
    return static_cast<uint8_t>(stream.key);
}
constexpr bool is_audio(const Stream& stream) {
    return stream.kind >= Kind::mpeg_audio && stream.kind <= Kind::extension_audio;
}
constexpr bool is_shown(const Stream& stream) {
    return stream.kind == Kind::video || is_audio(stream);
}

// Of a DVD's LPCM: quantisation, rate and channels stand at the front of each packet's payload.
constexpr int64_t lpcm_header_size = 3;

// Where the elementary stream's bytes stand in a packet, and which stream that is.
struct Payload {
    uint16_t key = 0;
    Kind kind = Kind::other;
    int64_t start = 0;
    int64_t end = 0;
};

// Looks at a packet's first payload bytes. False for packets that carry no stream of interest.
bool find_payload(StreamTable* table, const Unit& unit, Payload* payload);

// The stream of a payload, entered into the table when it is new; null when there is no room.
Stream* stream_of(StreamTable* table, const Payload& payload);

// The stream when the table has it; else null.
Stream* known_stream(StreamTable* table, const Payload& payload);

// Enters what a program stream map declares.
void declare_streams(StreamTable* table, const StreamMap& map);

// Sets the order by key.
void sort_streams(StreamTable* table);

} // namespace zat::ps
