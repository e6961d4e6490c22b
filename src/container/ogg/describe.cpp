#include "container/ogg/describe.h"

#include "audio/first_frame.h"
#include "audio/stream_facts.h"
#include "audio/vorbis.h"
#include "audio/wave_format.h"
#include "audio/wave_stream.h"
#include "common/bytes/numbers.h"
#include "common/record/details.h"
#include "common/record/stream_lines.h"
#include "common/text/text_codes.h"
#include "container/ogg/codings.h"
#include "video/bitmap_stream.h"
#include "video/container_aspect.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace zat::ogg {

namespace {

// Nothing is nonsense in a rate that Ogg gives as a ratio, up to this.
constexpr double highest_frame_rate = 1000;

// Bit rates as they are told; 0 without one.
uint64_t nominal_bit_rate(const LogicalStream& stream) {
    switch (stream.coding) {
    case Coding::vorbis: {
        const uint32_t rate = vorbis_bitrate(&stream.vorbis);
        return rate <= INT32_MAX ? rate : 0;
    }
    case Coding::speex:
        return static_cast<uint64_t>(std::max(stream.speex.bit_rate, 0));
    case Coding::theora:
        return stream.theora.bit_rate;
    case Coding::ogm_audio:
        return uint64_t{ReadLE32(stream.head + 49)} * 8;
    default:
        return 0;
    }
}

// Of a large file only this stream's bytes can be told, as those that no other one claims.
uint64_t remaining_bit_rate(const Walk& walk, const LogicalStream& stream) {
    const double seconds = link_seconds(walk.first) + walk.later_seconds;
    const int64_t bytes = walk.reader.block.file->size - walk.start;
    double rate =
        divide((static_cast<double>(bytes) - static_cast<double>(walk.trailing)) * 8, seconds);
    for (int32_t i = 0; i < walk.first.count; ++i) {
        const LogicalStream& other = walk.first.streams[i];
        const ZatStreamKind kind = kind_of(other.coding);
        if (&other == &stream || (kind != ZAT_STREAM_AUDIO && kind != ZAT_STREAM_VIDEO)) {
            continue;
        }
        const uint64_t nominal = nominal_bit_rate(other);
        if (nominal == 0) {
            return 0;
        }
        rate -= static_cast<double>(nominal);
    }
    return std::isfinite(rate) && rate > 0 ? clamp_to_integer<uint64_t>(rate + 0.5) : 0;
}

// Goes to the first packet of OGM's data, behind a byte with flags, of which the lowest marks
// headers, and as many bytes of a length as bits 6, 7 and 1 count. Returns how many those are, 0
// without such a packet.
uint32_t find_ogm_data(Reader* reader, const LogicalStream& stream, PacketCursor* cursor) {
    constexpr int packets_looked_at = 4;
    start_packet(cursor, reader, stream.first_page, 0);
    for (int i = 0; i < packets_looked_at && next_packet(cursor); ++i) {
        uint8_t flags = 0;
        if (read_packet(cursor, &flags, 1) == 1 && (flags & 1) == 0) {
            const uint32_t length_size = uint32_t{flags} >> 6 | (flags & 2U) << 1;
            read_packet(cursor, nullptr, length_size);
            return 1 + length_size;
        }
    }
    return 0;
}

uint32_t read_ogm_start(
    Reader* reader, const LogicalStream& stream, uint8_t* start, uint32_t size) {
    PacketCursor cursor;
    return find_ogm_data(reader, stream, &cursor) != 0 ? read_packet(&cursor, start, size) : 0;
}

// What the pages hold, without what stands in front of the data in OGM's packets.
uint64_t data_bytes(Reader* reader, const LogicalStream& stream) {
    if (stream.coding != Coding::ogm_video && stream.coding != Coding::ogm_audio) {
        return stream.bytes;
    }
    PacketCursor cursor;
    const uint64_t heads = uint64_t{find_ogm_data(reader, stream, &cursor)} * stream.data_packets;
    return stream.bytes - std::min(stream.bytes, heads);
}

void set_figures(Walk* walk, const LogicalStream& stream, ZatStream* facts) {
    facts->id = stream.serial;
    facts->duration = seconds_played(stream);
    facts->nominal_bit_rate = nominal_bit_rate(stream);
    if (walk->counted) {
        facts->bytes = data_bytes(&walk->reader, stream);
        facts->bit_rate = mean_bit_rate(static_cast<double>(facts->bytes), facts->duration);
    } else if (facts->nominal_bit_rate != 0) {
        facts->bit_rate = facts->nominal_bit_rate;
    } else {
        facts->bit_rate = remaining_bit_rate(*walk, stream);
        facts->estimated |= facts->bit_rate != 0 ? uint32_t{ZAT_ESTIMATED_BIT_RATE} : 0;
    }
    drop_nonsense(facts);
    if (facts->nominal_bit_rate == facts->bit_rate) {
        facts->nominal_bit_rate = 0;
    }
    if (facts->kind == ZAT_STREAM_VIDEO) {
        facts->frames = units_played(stream);
    } else if (facts->kind == ZAT_STREAM_AUDIO) {
        facts->samples = units_played(stream);
    }
    if (walk->counted && stream.packets <= stream.header_packets && stream.bytes == 0) {
        facts->flags |= ZAT_FLAG_NO_DATA;
    }
}

void set_codec_text(ZatStream* facts, const char* codec, const char* codec_id) {
    copy_text(facts->codec, codec);
    copy_text(facts->codec_id, codec_id);
}

void add_vorbis(const LogicalStream& stream, const Output& out, ZatStream* facts) {
    const uint64_t measured = facts->bit_rate;
    vorbis_facts(stream.vorbis, facts);
    facts->bit_rate = measured;
    copy_text(facts->codec_id, "vorbis");
    drop_nonsense(facts);
    const uint64_t nominal = nominal_bit_rate(stream);
    const uint64_t rate = nominal != 0 ? nominal : facts->bit_rate;
    char line[line_size];
    FormatVorbisLine(
        &stream.vorbis, static_cast<uint32_t>(std::min<uint64_t>(rate, UINT32_MAX)), line);
    add_stream_line(out, *facts, bounded_text(line));
}

void add_opus(const LogicalStream& stream, const Output& out, ZatStream* facts) {
    set_opus_facts(stream.opus.channels, stream.opus.mapping_family, facts);
    copy_text(facts->codec_id, "OpusHead");
    drop_nonsense(facts);
    add_audio_stream(out, *facts, {.codec = "Opus"});
}

// The line shows what the encoder was set to, where the header tells.
void add_speex(const LogicalStream& stream, const Output& out, ZatStream* facts) {
    const uint64_t counted = facts->bit_rate;
    set_speex_facts(stream.speex, facts);
    copy_text(facts->codec_id, "Speex");
    drop_nonsense(facts);
    char codec[64];
    speex_codec_text(stream.speex, codec, sizeof codec);
    char line[line_size];
    if (facts->bit_rate == 0) {
        facts->bit_rate = counted;
    }
    format_audio_line(*facts, {.codec = codec}, line);
    facts->bit_rate = counted;
    add_stream_line(out, *facts, bounded_text(line));
}

void add_flac(const LogicalStream& stream, const Output& out, ZatStream* facts) {
    set_codec_text(facts, "FLAC", stream.coding == Coding::flac ? "FLAC" : "fLaC");
    flac_facts(stream.flac, facts);
    facts->flags |= ZAT_FLAG_LOSSLESS;
    add_audio_stream(out, *facts, {.codec = "FLAC", .bits = facts->bit_depth});
}

void add_video(const Output& out, ZatStream* facts, std::string_view codec) {
    LineText text = {
        .codec = codec, .bits = facts->bit_depth, .highest_frame_rate = highest_frame_rate};
    drop_nonsense(facts, highest_frame_rate);
    if (is_stretched(*facts)) {
        const DisplaySize size = square_size(*facts);
        text.display_width = size.width;
        text.display_height = size.height;
    }
    add_video_stream(out, *facts, text);
}

void add_theora(const LogicalStream& stream, const Output& out, ZatStream* facts) {
    set_theora_facts(stream.theora, facts);
    copy_text(facts->codec_id, "theora");
    char codec[32];
    theora_codec_text(stream.theora, codec, sizeof codec);
    copy_text(facts->profile, codec + sizeof "Theora");
    add_video(out, facts, codec);
}

// The mapping's header (VP8 in Ogg): width 8, height 10, pixel aspect 12 and 15, rate 18 and 22.
void add_vp8(const LogicalStream& stream, const Output& out, ZatStream* facts) {
    set_codec_text(facts, "VP8", "OVP80");
    const uint8_t* head = stream.head;
    facts->width = ReadBE16(head + 8);
    facts->height = ReadBE16(head + 10);
    facts->bit_depth = 8;
    set_pixel_aspect(facts, ReadBE24(head + 12), ReadBE24(head + 15));
    set_frame_rate(facts, ReadBE32(head + 18), ReadBE32(head + 22));
    add_video(out, facts, "VP8");
}

// OGM's stream header: subtype 9, bits 41, then the size of pictures or the channels.
void add_ogm_video(
    Reader* reader, const LogicalStream& stream, const Output& out, ZatStream* facts) {
    constexpr uint32_t video_start_size = 4096;
    const uint8_t* head = stream.head;
    uint8_t start[video_start_size];
    BitmapStream bitmap;
    bitmap.start = {start, read_ogm_start(reader, stream, start, sizeof start)};
    bitmap.highest_frame_rate = highest_frame_rate;
    bitmap.info.bits = ReadLE16(head + 41);
    std::copy_n(head + 9, sizeof bitmap.info.compression, bitmap.info.compression);
    facts->width = ReadLE32(head + 45);
    facts->height = ReadLE32(head + 49);
    facts->frame_rate = stream.unit_rate;
    drop_nonsense(facts, highest_frame_rate);
    add_bitmap_stream(out, bitmap, facts);
}

void put_le(uint8_t* out, int size, uint32_t value) {
    for (int i = 0; i < size; ++i) {
        out[i] = static_cast<uint8_t>(value >> (8 * i));
    }
}

// A format tag of up to four hexadecimal digits: some writers leave the leading zeros out.
uint16_t ogm_tag(const uint8_t* subtype) {
    char text[] = "0000";
    const std::string_view digits = bounded_text(reinterpret_cast<const char*>(subtype), 4);
    std::transform(digits.begin(), digits.end(), text + 4 - digits.size(), ascii_upper);
    return static_cast<uint16_t>(ReadHex4(text));
}

void add_ogm_audio(Walk* walk, const LogicalStream& stream, const Output& out, ZatStream* facts) {
    const uint8_t* head = stream.head;
    // WAVEFORMATEX: tag, channels, rate, bytes a second, alignment, bits.
    uint8_t format[wave_plain_size];
    put_le(format, 2, ogm_tag(head + 9));
    std::copy_n(head + 45, 2, format + 2);
    put_le(format + 4, 4, clamp_to_integer<uint32_t>(stream.unit_rate + 0.5));
    std::copy_n(head + 49, 4, format + 8);
    std::copy_n(head + 47, 2, format + 12);
    std::copy_n(head + 41, 2, format + 14);
    uint8_t start[frame_start_size];
    WaveStream wave;
    wave.format = format;
    wave.start = {start, read_ogm_start(&walk->reader, stream, start, sizeof start)};
    wave.rate = facts->bit_rate;
    wave.rate_is_counted = walk->counted;
    wave.rate_is_estimated = (facts->estimated & ZAT_ESTIMATED_BIT_RATE) != 0;
    facts->nominal_bit_rate = 0; // kept where it differs from what the frames tell
    add_wave_stream(out, wave, facts);
}

void add_celt_or_pcm(const LogicalStream& stream, const Output& out, ZatStream* facts) {
    const bool pcm = stream.coding == Coding::pcm;
    set_codec_text(facts, pcm ? "PCM" : "CELT", pcm ? "PCM" : "CELT");
    facts->sample_rate = clamp_to_integer<uint32_t>(stream.unit_rate);
    facts->channels = pcm ? stream.head[21] : ReadLE32(stream.head + 40);
    facts->bit_depth = pcm ? stream.head[20] : 0;
    drop_nonsense(facts);
    add_audio_stream(out, *facts, {.codec = facts->codec, .bits = facts->bit_depth});
}

void add_text(const LogicalStream& stream, const Output& out, ExtraLines* extra, ZatStream* facts) {
    const bool kate = stream.coding == Coding::kate;
    const char* name = kate ? "Kate" : stream.coding == Coding::cmml ? "CMML" : "text";
    set_codec_text(facts, stream.coding == Coding::ogm_text ? "timed text" : name, name);
    if (kate && facts->language[0] == '\0') {
        constexpr size_t language_at = 32;
        constexpr size_t language_length = 16;
        const char* language = reinterpret_cast<const char*>(stream.head) + language_at;
        unknown_to_utf8(bounded_text(language, language_length), facts->language);
    }
    add_text_stream(out, extra, *facts, name);
}

} // namespace

