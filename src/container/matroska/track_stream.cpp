#include "container/matroska/track_stream.h"

#include "common/record/details.h"
#include "common/text/text.h"

#include <algorithm>
#include <cstring>

namespace zat::matroska {

namespace {

void copy_text_of(const Source& source, Span text, char* out, size_t size) {
    Element element;
    element.data = text;
    read_text(source.reader, element, out, size);
}

// Copies bytes behind the prefix that was stripped.
Bytes read_with_prefix(const Source& source, const Encodings& encodings, bool strips, Span data,
    uint8_t* buffer, uint32_t size) {
    const uint32_t prefix = strips ? std::min(encodings.prefix_size, size) : 0;
    std::memcpy(buffer, encodings.prefix, prefix);
    const uint32_t read = read_some(source.reader, data, 0, buffer + prefix, size - prefix);
    return {buffer, prefix + read};
}

} // namespace

ZatStream track_stream(const Source& source, const Track& track, ZatStreamKind kind) {
    ZatStream stream = new_stream(kind);
    stream.id = track.number;
    stream.flags = track.flags;
    copy_utf8(stream.codec_id, bounded_text(track.codec_id));
    const Codec* codec = find_codec(bounded_text(track.codec_id));
    if (codec != nullptr) {
        set_codec(&stream, codec->name);
    } else {
        copy_utf8(stream.codec, bounded_text(track.codec_id));
    }
    // Tracks without a language are English by the element's default value, which counts where the
    // file's writer cared for languages at all.
    copy_utf8(stream.language, track.language_told      ? bounded_text(track.language)
                               : source.names_languages ? "eng"
                                                        : "");
    copy_text_of(source, track.name, stream.title, sizeof stream.title);
    copy_text_of(source, track.encoder, stream.encoder, sizeof stream.encoder);
    stream.duration = known_duration(track.statistics.duration);
    stream.bytes = track.statistics.bytes;
    if (source.segment->counted) {
        stream.bytes = track.counts.bytes;
        stream.flags |= track.counts.blocks == 0 ? uint32_t{ZAT_FLAG_NO_DATA} : 0;
        if (stream.duration == 0) {
            stream.duration = counted_duration(*source.segment, track);
        }
        if (track.counts.blocks != 0) {
            stream.start =
                seconds_of(*source.segment, static_cast<double>(track.counts.first_time));
        }
    }
    set_bit_rate(source, track, &stream);
    return stream;
}

void set_bit_rate(const Source& source, const Track& track, ZatStream* stream) {
    if (track.statistics.bit_rate != 0) {
        stream->bit_rate = track.statistics.bit_rate;
        return;
    }
    const double seconds = counted_duration(*source.segment, track);
    if (seconds > 0) {
        stream->bit_rate = mean_bit_rate(static_cast<double>(track.counts.bytes), seconds);
        stream->estimated |= source.segment->counted ? 0 : uint32_t{ZAT_ESTIMATED_BIT_RATE};
    }
}

Bytes read_private(const Source& source, const Track& track, uint8_t* buffer, uint32_t size) {
    return track.encodings.private_packed
               ? Bytes{}
               : read_with_prefix(source, track.encodings, track.encodings.strips_private,
                     track.codec_private, buffer, size);
}

Bytes read_first_frame(const Source& source, const Track& track, uint8_t* buffer, uint32_t size) {
    return track.encodings.frames_packed || track.counts.blocks == 0
               ? Bytes{}
               : read_with_prefix(source, track.encodings, track.encodings.strips_frames,
                     track.counts.first_frame, buffer, size);
}

Bytes first_xiph_packet(Bytes packets) {
    if (packets.empty()) {
        return {};
    }
    size_t at = 1;
    size_t first = 0;
    for (uint32_t i = 0; i < packets[0]; ++i) {
        uint8_t byte = 255;
        while (byte == 255 && at < packets.size()) {
            byte = packets[at++];
            first += i == 0 ? byte : 0;
        }
    }
    const Bytes rest = packets.subspan(at);
    return packets[0] == 0 ? rest : rest.first(std::min(first, rest.size()));
}

bool wants_first_frame(const Track& track) {
    const Codec* codec = find_codec(bounded_text(track.codec_id));
    if (codec == nullptr || track.encodings.frames_packed) {
        return false;
    }
    const bool has_private = size_of(track.codec_private) != 0;
    switch (codec->parser) {
    case Parser::code:
        return !has_private || codec->id == "V_VP8" || codec->id == "V_MJPEG";
    case Parser::vfw:
    case Parser::acm:
    case Parser::mpeg_audio:
    case Parser::ac3:
    case Parser::eac3:
    case Parser::dts:
    case Parser::truehd:
        return true;
    default:
        return false;
    }
}

bool wants_counted_rate(const Track& track) {
    const Codec* codec = find_codec(bounded_text(track.codec_id));
    if (track.type != track_audio || track.statistics.bit_rate != 0) {
        return false;
    }
    switch (codec != nullptr ? codec->parser : Parser::plain) {
    case Parser::plain:
    case Parser::opus:
    case Parser::flac:
    case Parser::alac:
    case Parser::lossless:
        return true;
    default:
        return false; // their headers tell one, or their line shows no estimate
    }
}

void add_other(const Source& source, uint32_t index) {
    const Track& track = source.segment->tracks[index];
    ZatStream stream = track_stream(
        source, track, track.type == track_subtitle ? ZAT_STREAM_TEXT : ZAT_STREAM_DATA);
    const Codec* codec = find_codec(bounded_text(track.codec_id));
    add_text_stream(source.out, source.extra, stream,
        codec != nullptr ? codec->text : bounded_text(stream.codec_id));
}

} // namespace zat::matroska
