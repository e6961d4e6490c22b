#include "container/flv/file.h"

#include "common/file/file_window.h"
#include "common/text/fourcc.h"
#include "video/avc_names.h"

#include <algorithm>

namespace zat {

namespace {

// Tags are looked for in this much of the file.
constexpr int64_t examined_size = 1048576;

constexpr int64_t tag_header_size = 11;
constexpr int64_t previous_tag_size = 4;

enum TagType : uint8_t { tag_audio = 8, tag_video = 9, tag_script = 18 };

// Bytes of a video tag's data that are looked at: the codec and the largest picture header.
constexpr uint32_t video_head_size = 10;

constexpr uint32_t enhanced_head_size = 5; // format and type of the packet, four-character code
constexpr uint8_t enhanced_video = 0x80;   // in the first byte of a video tag

// Of AVCVIDEOPACKET (annex E.4.3.2): the packet type, and in an AVCDecoderConfigurationRecord
// (ISO/IEC 14496-15) behind it the profile and the level. With a four-character code they stand at
// the same places.
constexpr size_t avc_profile_at = 6;
constexpr size_t avc_level_at = 8;

// A packet's type: in the first byte beside a four-character code, else in the second one.
enum PacketType : uint8_t { packet_sequence_header = 0, packet_frames = 1, packet_frames_x = 3 };

// How the data of a tag starts.
struct Head {
    bool enhanced = false;
    bool typed = false; // tells a packet type
    uint8_t packet_type = packet_frames;
    uint32_t size = 1;   // bytes before the media data
    uint32_t fourcc = 0; // of enhanced tags
};

Head read_enhanced_head(Bytes data) {
    Head head;
    head.enhanced = true;
    head.typed = true;
    head.packet_type = data[0] & 0x0F;
    head.fourcc = ReadBE32(data.data() + 1);
    head.size = enhanced_head_size;
    return head;
}

// Codecs whose frames may be shown in another order: a composition time stands before the data.
bool has_composition_time(uint32_t code) {
    return code == fourcc("avc1") || code == fourcc("hvc1") || code == fourcc("vvc1");
}

Head read_video_head(Bytes data) {
    Head head;
    if ((data[0] & enhanced_video) != 0 && data.size() >= enhanced_head_size) {
        constexpr uint32_t composition_time_size = 3;
        head = read_enhanced_head(data);
        if (head.packet_type == packet_frames && has_composition_time(head.fourcc)) {
            head.size += composition_time_size;
        }
        return head;
    }
    if ((data[0] & 0x0F) == flv_video_avc && data.size() > 1) {
        constexpr uint32_t avc_head_size = 5; // packet type and composition time
        head.typed = true;
        head.packet_type = data[1];
        head.size = avc_head_size;
    }
    return head;
}

Head read_audio_head(Bytes data) {
    const uint8_t format = data[0] >> 4;
    if (format == flv_sound_by_fourcc && data.size() >= enhanced_head_size) {
        return read_enhanced_head(data);
    }
    Head head;
    if (format == flv_sound_aac && data.size() > 1) {
        head.typed = true;
        head.packet_type = data[1];
        head.size = 2;
    }
    return head;
}

void read_video_data(Bytes data, FlvInfo* info) {
    if (data.empty()) {
        return;
    }
    const Head head = read_video_head(data);
    const uint8_t codec = head.enhanced ? uint8_t{0} : data[0] & 0x0F;
    if (!info->has_video) {
        info->has_video = true;
        info->video_codec = codec;
        info->video_fourcc = head.fourcc;
        if (codec == flv_video_h263) {
            info->picture = ParseFlvH263PictureSize(data.subspan(1));
        }
    }
    const bool avc = codec == flv_video_avc || head.fourcc == fourcc("avc1");
    if (avc && info->avc_profile_level[0] == '\0' && data.size() > avc_level_at &&
        head.packet_type == packet_sequence_header) {
        FormatAvcProfileLevel(info->avc_profile_level, sizeof info->avc_profile_level,
            data[avc_profile_at], data[avc_level_at], AvcRules::legacy);
    }
}

// Whether a further video tag can tell anything: the first one gives the codec, and AVC has its
// profile in the first sequence header.
bool wants_video(const FlvInfo* info) {
    return !info->has_video || (is_flv_avc(*info) && info->avc_profile_level[0] == '\0');
}

void read_audio_data(Bytes data, FlvInfo* info) {
    if (!data.empty()) {
        info->has_audio = true;
        info->audio_header = data[0];
        info->audio_fourcc = read_audio_head(data).fourcc;
    }
}

// Metadata may be long: it is read as a whole.
void read_script(Reader* reader, Span data, FlvInfo* info) {
    if (size_of(data) <= BlockReader::jump_size) {
        const auto size = static_cast<uint32_t>(size_of(data));
        ParseFlvScript(read_view(reader, data, 0, size), &info->metadata);
        return;
    }
    FileWindow window;
    window_open(&window, reader->block.file, data.start, static_cast<uint32_t>(size_of(data)));
    window_load_all(&window);
    ParseFlvScript(window_bytes(&window), &info->metadata);
}

// Counts a tag, and remembers where a decoder's configuration stands.
void count_tag(Span data, const Head& head, uint32_t timestamp, FlvTags* tags) {
    if (size_of(data) == 0) {
        return;
    }
    if (size_of(tags->first) == 0) {
        tags->first = data;
    }
    const Span media = sub_span(data, head.size);
    if (head.typed && head.packet_type == packet_sequence_header) {
        if (size_of(tags->configuration) == 0) {
            tags->configuration = media;
        }
        return;
    }
    if (head.packet_type != packet_frames && head.packet_type != packet_frames_x) {
        return;
    }
    tags->bytes += static_cast<uint64_t>(size_of(media));
    tags->first_time = tags->frames == 0 ? timestamp : std::min(tags->first_time, timestamp);
    tags->last_time = std::max(tags->last_time, timestamp);
    ++tags->frames;
}

void count_media(Reader* reader, uint8_t type, Span data, uint32_t timestamp, FlvInfo* info) {
    const Bytes start = read_view(reader, data, 0, enhanced_head_size);
    if (start.empty()) {
        return;
    }
    if (type == tag_video) {
        count_tag(data, read_video_head(start), timestamp, &info->video);
    } else if (type == tag_audio) {
        count_tag(data, read_audio_head(start), timestamp, &info->audio);
    }
}

void read_tag_data(Reader* reader, uint8_t type, Span data, FlvInfo* info) {
    if (type == tag_script) {
        read_script(reader, data, info);
    } else if (type == tag_video && wants_video(info)) {
        read_video_data(read_view(reader, data, 0, video_head_size), info);
    } else if (type == tag_audio && !info->has_audio) {
        read_audio_data(read_view(reader, data, 0, enhanced_head_size), info);
    }
}

// Bit 5 tells that the data is encrypted; the two above it are 0.
bool is_tag_type(uint8_t type) {
    const uint8_t kind = type & ~uint8_t{0x20};
    return kind == tag_audio || kind == tag_video || kind == tag_script;
}

// Milliseconds, by a tag's header.
uint32_t tag_time(Bytes header) {
    return ReadBE24(header.data() + 4) | static_cast<uint32_t>(header[7]) << 24;
}

// FLVTAG (annex E.4.1): each behind the size of the one before it. Reserved types count their time
// as well, but what follows one in a damaged file need be no tag.
void walk_tags(Reader* reader, Span space, int64_t position, FlvInfo* info) {
    bool only_tags = true;
    for (;;) {
        position += previous_tag_size;
        const Bytes header = read_view(reader, space, position, tag_header_size);
        if (header.size() < tag_header_size) {
            break;
        }
        const uint8_t type = header[0];
        const int64_t size = ReadBE24(header.data() + 1);
        const uint32_t timestamp = tag_time(header);
        info->last_timestamp = std::max(info->last_timestamp, timestamp);
        only_tags = only_tags && is_tag_type(type);
        position += tag_header_size;
        const Span data = sub_span(space, position, size);
        read_tag_data(reader, type, data, info);
        if (info->detailed && only_tags) {
            count_media(reader, type, data, timestamp, info);
        }
        position += size;
    }
    const int64_t file_end = reader->block.file->size;
    info->to_end = space.end == file_end;
    info->whole = info->to_end && only_tags;
    info->missing_bytes =
        info->whole ? std::max<int64_t>(position - previous_tag_size - file_end, 0) : 0;
}

} // namespace

bool is_flv_avc(const FlvInfo& info) {
    return info.video_codec == flv_video_avc || info.video_fourcc == fourcc("avc1");
}

FlvTime measure_flv_time(Reader* reader, const FlvInfo& info) {
    const Span file = whole_file(reader);
    const double examined = std::max(info.video.last_time, info.audio.last_time) * 0.001;
    if (size_of(file) <= examined_size) {
        return {.seconds = examined};
    }
    uint8_t last_size[previous_tag_size] = {};
    read_some(reader, file, size_of(file) - previous_tag_size, last_size, sizeof last_size);
    const int64_t size = ReadBE32(last_size);
    const int64_t start = size_of(file) - previous_tag_size - size;
    const Bytes header = start >= 0 ? read_view(reader, file, start, tag_header_size) : Bytes{};
    if (header.size() == tag_header_size && is_tag_type(header[0]) &&
        ReadBE24(header.data() + 1) + tag_header_size == size) {
        return {.seconds = std::max(examined, tag_time(header) * 0.001)};
    }
    const double share = static_cast<double>(size_of(file)) / static_cast<double>(examined_size);
    return {.seconds = examined * share, .estimated = true};
}

bool read_flv_tags(Reader* reader, FlvInfo* info) {
    const Span space = sub_span(whole_file(reader), 0, examined_size);
    // The header (annex E.2): signature, version, flags and the position of the first tag.
    constexpr uint32_t header_size = 9;
    uint8_t header[header_size] = {};
    if (read_some(reader, space, 0, header, sizeof header) == 0) {
        return false;
    }
    walk_tags(reader, space, ReadBE32(header + 5), info);
    return true;
}

} // namespace zat
