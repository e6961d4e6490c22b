#include "container/flv.h"

#include "common/file_window.h"
#include "common/messages.h"
#include "common/numbers.h"
#include "common/record_lines.h"
#include "container/flv_h263.h"
#include "container/flv_script.h"
#include "video/avc_names.h"

#include <algorithm>
#include <iterator>

namespace zat {

namespace {

// Tags are looked for in this much of the file.
constexpr int64_t examined_size = 1048576;

constexpr int64_t tag_header_size = 11;
constexpr int64_t previous_tag_size = 4;

enum TagType : uint8_t { tag_audio = 8, tag_video = 9, tag_script = 18 };

enum VideoCodec : uint8_t { codec_h263 = 2, codec_avc = 7 };

// Bytes of a video tag's data that are looked at: the codec and the largest picture header.
constexpr int64_t video_head_size = 10;

// Of AVCVIDEOPACKET (annex E.4.3.2): the packet type, and in an AVCDecoderConfigurationRecord
// (ISO/IEC 14496-15) behind it the profile and the level.
constexpr size_t avc_packet_type_at = 1;
constexpr size_t avc_profile_at = 6;
constexpr size_t avc_level_at = 8;
constexpr uint8_t avc_sequence_header = 0;

struct FlvInfo {
    FlvMetadata metadata;
    uint32_t last_timestamp = 0; // milliseconds, the largest of all tags
    bool has_audio = false;
    uint8_t audio_header = 0; // SoundFormat, SoundRate, SoundSize, SoundType
    bool has_video = false;
    uint8_t video_codec = 0;
    H263PictureSize picture;
    char avc_profile_level[64] = "";
};

// The stretch of the file that is examined, seen through a small view that moves along: most of a
// file is payload, which is stepped over unread.
struct FlvSource {
    FileRecord* file = nullptr;
    FileWindow view;
    int64_t end = 0;
};

// The `count` bytes at `position`, fewer where the stretch ends. Valid until the next call.
Bytes bytes_at(FlvSource* source, int64_t position, int64_t count) {
    count = std::min(count, source->end - position);
    if (count <= 0) {
        return {};
    }
    FileWindow* view = &source->view;
    if (position < view->start || position + count > view->start + view->loaded) {
        window_close(view);
        const int64_t capacity = std::max<int64_t>(count, FileWindow::first_size);
        window_open(view, source->file, position,
            static_cast<uint32_t>(std::min(capacity, source->end - position)));
        window_load(view, static_cast<uint32_t>(count));
    }
    const int64_t offset = position - view->start;
    return {view->bytes + offset, static_cast<size_t>(std::min(count, view->loaded - offset))};
}

void read_video_data(Bytes data, FlvInfo* info) {
    if (data.empty()) {
        return;
    }
    const uint8_t codec = data[0] & 0x0F;
    if (!info->has_video) {
        info->has_video = true;
        info->video_codec = codec;
        if (codec == codec_h263) {
            info->picture = ParseFlvH263PictureSize(data.subspan(1));
        }
    }
    if (codec == codec_avc && info->avc_profile_level[0] == '\0' && data.size() > avc_level_at &&
        data[avc_packet_type_at] == avc_sequence_header) {
        FormatAvcProfileLevel(info->avc_profile_level, sizeof info->avc_profile_level,
            data[avc_profile_at], data[avc_level_at]);
    }
}

// Whether a further video tag can tell anything: the first one gives the codec, and AVC has its
// profile in the first sequence header.
bool wants_video(const FlvInfo* info) {
    return !info->has_video ||
           (info->video_codec == codec_avc && info->avc_profile_level[0] == '\0');
}

void read_tag_data(FlvSource* source, uint8_t type, int64_t position, int64_t size, FlvInfo* info) {
    if (type == tag_script) {
        ParseFlvScript(bytes_at(source, position, size), &info->metadata);
    } else if (type == tag_video && wants_video(info)) {
        read_video_data(bytes_at(source, position, std::min(size, video_head_size)), info);
    } else if (type == tag_audio && !info->has_audio) {
        const Bytes data = bytes_at(source, position, std::min<int64_t>(size, 1));
        if (!data.empty()) {
            info->has_audio = true;
            info->audio_header = data[0];
        }
    }
}

// FLVTAG (annex E.4.1): each behind the size of the one before it.
void walk_tags(FlvSource* source, int64_t position, FlvInfo* info) {
    for (;;) {
        position += previous_tag_size;
        const Bytes header = bytes_at(source, position, tag_header_size);
        if (header.size() < tag_header_size) {
            return;
        }
        const uint8_t type = header[0];
        const int64_t size = ReadBE24(header.data() + 1);
        const uint32_t timestamp = ReadBE24(header.data() + 4) | static_cast<uint32_t>(header[7])
                                                                     << 24;
        info->last_timestamp = std::max(info->last_timestamp, timestamp);
        position += tag_header_size;
        read_tag_data(source, type, position, size, info);
        position += size;
    }
}

const char* video_codec_name(uint8_t codec) {
    static constexpr const char* names[] = {"", "", "Sorenson H.263", "Screen video", "On2 VP6",
        "On2 VP6 with alpha channel", "Screen video version 2", "AVC"};
    return codec < std::size(names) ? names[codec] : "";
}

void write_video(const FlvInfo* info, InfoRecord* record) {
    uint32_t width = info->picture.width;
    uint32_t height = info->picture.height;
    if (width == 0 && height == 0) {
        width = clamp_to_integer<uint32_t>(info->metadata.width);
        height = clamp_to_integer<uint32_t>(info->metadata.height);
        if ((width == 0) != (height == 0)) {
            add_extra_line(record, "%s", message::script_object);
        }
    }
    char codec[80];
    const bool is_avc = info->video_codec == codec_avc && info->avc_profile_level[0] != '\0';
    format_text(codec, sizeof codec, "%s%s", is_avc ? "AVC/H264 " : "",
        is_avc ? info->avc_profile_level : video_codec_name(info->video_codec));
    add_video_line(record, "%dx%d [%s] %.3fkbps %.3ffps", static_cast<int32_t>(width),
        static_cast<int32_t>(height), codec, info->metadata.video_rate, info->metadata.frame_rate);
}

const char* sound_format_name(uint8_t format) {
    // 4 is Nellymoser at 16 kHz; it is knowingly shown as reserved.
    static constexpr const char* names[] = {"uncompressed", "ADPCM", "MP3", "WAV",
        "format reserved", "Nellymoser 8kHz mono", "Nellymoser", "format reserved",
        "format reserved", "format reserved", "AAC"};
    return format < std::size(names) ? names[format] : "format reserved";
}

// AudioTagHeader (annex E.4.2.1).
void write_audio(const FlvInfo* info, InfoRecord* record) {
    static constexpr const char* rates[4] = {"5.5kHz", "11kHz", "22kHz", "44kHz"};
    static constexpr const char* sizes[2] = {"8bit", "16bit"};
    static constexpr const char* types[2] = {"Mono", "Stereo"};
    const uint8_t header = info->audio_header;
    char line[line_size] = "";
    AppendWithSeparator(line, sound_format_name(header >> 4), separator_space);
    AppendWithSeparator(line, rates[header >> 2 & 3], separator_space);
    AppendWithSeparator(line, sizes[header >> 1 & 1], separator_space);
    AppendWithSeparator(line, types[header & 1], separator_space);
    if (info->metadata.audio_rate != 0.0) {
        char rate[line_size];
        format_text(rate, sizeof rate, "%.3fkbps", info->metadata.audio_rate);
        AppendWithSeparator(line, rate, separator_space);
    }
    add_audio_line(record, "%s", line);
}

void write_record(const FlvInfo* info, InfoRecord* record) {
    write_video(info, record);
    if (info->has_audio) {
        write_audio(info, record);
    }
    record->play_time =
        info->metadata.duration == 0.0 ? info->last_timestamp * 0.001 : info->metadata.duration;
    set_label(record, "%s", "[FlashVideo]");
}

} // namespace

int AnalyzeFlvFile(FileRecord* file, const Output& out) {
    FlvSource source;
    source.file = file;
    source.end = std::min(file->size, examined_size);
    window_open(&source.view, file, 0, FileWindow::first_size);
    // The header (annex E.2): signature, version, flags and the position of the first tag.
    const uint8_t* data_offset = window_at(&source.view, 5, 4);
    const bool readable = source.view.loaded != 0;
    if (readable) {
        FlvInfo info;
        walk_tags(&source, ReadBE32(data_offset), &info);
        write_record(&info, out.record);
    }
    return readable ? 0 : 1;
}

} // namespace zat