void describe_stream(Walk* walk, const LogicalStream& stream, const StreamComments& comments,
    const Output& out, ExtraLines* extra) {
    ZatStream facts = new_stream(kind_of(stream.coding));
    set_figures(walk, stream, &facts);
    copy_utf8(facts.language, comments.language);
    copy_utf8(facts.encoder, comments.writer);
    switch (stream.coding) {
    case Coding::vorbis:
        return add_vorbis(stream, out, &facts);
    case Coding::opus:
        return add_opus(stream, out, &facts);
    case Coding::speex:
        return add_speex(stream, out, &facts);
    case Coding::flac:
    case Coding::old_flac:
        return add_flac(stream, out, &facts);
    case Coding::theora:
        return add_theora(stream, out, &facts);
    case Coding::vp8:
        return add_vp8(stream, out, &facts);
    case Coding::ogm_video:
        return add_ogm_video(&walk->reader, stream, out, &facts);
    case Coding::ogm_audio:
        return add_ogm_audio(walk, stream, out, &facts);
    case Coding::celt:
    case Coding::pcm:
        return add_celt_or_pcm(stream, out, &facts);
    case Coding::kate:
    case Coding::cmml:
    case Coding::ogm_text:
        return add_text(stream, out, extra, &facts);
    case Coding::dirac:
        set_codec_text(&facts, "Dirac", "BBCD");
        return add_video(out, &facts, "Dirac");
    default:
        add_text_stream(out, extra, facts, "unknown stream");
    }
}

} // namespace zat::ogg
