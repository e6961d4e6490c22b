#include "video/bitmap_stream.h"

#include "common/catalogue/codec_names.h"
#include "common/record/stream_lines.h"
#include "video/av1_config.h"
#include "video/avc_config.h"
#include "video/dv.h"
#include "video/encoder_message.h"
#include "video/hevc_sps.h"
#include "video/mjpeg.h"
#include "video/mpeg4_encoder.h"
#include "video/stream_facts.h"
#include "video/vp8.h"
#include "video/vp9.h"

#include <algorithm>

namespace zat {

namespace {

// What the codec's headers say in the place of the container where that says nothing.
using Describer = void (*)(const BitmapStream& source, ZatStream* stream, VideoDescription* text);

// The container's figures over the codec's.
void keep(const ZatStream& told, ZatStream* stream) {
    if (told.width != 0 && told.height != 0) {
        stream->width = told.width;
        stream->height = told.height;
    }
    if (told.frame_rate != 0) {
        stream->frame_rate = told.frame_rate;
        stream->frame_rate_numerator = told.frame_rate_numerator;
        stream->frame_rate_denominator = told.frame_rate_denominator;
    }
    if (told.bit_rate != 0) {
        stream->bit_rate = told.bit_rate;
        stream->bit_rate_mode = told.bit_rate_mode;
    }
    if (told.scan != 0) {
        stream->scan = told.scan;
    }
    // The display aspect follows the size.
    set_pixel_aspect(stream, stream->pixel_aspect_width, stream->pixel_aspect_height);
}

// The encoder by the first picture, unless the container tells it.
void find_encoder(const BitmapStream& source, ZatStream* stream) {
    if (stream->encoder[0] == '\0') {
        set_message_encoder(source.start, stream);
    }
}

bool find_avc(const BitmapStream& source, AvcSequenceInfo* info) {
    constexpr uint8_t record_version = 1;
    AvcConfig config;
    const bool has_record = byte_at(source.info.codec_data, 0) == record_version &&
                            read_avc_config(source.info.codec_data, &config);
    return (has_record && read_avc_sps(config.first_sps, info)) ||
           find_avc_sps(source.info.codec_data, info) == 0 || find_avc_sps(source.start, info) == 0;
}

void describe_avc(const BitmapStream& source, ZatStream* stream, VideoDescription* text) {
    AvcSequenceInfo info;
    if (!find_avc(source, &info)) {
        return;
    }
    const ZatStream told = *stream;
    avc_facts(info, stream);
    keep(told, stream);
    find_encoder(source, stream);
    set_container_aspect(stream, source.display_width, source.display_height);
    if (source.display_width != 0) {
        set_aspect_text(*stream, &info);
    }
    char codec[video_codec_size];
    avc_codec_text(info, codec);
    copy_text(text->codec, bounded_text(codec));
    text->bits = info.bit_depth;
    text->shows_aspect = info.aspect[0] != '\0';
}

void describe_hevc(const BitmapStream& source, ZatStream* stream, VideoDescription* text) {
    HevcSequence sequence;
    if (!parse_hevc_config(source.info.codec_data, &sequence) &&
        !find_hevc_sps(source.info.codec_data, &sequence) &&
        !find_hevc_sps(source.start, &sequence)) {
        return;
    }
    set_hevc_facts(stream, sequence);
    find_encoder(source, stream);
    char codec[hevc_text_size];
    hevc_codec_text(sequence, codec);
    copy_text(text->codec, bounded_text(codec));
    text->bits = stream->bit_depth;
}

void describe_av1(const BitmapStream& source, ZatStream* stream, VideoDescription* text) {
    Av1Sequence sequence;
    if (!parse_av1_config(source.info.codec_data, &sequence) &&
        !parse_av1_units(source.start, &sequence)) {
        return;
    }
    set_av1_facts(stream, sequence);
    char codec[av1_text_size];
    av1_codec_text(sequence, codec);
    copy_text(text->codec, bounded_text(codec));
    text->bits = stream->bit_depth;
}

void describe_vp8(const BitmapStream& source, ZatStream* stream, VideoDescription* text) {
    Vp8Frame frame;
    parse_vp8_frame(source.start, &frame); // all streams have one depth
    set_vp8_facts(stream, frame);
    text->bits = stream->bit_depth;
}

void describe_vp9(const BitmapStream& source, ZatStream* stream, VideoDescription* text) {
    Vp9Sequence sequence;
    parse_vp9_features(source.info.codec_data, &sequence);
    parse_vp9_frame(source.start, &sequence);
    set_vp9_facts(stream, sequence);
    char codec[vp9_text_size];
    vp9_codec_text(sequence, codec);
    copy_text(text->codec, bounded_text(codec));
    text->bits = stream->bit_depth;
}

void describe_mpeg4(const BitmapStream& source, ZatStream* stream, VideoDescription* text) {
    const Bytes media = source.media.empty() ? source.start : source.media;
    Mpeg4Headers headers;
    // Sound may stand in front of the first picture, and look like a header.
    if (find_mpeg4_headers(source.info.codec_data, &headers) == 0 ||
        find_mpeg4_headers(source.start, &headers) == 0 ||
        find_mpeg4_headers(media, &headers) == 0) {
        const ZatStream told = *stream;
        mpeg4_facts(headers, stream);
        keep(told, stream);
        text->shows_aspect = stream->pixel_aspect_width != 0;
    }
    if (!source.name.empty()) {
        char codec[video_codec_size];
        mpeg4_codec_text(headers, codec);
        copy_text(text->codec, headers.vol_found ? bounded_text(codec) : source.name);
        return;
    }
    char name[mpeg4_encoder_size];
    name_mpeg4_encode(source.info.codec_data, media, source.info.compression, name, stream);
    copy_text(text->codec, bounded_text(name));
}

// The bytes with the headers: the codec data, or the first picture where those are not there or
// lack the sequence extension that it has.
Bytes find_mpeg_video(const BitmapStream& source, MpegVideoHeaders* headers) {
    const bool in_data = find_mpeg_video_headers(source.info.codec_data, headers) == 0;
    if (in_data && headers->extension_found) {
        return source.info.codec_data;
    }
    MpegVideoHeaders of_picture;
    if (find_mpeg_video_headers(source.start, &of_picture) == 0 &&
        (!in_data || of_picture.extension_found)) {
        *headers = of_picture;
        return source.start;
    }
    return source.info.codec_data;
}

void describe_mpeg_video(const BitmapStream& source, ZatStream* stream, VideoDescription* text) {
    MpegVideoHeaders headers;
    const Bytes bytes = find_mpeg_video(source, &headers);
    if (!headers.header_found) {
        return;
    }
    // A container that tells the two apart is right where no extension was kept.
    headers.extension_found = headers.extension_found || source.name == "MPEG2";
    const ZatStream told = *stream;
    mpeg_video_facts(headers, stream);
    keep(told, stream);
    if (headers.extension_found) {
        mpeg2_video_line(bytes, text->line);
    } else {
        mpeg1_video_line(headers.header, text->line);
    }
}

void describe_vc1(const BitmapStream& source, ZatStream* stream, VideoDescription* text) {
    Vc1Sequence sequence;
    if (find_vc1_sequence(source.info.codec_data, &sequence) != 0 &&
        find_vc1_sequence(source.start, &sequence) != 0) {
        return;
    }
    const ZatStream told = *stream;
    vc1_facts(sequence, stream);
    keep(told, stream);
    char codec[video_codec_size];
    vc1_codec_text(sequence, codec);
    copy_text(text->codec, bounded_text(codec));
}

// STRUCT_C (SMPTE 421M, annex J) tells the profile of WMV3.
void describe_wmv3(const BitmapStream& source, ZatStream* stream, VideoDescription* text) {
    Vc1Sequence sequence;
    if (read_vc1_struct_c(&sequence, source.info.codec_data) == 0) {
        const char* profile = vc1_profile_name(sequence.profile);
        copy_utf8(stream->profile, profile);
        stream->bit_depth = 8;
        copy_utf8(stream->chroma, "4:2:0");
        video_code_name(source.info.compression, text->codec, sizeof text->codec);
        if (source.shows_wmv3_profile) {
            AppendWithSeparator(text->codec, profile, separator_space);
        }
    }
}

void describe_mjpeg(const BitmapStream& source, ZatStream* stream, VideoDescription* text) {
    MjpegInfo info;
    const bool found = read_mjpeg_info(source.start, &info);
    const bool has_fields = info.polarity == 1 || info.polarity == 2;
    if (has_fields && stream->scan == 0) {
        stream->scan = ZAT_SCAN_INTERLACED;
        stream->field_order = info.polarity == 1 ? ZAT_FIELD_TOP : ZAT_FIELD_BOTTOM;
    }
    if (!found) {
        return;
    }
    if (stream->width == 0 || stream->height == 0) {
        stream->width = info.frame.width;
        stream->height = has_fields ? info.frame.height * 2 : info.frame.height;
    }
    stream->bit_depth = info.frame.bit_depth;
    copy_utf8(stream->chroma, info.frame.chroma);
    text->bits = info.frame.bit_depth;
}

void describe_dv(const BitmapStream& source, ZatStream* stream, VideoDescription* text) {
    DvInfo info;
    if (!read_dv_info(source.start, &info)) {
        return;
    }
    text->hides_scan = stream->scan == 0;
    set_dv_facts(info, stream);
}

void describe_raw(const BitmapStream& source, ZatStream* stream, VideoDescription* text) {
    text->bits = raw_pixel_bits(source.info);
    const bool is_rgb = source.info.compression[0] <= 3;
    if (is_rgb && text->bits >= 24) {
        stream->bit_depth = 8;
    }
}

struct Row {
    VideoFamily family;
    Describer describe;
};

constexpr Row rows[] = {
    {VideoFamily::raw, describe_raw},
    {VideoFamily::mpeg4, describe_mpeg4},
    {VideoFamily::avc, describe_avc},
    {VideoFamily::hevc, describe_hevc},
    {VideoFamily::av1, describe_av1},
    {VideoFamily::vp8, describe_vp8},
    {VideoFamily::vp9, describe_vp9},
    {VideoFamily::mpeg12, describe_mpeg_video},
    {VideoFamily::vc1, describe_vc1},
    {VideoFamily::wmv3, describe_wmv3},
    {VideoFamily::mjpeg, describe_mjpeg},
    {VideoFamily::dv, describe_dv},
};

} // namespace

void describe_bitmap_stream(
    const BitmapStream& source, ZatStream* stream, VideoDescription* description) {
    if (stream->codec[0] == '\0') {
        set_fourcc_codec(stream, ReadBE32(source.info.compression));
    }
    if (stream->width == 0 || stream->height == 0) {
        stream->width = source.info.width;
        stream->height = source.info.height;
    }
    const VideoFamily family = video_family(source.info.compression);
    for (const Row& row : rows) {
        if (row.family == family) {
            row.describe(source, stream, description);
        }
    }
    if (description->codec[0] == '\0') {
        copy_text(description->codec, source.name);
    }
    if (description->codec[0] == '\0') {
        video_code_name(source.info.compression, description->codec, sizeof description->codec);
    }
    set_container_aspect(stream, source.display_width, source.display_height);
}

void add_described_stream(const Output& out, const BitmapStream& source,
    const VideoDescription& description, ZatStream* stream) {
    drop_nonsense(stream, source.highest_frame_rate);
    if (description.line[0] != '\0') {
        add_stream_line(out, *stream, bounded_text(description.line));
        return;
    }
    LineText line;
    line.codec = bounded_text(description.codec);
    line.bits = description.bits;
    line.highest_frame_rate = source.highest_frame_rate;
    if (!description.shows_aspect && source.display_width != 0 && is_stretched(*stream)) {
        const DisplaySize size =
            description.display.width != 0 ? description.display : square_size(*stream);
        line.display_width = size.width;
        line.display_height = size.height;
    }
    if (description.hides_scan) {
        ZatStream shown = *stream;
        shown.scan = 0;
        char generic[line_size];
        format_video_line(shown, line, generic);
        add_stream_line(out, *stream, bounded_text(generic));
        return;
    }
    add_video_stream(out, *stream, line);
}

void add_bitmap_stream(const Output& out, const BitmapStream& source, ZatStream* stream) {
    VideoDescription description;
    describe_bitmap_stream(source, stream, &description);
    add_described_stream(out, source, description, stream);
}

} // namespace zat
