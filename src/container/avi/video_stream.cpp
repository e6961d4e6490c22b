#include "common/catalogue/codec_names.h"
#include "common/file/file_window.h"
#include "common/record/details.h"
#include "common/record/stream_lines.h"
#include "container/avi/stream_facts.h"
#include "video/bitmap_stream.h"
#include "video/divx_probe.h"
#include "video/dv.h"
#include "video/mpeg4_encoder.h"

#include <algorithm>

namespace zat::avi {

namespace {

constexpr double highest_frame_rate = 1000;
constexpr uint32_t video_format_size = 2048; // bytes of BITMAPINFOHEADER and codec data
constexpr uint32_t start_size = dv_start_size;
constexpr uint32_t first_search = 65536; // bytes in which most encoders show themselves
constexpr uint32_t interlaced_fields = 2;
constexpr uint8_t dv_code[] = {'d', 'v', 's', 'd'};

// Bytes of the audio as declared.
double audio_bytes(const Movie& movie) {
    double bytes = 0;
    for (uint32_t i = 0; i < movie.stream_count; ++i) {
        const Stream& stream = movie.streams[i];
        if (stream.type == fourcc("auds")) {
            bytes += stream.sample_size != 0
                         ? static_cast<double>(stream.length) * stream.sample_size
                         : stream.byte_rate * declared_time(movie, stream);
        }
    }
    return bytes;
}

bool is_only_video(const Movie& movie) {
    return std::count_if(movie.streams, movie.streams + movie.stream_count,
               [](const Stream& stream) { return stream.type == fourcc("vids"); }) == 1;
}

// What the media data holds besides the audio and the chunks' headers.
uint64_t rest_rate(const Source& source, const ZatStream& facts) {
    constexpr double header_size = 8;
    const double rest = static_cast<double>(source.movie->movi_bytes) - audio_bytes(*source.movie) -
                        header_size * static_cast<double>(facts.frames);
    return rest > 0 && is_only_video(*source.movie) ? mean_bit_rate(rest, facts.duration) : 0;
}

void set_rates(const Source& source, const Stream& stream, ZatStream* facts) {
    if (stream.rate != 0 && stream.scale != 0) {
        set_frame_rate(facts, stream.rate, stream.scale);
    } else if (source.movie->frame_time != 0) {
        set_frame_rate(facts, 1'000'000, source.movie->frame_time);
    }
    facts->frames = stream.length;
    facts->estimated |= source.estimated && facts->frames != 0 ? uint32_t{ZAT_ESTIMATED_FRAMES} : 0;
    facts->bit_rate = counted_rate(source, stream);
    if (!source.counted) {
        facts->bit_rate = rest_rate(source, *facts);
        facts->estimated |= facts->bit_rate != 0 ? uint32_t{ZAT_ESTIMATED_BIT_RATE} : 0;
    }
}

ZatStream video_facts(const Source& source, uint32_t number) {
    const Stream& stream = source.movie->streams[number];
    ZatStream facts = stream_facts(source, number, ZAT_STREAM_VIDEO);
    set_rates(source, stream, &facts);
    facts.scan = stream.fields == interlaced_fields ? ZAT_SCAN_INTERLACED : 0;
    return facts;
}

void add_divx_subtitle(const Source& source, uint32_t number, const BitmapInfo& info) {
    ZatStream facts = stream_facts(source, number, ZAT_STREAM_TEXT);
    set_fourcc_codec(&facts, ReadBE32(info.compression));
    copy_utf8(facts.codec, "DivX subtitle");
    add_text_stream(source.out, source.extra, facts, "DivX subtitle");
}

// The encoder of an MPEG-4 stream writes its name in front of the first pictures; the search goes
// on only when they are not there.
Bytes mpeg4_media(const Source& source, FileWindow* window) {
    const Span movi = source.movie->movi;
    const auto capacity =
        static_cast<uint32_t>(std::min<int64_t>(size_of(movi), divx_search_limit));
    window_open(window, source.reader->block.file, movi.start, capacity);
    window_load(window, std::min(capacity, first_search));
    if (!shows_mpeg4_encoder(window_bytes(window))) {
        window_load_all(window);
    }
    return window_bytes(window);
}

} // namespace

void add_video(const Source& source, uint32_t number) {
    const Stream& stream = source.movie->streams[number];
    uint8_t format[video_format_size];
    const uint32_t size = read_some(source.reader, stream.format, 0, format, sizeof format);
    BitmapStream bitmap;
    if (!read_bitmap_info({format, size}, &bitmap.info)) {
        std::copy_n(stream.handler, sizeof stream.handler, bitmap.info.compression);
    }
    const VideoFamily family = video_family(bitmap.info.compression);
    if (family == VideoFamily::divx_subtitle) {
        add_divx_subtitle(source, number, bitmap.info);
        return;
    }
    ZatStream facts = video_facts(source, number);
    uint8_t start[start_size];
    bitmap.start = {start, read_some(source.reader, stream.first_data, 0, start, sizeof start)};
    FileWindow window;
    if (family == VideoFamily::mpeg4) {
        bitmap.media = mpeg4_media(source, &window);
    }
    bitmap.display_width = stream.frame_aspect >> 16;
    bitmap.display_height = stream.frame_aspect & 0xFFFF;
    bitmap.highest_frame_rate = highest_frame_rate;
    add_bitmap_stream(source.out, bitmap, &facts);
}

void add_interleaved_dv(const Source& source, uint32_t number) {
    const Stream& stream = source.movie->streams[number];
    ZatStream video = video_facts(source, number);
    uint8_t start[start_size];
    BitmapStream bitmap;
    std::copy_n(dv_code, sizeof dv_code, bitmap.info.compression);
    bitmap.start = {start, read_some(source.reader, stream.first_data, 0, start, sizeof start)};
    bitmap.highest_frame_rate = highest_frame_rate;
    add_bitmap_stream(source.out, bitmap, &video);
    DvInfo info;
    if (read_dv_info(bitmap.start, &info) && info.sample_rate != 0) {
        ZatStream audio = stream_facts(source, number, ZAT_STREAM_AUDIO);
        audio.bytes = 0;
        set_dv_audio_facts(info, &audio);
        LineText text;
        text.codec = "PCM";
        text.bits = info.sample_bits;
        add_audio_stream(source.out, audio, text);
    }
}

} // namespace zat::avi
