#include "audio/wav_file.h"

#include "audio/dts.h"
#include "audio/mpeg_audio.h"
#include "audio/wav_chunks.h"
#include "common/block_reader.h"
#include "common/codec_catalogue.h"
#include "common/messages.h"
#include "common/text.h"
#include "common/value_text.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

constexpr size_t codec_name_size = 256;
constexpr size_t extra_info_size = 256; // bytes used of the extra-info text, terminator included

void set_play_time(const WavFormatInfo& info, InfoRecord* record) {
    if (info.format_tag == wav_tag_pcm) {
        if (info.block_align != 0 && info.sample_rate != 0) {
            const uint32_t frames = info.data_size / info.block_align;
            record->play_time = static_cast<double>(frames) / info.sample_rate;
        }
    } else if (info.byte_rate != 0) {
        record->play_time = static_cast<double>(info.data_size) / info.byte_rate;
    }
}

void find_codec_name(const WavFormatInfo& info, char* name) {
    char key[wav_guid_size];
    if (info.guid[0] != '\0') {
        copy_text(key, info.guid);
    } else {
        format_text(key, sizeof key, "%04x", info.format_tag);
    }
    std::transform(key, key + 4, key, ascii_upper);
    codec_name(info.guid[0] != '\0' ? "[WAV-EXT]" : "[AVI-Audio]", key, key, name, codec_name_size);
}

double kilobits_per_second(const WavFormatInfo& info) {
    return info.byte_rate * 8.0 * 0.001;
}

void format_plain_line(const WavFormatInfo& info, const char* name, char* line) {
    format_text(line, line_size, "[%s] %dHz %dch %.2fkbps %dBit [fmt:%dByte]", name,
        static_cast<int32_t>(info.sample_rate), info.channels, kilobits_per_second(info),
        info.bits_per_sample, static_cast<int32_t>(info.fmt_size));
}

void format_speaker_line(
    const WavFormatInfo& info, const char* name, const char* speakers, char* line) {
    format_text(line, line_size, "[%s] %dHz %dch(%s) %.2fkbps %dBit [fmt:%dByte]", name,
        static_cast<int32_t>(info.sample_rate), info.channels, speakers, kilobits_per_second(info),
        info.bits_per_sample, static_cast<int32_t>(info.fmt_size));
}

// Writes the line of a DTS stream at the data position, whatever the format tag says: players of
// such files pass it through as PCM. Returns 0 when there is none or its line is written, 1 when
// its header is damaged.
int describe_dts(BlockReader* reader, const WavFormatInfo& info, char* line) {
    uint8_t header[dts_packed_size] = {};
    block_read(reader, info.data_position, header, sizeof header);
    const DtsSyncType type = dts_sync_type(header);
    if (type == dts_none) {
        return 0;
    }
    dts_to_16bit_be(header, type);
    DtsInfo dts;
    if (dts_info(header, &dts) != 0) {
        return 1;
    }
    dts.sync_type = type;
    dts_line(&dts, line);
    return 0;
}

// Writes the line and the play time of an MPEG audio stream when the data begin with a frame. No
// syncword is asked for: the format tag has told.
void describe_mpeg_audio(
    BlockReader* reader, const WavFormatInfo& info, InfoRecord* record, char* line) {
    uint8_t frame[vbr_header_reach] = {};
    block_read(reader, info.data_position, frame, sizeof frame);
    uint8_t header[mpeg_audio_header_size];
    std::memcpy(header, frame, sizeof header);
    MpegAudioInfo mpeg;
    if (DecodeMpegAudioHeader(header, &mpeg) != 0) {
        return;
    }
    const uint32_t length = std::min(mpeg.frame_size, vbr_header_reach);
    if (ParseVbrHeader({frame, length}, &mpeg) != 0) {
        return;
    }
    FormatMpegAudioLine(&mpeg, line);
    record->play_time = static_cast<double>(
        static_cast<float>(info.data_size) / (static_cast<float>(mpeg.bitrate * 1000) * 0.125F));
}

// The label, and what lossyWAV says of itself: "lossyWAV <version>: ... -cbs <size> ...".
void describe_origin(const WavFormatInfo& info, InfoRecord* record) {
    const std::string_view text = bounded_text(info.description);
    if (text.starts_with("BWF")) {
        copy_text(record->label, "[RIFF(WAVE-BWF)]");
    } else if (text.starts_with("lossyWA")) {
        char parameter[sizeof info.description] = {};
        const size_t at = text.find("-cbs");
        if (at != std::string_view::npos && at + 5 < text.size()) {
            const std::string_view rest = text.substr(at + 5);
            copy_text(parameter, rest.substr(0, rest.find(' ')));
        }
        format_text(record->label, sizeof record->label, "[RIFF(lossyWAV(%s))]", parameter);
        copy_text(record->extra_info, extra_info_size, text.substr(0, text.find(':')));
    }
}

// The play time that the bytes up to the file's end would have, as the chunk's size cannot say it.
void note_beyond_2gb(const WavFormatInfo& info, InfoRecord* record) {
    copy_text(record->extra[1], message::beyond_2gb);
    record->extra_count = 2;
    if (info.block_align == 0 || info.sample_rate == 0) {
        return;
    }
    const int64_t frames =
        (static_cast<int64_t>(record->file_size) - info.data_position) / info.block_align;
    char time[value_text_size] = {};
    FormatPlayTime(static_cast<double>(frames) / info.sample_rate, time);
    append_text(record->extra[1], message::estimated_time);
    append_text(record->extra[1], time);
    append_text(record->extra[1], "]");
}

void write_extra_lines(const WavFormatInfo& info, InfoRecord* record) {
    copy_text(record->extra[0], info.chunk_chain);
    record->extra_count = 1;
    if (info.beyond_2gb) {
        note_beyond_2gb(info, record);
    }
    if (info.format_tag == wav_tag_mpeg_layer3 && info.byte_rate == 0) {
        // Shares the line of the note above, but always counts as one more.
        append_text(record->extra[1], message::zero_byte_rate);
        ++record->extra_count;
    }
}

int describe(BlockReader* reader, InfoRecord* record) {
    WavFormatInfo info;
    WalkWaveChunks(reader, &info);
    set_play_time(info, record);

    char name[codec_name_size];
    find_codec_name(info, name);
    char line[line_size];
    format_plain_line(info, name, line);
    if (describe_dts(reader, info, line) != 0) {
        return 1;
    }
    if (info.format_tag == wav_tag_mpeg || info.format_tag == wav_tag_mpeg_layer3) {
        describe_mpeg_audio(reader, info, record, line);
    }
    copy_text(record->label, "[RIFF(WAVE)]");
    describe_origin(info, record);
    write_extra_lines(info, record);

    // The speakers matter more than what the data hold: such a line replaces any other.
    if (info.is_extended_pcm) {
        format_speaker_line(info, name, info.speakers, line);
    } else if (info.channels > 2) {
        char speakers[wav_speakers_size];
        speakers_of_count(info.channels, speakers);
        format_speaker_line(info, name, speakers, line);
        copy_text(record->label, "[RIFF(WAVE-EXT)]");
    }
    copy_text(record->audio[0], line);
    record->audio_count = 1;
    return 0;
}

} // namespace

int AnalyzeWavFile(FileRecord* file, const Output& out) {
    BlockReader reader;
    block_open(&reader, file);
    return describe(&reader, out.record);
}

} // namespace zat
