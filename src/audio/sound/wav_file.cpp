#include "audio/sound/wav_file.h"

#include "audio/first_frame.h"
#include "audio/sound/wav_details.h"
#include "audio/sound/wav_speakers.h"
#include "audio/stream_facts.h"
#include "common/catalogue/codec_catalogue.h"
#include "common/record/stream_lines.h"
#include "common/text/messages.h"
#include "common/text/text.h"
#include "common/text/value_text.h"

#include <cstring>

namespace zat {

namespace {

constexpr size_t extra_info_size = 256; // bytes used of the extra-info text, terminator included

void set_play_time(const WavChunks& chunks, InfoRecord* record) {
    if (chunks.format.tag == wave_tag_pcm) {
        if (chunks.format.block_align != 0 && chunks.format.sample_rate != 0) {
            const uint64_t frames = chunks.data_size / chunks.format.block_align;
            record->play_time = static_cast<double>(frames) / chunks.format.sample_rate;
        }
    } else if (chunks.format.byte_rate != 0) {
        record->play_time = static_cast<double>(chunks.data_size) / chunks.format.byte_rate;
    }
}

void find_codec_name(const WavChunks& chunks, char (&name)[codec_name_size]) {
    if (chunks.format.tag == wave_tag_extensible && chunks.fmt_size > wave_plain_size) {
        wave_guid_name(chunks.format.guid, name);
    } else {
        wave_tag_name(chunks.format.tag, name);
    }
}

// PCM in a format with an extension, which gives its speakers.
bool is_extended_pcm(const WavChunks& chunks) {
    return chunks.format.tag == wave_tag_pcm && chunks.fmt_size > wave_plain_size &&
           chunks.format.extension_size != 0;
}

double kilobits_per_second(const WavChunks& chunks) {
    return chunks.format.byte_rate * 8.0 * 0.001;
}

void format_plain_line(const WavChunks& chunks, const char* name, char (&line)[line_size]) {
    format_text(line, line_size, "[%s] %dHz %dch %.2fkbps %dBit [fmt:%dByte]", name,
        static_cast<int32_t>(chunks.format.sample_rate), chunks.format.channels,
        kilobits_per_second(chunks), chunks.format.bits_per_sample,
        static_cast<int32_t>(chunks.fmt_size));
}

void format_speaker_line(
    const WavChunks& chunks, const char* name, const char* speakers, char (&line)[line_size]) {
    format_text(line, line_size, "[%s] %dHz %dch(%s) %.2fkbps %dBit [fmt:%dByte]", name,
        static_cast<int32_t>(chunks.format.sample_rate), chunks.format.channels, speakers,
        kilobits_per_second(chunks), chunks.format.bits_per_sample,
        static_cast<int32_t>(chunks.fmt_size));
}

// Describes a DTS stream at the data position, whatever the format tag says: players of such files
// pass it through as PCM. Returns 0 when there is none or its line is written, 1 when its header is
// damaged.
int describe_dts(
    Reader* reader, const WavChunks& chunks, ZatStream* stream, char (&line)[line_size]) {
    const Bytes start =
        read_view(reader, whole_file(reader), chunks.data_position, dts_frame_start_size);
    return dts_sync_type(start) == dts_none || describe_dts_frame(start, stream, line) ? 0 : 1;
}

// Writes the line and the play time of an MPEG audio stream when the data begin with a frame. No
// syncword is asked for: the format tag has told.
void describe_mpeg_audio(Reader* reader, const WavChunks& chunks, InfoRecord* record,
    ZatStream* stream, char (&line)[line_size]) {
    const Bytes frame =
        read_view(reader, whole_file(reader), chunks.data_position, vbr_header_reach);
    MpegAudioInfo mpeg;
    if (read_mpeg_audio_header(frame, &mpeg) != 0 || ParseVbrHeader(frame, &mpeg) != 0) {
        return;
    }
    mpeg_audio_facts(mpeg, stream);
    FormatMpegAudioLine(&mpeg, line);
    record->play_time = static_cast<double>(
        static_cast<float>(chunks.data_size) / (static_cast<float>(mpeg.bitrate * 1000) * 0.125F));
}

// The label, and what lossyWAV says of itself: "lossyWAV <version>: ... -cbs <size> ...".
void describe_origin(const WavChunks& chunks, InfoRecord* record) {
    const std::string_view text = bounded_text(chunks.description);
    if (text.starts_with("BWF")) {
        copy_text(record->label, "[RIFF(WAVE-BWF)]");
    } else if (text.starts_with("lossyWA")) {
        char parameter[sizeof chunks.description] = {};
        const size_t at = text.find("-cbs");
        if (at != std::string_view::npos && at + 5 < text.size()) {
            const std::string_view rest = text_from(text, at + 5);
            copy_text(parameter, rest.substr(0, rest.find(' ')));
        }
        format_text(record->label, sizeof record->label, "[RIFF(lossyWAV(%s))]", parameter);
        copy_text(record->extra_info, extra_info_size, text.substr(0, text.find(':')));
    }
}

// The play time that the bytes up to the file's end would have, as the chunk's size cannot say it.
void note_beyond_2gb(const WavChunks& chunks, InfoRecord* record) {
    copy_text(record->extra[1], message::beyond_2gb);
    record->extra_count = 2;
    if (chunks.format.block_align == 0 || chunks.format.sample_rate == 0) {
        return;
    }
    const int64_t frames = (static_cast<int64_t>(record->file_size) - chunks.data_position) /
                           chunks.format.block_align;
    char time[value_text_size] = {};
    FormatPlayTime(static_cast<double>(frames) / chunks.format.sample_rate, time);
    append_text(record->extra[1], message::estimated_time);
    append_text(record->extra[1], time);
    append_text(record->extra[1], "]");
}

void write_extra_lines(const WavChunks& chunks, InfoRecord* record) {
    copy_text(record->extra[0], chunks.chain.text);
    record->extra_count = 1;
    if (chunks.beyond_2gb) {
        note_beyond_2gb(chunks, record);
    }
    if (chunks.format.tag == wave_tag_mpeg_layer3 && chunks.format.byte_rate == 0) {
        // Shares the line of the note above, but always counts as one more.
        append_text(record->extra[1], message::zero_byte_rate);
        ++record->extra_count;
    }
}

int describe(Reader* reader, const Output& out) {
    InfoRecord* record = out.record;
    WavChunks chunks;
    WalkWaveChunks(reader, &chunks);
    set_play_time(chunks, record);

    char name[codec_name_size];
    find_codec_name(chunks, name);
    ZatStream stream = new_stream(ZAT_STREAM_AUDIO);
    char line[line_size];
    format_plain_line(chunks, name, line);
    if (describe_dts(reader, chunks, &stream, line) != 0) {
        return 1;
    }
    if (chunks.format.tag == wave_tag_mpeg || chunks.format.tag == wave_tag_mpeg_layer3) {
        describe_mpeg_audio(reader, chunks, record, &stream, line);
    }
    copy_text(record->label, "[RIFF(WAVE)]");
    describe_origin(chunks, record);
    write_extra_lines(chunks, record);

    // The speakers matter more than what the data hold: such a line replaces any other.
    char speakers[wav_speakers_size];
    if (is_extended_pcm(chunks)) {
        speakers_of_mask(chunks.format.channel_mask, speakers);
        format_speaker_line(chunks, name, speakers, line);
    } else if (chunks.format.channels > 2) {
        speakers_of_count(chunks.format.channels, speakers);
        format_speaker_line(chunks, name, speakers, line);
        copy_text(record->label, "[RIFF(WAVE-EXT)]");
    }
    if (chunks.form != WaveForm::riff) {
        copy_text(record->label, chunks.form == WaveForm::wave64 ? "[Wave64]" : "[RIFF64(WAVE)]");
    }
    if (out.details != nullptr) {
        write_wav_details(reader, chunks, &stream, out.details);
    }
    set_stream_line(out, stream, line);
    return 0;
}

} // namespace

int AnalyzeWavFile(FileRecord* file, const Output& out) {
    Reader reader;
    reader_open(&reader, file);
    const int result = describe(&reader, out);
    note_work_limit(out, reader);
    return result;
}

} // namespace zat
