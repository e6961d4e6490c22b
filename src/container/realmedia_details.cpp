#include "container/realmedia_details.h"

#include "common/catalogue/codec_names.h"
#include "common/record/details.h"
#include "common/text/text_codes.h"
#include "container/realaudio_header.h"

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

// Where `text` stands in the data, behind its length and, where it has one, its size. 0 without it.
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

void describe_audio(Bytes data, std::string_view mime, ZatStream* stream) {
    const size_t at = find_tag(data, ".ra\xFD");
    RealAudioHeader header;
    if (at == 0 || !read_realaudio_header(data.subspan(at), &header)) {
        if (mime == "audio/X-MP3-draft-00") {
            set_codec(stream, {"MP3"});
        }
        return;
    }
    realaudio_facts(header, stream);
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
    unknown_to_utf8(mime, stream.codec_id);
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
