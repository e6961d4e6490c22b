#include "container/realmedia_details.h"

#include "common/codec_names.h"
#include "common/details.h"
#include "common/text.h"
#include "common/text_codes.h"

#include <algorithm>
#include <string_view>

namespace zat {

namespace {

// Offsets in a media properties chunk; times are milliseconds.
constexpr size_t number_at = 10;
constexpr size_t average_rate_at = 16;
constexpr size_t start_at = 28;
constexpr size_t duration_at = 36;

std::string_view counted_text(Bytes chunk, size_t at) {
    const size_t length = byte_at(chunk, at);
    return at + 1 + length <= chunk.size()
               ? std::string_view{reinterpret_cast<const char*>(chunk.data() + at + 1), length}
               : std::string_view{};
}

bool has(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

ZatStreamKind kind_of(std::string_view name, std::string_view mime) {
    if (mime.starts_with("video/") || has(name, "Video")) {
        return ZAT_STREAM_VIDEO;
    }
    return mime.starts_with("audio/") || has(name, "Audio") ? ZAT_STREAM_AUDIO : ZAT_STREAM_DATA;
}

// Whether `text` stands in the data behind its length and, where it has one, its size.
size_t find_tag(Bytes data, std::string_view text) {
    for (const size_t at : {size_t{4}, size_t{8}}) {
        if (data.size() > at + text.size() &&
            std::equal(text.begin(), text.end(), data.begin() + static_cast<std::ptrdiff_t>(at),
                [](char a, uint8_t b) { return static_cast<uint8_t>(a) == b; })) {
            return at;
        }
    }
    return 0;
}

void describe_video(Bytes data, ZatStream* stream) {
    constexpr size_t fields_size = 22; // tag, codec, size, depth, padding, rate
    const size_t at = find_tag(data, "VIDO");
    if (at == 0 || data.size() < at + fields_size) {
        return;
    }
    const uint8_t* codec = data.data() + at + 4;
    set_fourcc_codec(stream, ReadBE32(codec));
    stream->width = ReadBE16(codec + 4);
    stream->height = ReadBE16(codec + 6);
    stream->frame_rate = ReadBEFixed16_16(codec + 14);
}

// The headers of RealAudio, from their length on, as far as they differ by version.
struct AudioLayout {
    uint16_t version;
    size_t rate_at;
    size_t bits_at;
    size_t channels_at;
    size_t codec_at;
};

// Of version 4 the codec stands behind the interleaver, both counted texts of four bytes.
constexpr AudioLayout audio_layouts[] = {{4, 50, 54, 58, 66}, {5, 52, 60, 64, 70}};

void describe_audio(Bytes data, std::string_view mime, ZatStream* stream) {
    constexpr size_t header_size = 74;
    const size_t at = find_tag(data, ".ra\xFD");
    if (at == 0 || data.size() < at + header_size) {
        if (mime == "audio/X-MP3-draft-00") {
            set_codec(stream, {"MP3"});
        }
        return;
    }
    const uint8_t* header = data.data() + at - 4;
    const uint16_t version = ReadBE16(header + 8);
    if (version == 3) {
        set_fourcc_codec(stream, ReadBE32(reinterpret_cast<const uint8_t*>("14_4")));
        stream->sample_rate = 8000;
        stream->channels = 1;
        return;
    }
    for (const AudioLayout& layout : audio_layouts) {
        if (layout.version != version) {
            continue;
        }
        stream->sample_rate = ReadBE32(header + layout.rate_at);
        stream->channels = ReadBE16(header + layout.channels_at);
        set_fourcc_codec(stream, ReadBE32(header + layout.codec_at));
        if ((stream->flags & ZAT_FLAG_LOSSLESS) != 0) {
            stream->bit_depth = ReadBE32(header + layout.bits_at);
        }
    }
}

// Nonsense of a damaged header is not known.
void check(ZatStream* stream) {
    constexpr uint32_t highest_sample_rate = 1'000'000;
    constexpr uint32_t most_channels = 64;
    constexpr double highest_frame_rate = 240;
    stream->sample_rate = stream->sample_rate > highest_sample_rate ? 0 : stream->sample_rate;
    stream->channels = stream->channels > most_channels ? 0 : stream->channels;
    stream->frame_rate = stream->frame_rate > highest_frame_rate ? 0 : stream->frame_rate;
}

} // namespace

void describe_realmedia_stream(const RealMediaStreamHead& head, ZatDetails* details) {
    const std::string_view name = counted_text(head.chunk, head.name_at);
    const std::string_view mime = counted_text(head.chunk, head.mime_at);
    if (mime.starts_with("logical-") || head.data_at > head.chunk.size()) {
        return;
    }
    ZatStream stream = new_stream(kind_of(name, mime));
    const uint8_t* chunk = head.chunk.data();
    stream.id = ReadBE16(chunk + number_at);
    stream.bit_rate = ReadBE32(chunk + average_rate_at);
    stream.start = ReadBE32(chunk + start_at) * 0.001;
    stream.duration = ReadBE32(chunk + duration_at) * 0.001;
    copy_utf8(stream.codec_id, mime);
    const Bytes data = head.chunk.subspan(head.data_at);
    if (stream.kind == ZAT_STREAM_VIDEO) {
        describe_video(data, &stream);
    } else if (stream.kind == ZAT_STREAM_AUDIO) {
        describe_audio(data, mime, &stream);
    }
    check(&stream);
    add_stream(details, stream);
}

void describe_realmedia_content(Bytes chunk, ZatDetails* details) {
    constexpr size_t texts_at = 10;
    size_t at = texts_at;
    for (char(*out)[256] : {&details->title, &details->artist}) {
        if (at + 2 > chunk.size()) {
            return;
        }
        const size_t length = std::min<size_t>(ReadBE16(chunk.data() + at), chunk.size() - at - 2);
        unknown_to_utf8({reinterpret_cast<const char*>(chunk.data() + at + 2), length}, *out);
        at += 2 + length;
    }
}

} // namespace zat
