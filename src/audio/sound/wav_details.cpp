#include "audio/sound/wav_details.h"

#include "audio/stream_facts.h"
#include "common/bytes/bytes.h"
#include "common/record/details.h"
#include "common/record/stream_lines.h"
#include "common/tags/info_list.h"
#include "common/text/text.h"

#include <algorithm>
#include <limits>

namespace zat {

namespace {

// Writers that cannot go back announce this much and more.
constexpr int64_t open_size = 0x7FFFFF00;

constexpr uint16_t sample_tags[] = {
    wave_tag_pcm, 0x0003 /* float */, 0x0006, 0x0007 /* A-law, mu-law */};

// Bytes of one sample of every channel; 0 in formats without such blocks.
uint32_t sample_block(const WaveFormat& format) {
    const bool has_blocks = std::find(std::begin(sample_tags), std::end(sample_tags),
                                codec_tag(format)) != std::end(sample_tags);
    return has_blocks ? sample_block_size(format) : 0;
}

// Samples per channel by the "fact" chunk. Encoders are known to write too few for the blocks of
// IMA and MS ADPCM, which tell the samples that each of them holds.
uint64_t told_samples(const WavChunks& chunks, int64_t announced) {
    const WaveFormat& format = chunks.format;
    const uint16_t tag = codec_tag(format);
    if ((tag != wave_tag_ms_adpcm && tag != wave_tag_ima_adpcm) || format.extension_size < 2 ||
        format.block_align == 0) {
        return chunks.samples;
    }
    const uint32_t block_samples = format.valid_bits; // wSamplesPerBlock in its place
    const uint64_t by_blocks =
        static_cast<uint64_t>(announced) / format.block_align * block_samples;
    return chunks.samples <= by_blocks / 2 ? by_blocks : chunks.samples;
}

// Whether a recording was broken off: neither size was filled in after the header was written.
bool was_not_closed(Reader* reader, const WavChunks& chunks) {
    constexpr int64_t riff_header_size = 8;
    if (chunks.form != WaveForm::riff || chunks.data_size != 0) {
        return false;
    }
    const Bytes start = read_view(reader, whole_file(reader), 0, riff_header_size);
    return start.size() == riff_header_size &&
           ReadLE32(start.data() + 4) + riff_header_size <= chunks.data_position;
}

// The data chunk's bytes, as announced, where that can be.
int64_t announced_bytes(Reader* reader, const WavChunks& chunks, int64_t available) {
    if (was_not_closed(reader, chunks)) {
        return std::max<int64_t>(available, 0);
    }
    const auto most = static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
    const auto announced = static_cast<int64_t>(std::min(chunks.data_size, most));
    const bool is_open = chunks.form == WaveForm::riff && announced >= open_size;
    return is_open ? std::min(announced, available) : announced;
}

void set_figures(const WavChunks& chunks, int64_t announced, int64_t available, ZatStream* stream) {
    const WaveFormat& format = chunks.format;
    if (const uint32_t block = sample_block(format); block != 0) {
        stream->samples = static_cast<uint64_t>(announced) / block;
        stream->bit_rate_mode = ZAT_BIT_RATE_CONSTANT;
        stream->bit_rate = uint64_t{block} * format.sample_rate * 8;
    } else if (stream->samples == 0) {
        stream->samples = told_samples(chunks, announced);
    }
    if (stream->duration == 0 && stream->samples != 0 && format.sample_rate != 0) {
        stream->duration = static_cast<double>(stream->samples) / format.sample_rate;
    }
    const int64_t present = std::min(announced, available);
    complete_by_bytes(announced, stream);
    stream->bytes = static_cast<uint64_t>(present);
}

std::string_view format_profile(const WavChunks& chunks) {
    switch (chunks.form) {
    case WaveForm::rf64:
        return "RF64";
    case WaveForm::bw64:
        return "BW64";
    default:
        return chunks.broadcast ? "BWF" : "";
    }
}

void write_tags(Reader* reader, const WavChunks& chunks, ZatDetails* details) {
    TagTexts texts;
    TagText writer = {};
    read_id3v2_texts(reader, chunks.id3v2, &texts);
    TagTexts info;
    read_info_list(reader, chunks.info_list, &info, writer);
    complete_texts(&texts, info);
    tag_details(texts, details);
    copy_utf8(details->writer, bounded_text(writer));
}

} // namespace

void write_wav_details(
    Reader* reader, const WavChunks& chunks, ZatStream* stream, ZatDetails* details) {
    copy_utf8(details->format, chunks.form == WaveForm::wave64 ? "Wave64" : "WAV");
    copy_utf8(details->format_profile, format_profile(chunks));
    write_tags(reader, chunks, details);

    const int64_t available = whole_file(reader).end - chunks.data_position;
    const int64_t announced = announced_bytes(reader, chunks, available);
    if (chunks.fmt_size == 0) {
        return;
    }
    if (stream->codec[0] == '\0') {
        wave_facts(chunks.format, stream);
        set_figures(chunks, announced, available, stream);
    } else {
        format_text(stream->codec_id, sizeof stream->codec_id, "0x%04x", codec_tag(chunks.format));
        const uint32_t block = sample_block(chunks.format);
        if (block != 0 && chunks.format.sample_rate != 0) {
            // A stream passed off as PCM plays at PCM's speed.
            const int64_t frames = announced / block;
            stream->duration = static_cast<double>(frames) / chunks.format.sample_rate;
        }
        complete_by_bytes(announced, stream);
        stream->bytes = static_cast<uint64_t>(std::min(announced, available));
    }
    // The play time is no better: it takes a size that was left open for one.
    details->duration =
        stream->duration > 0 ? stream->duration : std::numeric_limits<double>::quiet_NaN();
    details->estimated = stream->estimated & uint32_t{ZAT_ESTIMATED_DURATION};
    if (announced > available) {
        note_missing_bytes(details, static_cast<uint64_t>(announced - available));
    }
    drop_nonsense(stream);
}

} // namespace zat
