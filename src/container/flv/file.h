// What the tags of a Flash Video file tell (Adobe Flash Video File Format 10.1, annex E, and
// Enhanced RTMP, which adds formats that a four-character code names).
#pragma once

#include "common/file/reader.h"
#include "container/flv/picture.h"
#include "container/flv/script.h"

#include <cstdint>

namespace zat {

// Of SoundFormat and CodecID.
enum FlvSound : uint8_t {
    flv_sound_pcm = 0,
    flv_sound_mp3 = 2,
    flv_sound_pcm_le = 3,
    flv_sound_by_fourcc = 9,
    flv_sound_aac = 10,
    flv_sound_mp3_8khz = 14,
};

enum FlvVideo : uint8_t {
    flv_video_h263 = 2,
    flv_video_screen = 3,
    flv_video_vp6 = 4,
    flv_video_vp6_alpha = 5,
    flv_video_screen_2 = 6,
    flv_video_avc = 7,
};

// The tags of one kind; of details only.
struct FlvTags {
    Span first;              // data of the first one with data
    Span configuration;      // decoder configuration, behind the tag's own header
    uint64_t bytes = 0;      // of media data
    uint32_t frames = 0;     // tags with media data
    uint32_t first_time = 0; // milliseconds
    uint32_t last_time = 0;
};

struct FlvInfo {
    FlvMetadata metadata;
    uint32_t last_timestamp = 0; // milliseconds, the largest of all tags
    bool has_audio = false;
    uint8_t audio_header = 0;  // SoundFormat, SoundRate, SoundSize, SoundType
    uint32_t audio_fourcc = 0; // of format 9
    bool has_video = false;
    uint8_t video_codec = 0; // CodecID; 0 where a four-character code stands
    uint32_t video_fourcc = 0;
    FlvPictureSize picture;
    char avc_profile_level[64] = "";

    bool detailed = false; // what follows is wanted
    FlvTags audio;
    FlvTags video;
    bool to_end = false;       // all of the file was examined
    bool whole = false;        // and held nothing but tags
    int64_t missing_bytes = 0; // of a tag that the file's end cuts
};

// Reads the tags in the first mebibyte of the file. False when nothing can be read.
bool read_flv_tags(Reader* reader, FlvInfo* info);

// Seconds by the tags' times, of a file whose metadata tells none: to its last tag, or, where the
// end is cut, as if all of it went on like the start.
struct FlvTime {
    double seconds = 0;
    bool estimated = false;
};

FlvTime measure_flv_time(Reader* reader, const FlvInfo& info);

// Whether the streams are of this codec, by whichever of the two ways to tell it.
bool is_flv_avc(const FlvInfo& info);

} // namespace zat
