#include "container/flv.h"

#include "common/bytes/numbers.h"
#include "common/bytes/tables.h"
#include "common/record/record_lines.h"
#include "common/text/fourcc.h"
#include "common/text/messages.h"
#include "container/flv/details.h"
#include "container/flv/file.h"

#include <iterator>

namespace zat {

namespace {

struct FourccName {
    uint32_t code;
    const char* name;
};

constexpr FourccName fourcc_names[] = {
    {fourcc("avc1"), "AVC"},
    {fourcc("hvc1"), "HEVC/H265"},
    {fourcc("vvc1"), "VVC/H266"},
    {fourcc("av01"), "AV1"},
    {fourcc("vp08"), "VP8"},
    {fourcc("vp09"), "VP9"},
    {fourcc("mp4a"), "AAC"},
    {fourcc("Opus"), "Opus"},
    {fourcc("fLaC"), "FLAC"},
    {fourcc("ac-3"), "AC3"},
    {fourcc("ec-3"), "E-AC-3"},
    {fourcc(".mp3"), "MP3"},
};

// Null for a code without a name.
const char* fourcc_name(uint32_t code) {
    const FourccName* row = find_row(fourcc_names, &FourccName::code, code);
    return row != nullptr ? row->name : nullptr;
}

const char* video_codec_name(const FlvInfo& info) {
    if (info.video_fourcc != 0) {
        const char* name = fourcc_name(info.video_fourcc);
        return name != nullptr ? name : "";
    }
    static constexpr const char* names[] = {"", "", "Sorenson H.263", "Screen video", "On2 VP6",
        "On2 VP6 with alpha channel", "Screen video version 2", "AVC"};
    return info.video_codec < std::size(names) ? names[info.video_codec] : "";
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
    const bool is_avc = is_flv_avc(*info) && info->avc_profile_level[0] != '\0';
    format_text(codec, sizeof codec, "%s%s", is_avc ? "AVC/H264 " : "",
        is_avc ? info->avc_profile_level : video_codec_name(*info));
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
    const char* enhanced = fourcc_name(info->audio_fourcc);
    if (enhanced != nullptr) {
        copy_text(line, enhanced);
    } else {
        AppendWithSeparator(line, sound_format_name(header >> 4), separator_space);
        AppendWithSeparator(line, rates[header >> 2 & 3], separator_space);
        AppendWithSeparator(line, sizes[header >> 1 & 1], separator_space);
        AppendWithSeparator(line, types[header & 1], separator_space);
    }
    if (info->metadata.audio_rate != 0.0) {
        char rate[line_size];
        format_text(rate, sizeof rate, "%.3fkbps", info->metadata.audio_rate);
        AppendWithSeparator(line, rate, separator_space);
    }
    add_audio_line(record, "%s", line);
}

void write_record(const FlvInfo* info, InfoRecord* record) {
    record->video_count = 0; // a file has one stream of each kind
    write_video(info, record);
    if (info->has_audio) {
        record->audio_count = 0;
        write_audio(info, record);
    }
    record->play_time =
        info->metadata.duration == 0.0 ? info->last_timestamp * 0.001 : info->metadata.duration;
    set_label(record, "%s", "[FlashVideo]");
}

} // namespace

int AnalyzeFlvFile(FileRecord* file, const Output& out) {
    const WorkMemory memory(long_walk_memory);
    Reader reader;
    reader_open(&reader, file, memory);
    FlvInfo info;
    info.detailed = out.details != nullptr;
    if (!read_flv_tags(&reader, &info)) {
        return 1;
    }
    write_record(&info, out.record);
    if (out.details != nullptr) {
        describe_flv(&reader, info, out.record->play_time, out.details);
    }
    return 0;
}

} // namespace zat
