#include "container/mp4/track_details.h"

#include "common/record/details.h"
#include "common/record/stream_lines.h"
#include "common/text/text.h"
#include "common/text/text_codes.h"
#include "container/mp4/language.h"
#include "container/mp4/metadata.h"
#include "container/mp4/sample_tables.h"

#include <algorithm>
#include <string_view>

namespace zat::mp4 {

namespace {

constexpr uint32_t text_handlers[] = {
    fourcc("text"), fourcc("sbtl"), fourcc("subt"), fourcc("subp"), fourcc("clcp")};

bool version_1(Reader* reader, Span payload) {
    return read_be32(reader, payload, 0) >> 24 == 1;
}

// Flags of the track header: enabled tracks are those that a player starts with (ISO/IEC 14496-12,
// 8.3.2).
void read_track_header(TrackFacts* facts, ZatStream* stream) {
    stream->id = facts->track->id;
    if ((read_be32(facts->reader, facts->track->header, 0) & 1) != 0) {
        stream->flags |= ZAT_FLAG_DEFAULT;
    }
}

void read_language(TrackFacts* facts, ZatStream* stream) {
    Reader* reader = facts->reader;
    const Span header = facts->track->media_header;
    const uint32_t code =
        read_be32(reader, header, version_1(reader, header) ? 32 : 20, UINT32_MAX);
    char text[language_size] = "";
    if (code != UINT32_MAX) {
        language_text(static_cast<uint16_t>(code >> 16), text);
    }
    copy_utf8(stream->language, text);
    // BCP 47, behind version and flags
    uint8_t buffer[sizeof stream->language];
    const Bytes tag = read_box(reader, sub_span(facts->track->extended_language, 4), buffer);
    const std::string_view extended =
        bounded_text(reinterpret_cast<const char*>(tag.data()), tag.size());
    const bool printable = std::all_of(
        extended.begin(), extended.end(), [](char c) { return IsNotPrintable(c) == 0; });
    if (!extended.empty() && printable && extended != "und") {
        copy_utf8(stream->language, extended);
    }
}

// Words of the names that programs give every track.
constexpr std::string_view generic_words[] = {"handle", "iso media", "isomedia", "encoder", "gpac",
    "l-smash", "core media", "mainconcept", "bento4", "apple", "telestream", "time code",
    "timecode", "hndl"};
constexpr std::string_view generic_names[] = {"video", "audio", "sound", "text", "data", "subtitle",
    "subtitles", "stereo", "mono", "vide", "soun", "track"};

bool says_something(std::string_view name) {
    char lower[metadata_text_size];
    const size_t length = std::min(name.size(), sizeof lower);
    std::transform(
        name.begin(), name.begin() + static_cast<std::ptrdiff_t>(length), lower, ascii_lower);
    const std::string_view text(lower, length);
    return !text.empty() &&
           std::none_of(std::begin(generic_words), std::end(generic_words),
               [text](
                   std::string_view word) { return text.find(word) != std::string_view::npos; }) &&
           std::find(std::begin(generic_names), std::end(generic_names), text) ==
               std::end(generic_names);
}

// The handler's name: QuickTime counts its bytes in the first one, MP4 ends it with a zero.
void read_handler_name(TrackFacts* facts, ZatStream* stream) {
    uint8_t buffer[sizeof stream->title];
    Bytes name = read_box(facts->reader, sub_span(facts->track->handler_atom, 24), buffer);
    if (!name.empty() && name[0] < ' ') {
        name = name.subspan(1, std::min<size_t>(name[0], name.size() - 1));
    }
    char text[sizeof stream->title];
    claimed_utf8_to_utf8(text_of(name), text, sizeof text);
    if (says_something(text)) {
        copy_utf8(stream->title, text);
    }
}

// Roles of DASH and of QuickTime's media characteristics.
struct Role {
    std::string_view name;
    uint32_t flag;
};

constexpr Role roles[] = {
    {"forced-subtitle", ZAT_FLAG_FORCED},
    {"forced_subtitle", ZAT_FLAG_FORCED},
    {"commentary", ZAT_FLAG_COMMENTARY},
    {"caption", ZAT_FLAG_HEARING_IMPAIRED},
    {"description", ZAT_FLAG_VISUAL_IMPAIRED},
    {"public.subtitles.forced-only", ZAT_FLAG_FORCED},
    {"public.accessibility.transcribes-spoken-dialog", ZAT_FLAG_HEARING_IMPAIRED},
    {"public.accessibility.describes-video", ZAT_FLAG_VISUAL_IMPAIRED},
};

void apply_role(std::string_view name, ZatStream* stream) {
    for (const Role& role : roles) {
        stream->flags |= role.name == name ? role.flag : 0U;
    }
}

// "kind": version and flags, the scheme's URI and the value, each closed by a zero (ISO/IEC
// 14496-12, 8.10.4).
void read_kind(Reader* reader, Span payload, ZatStream* stream) {
    uint8_t buffer[128];
    const std::string_view text = text_of(read_box(reader, sub_span(payload, 4), buffer));
    const size_t end = text.find('\0');
    if (end != std::string_view::npos) {
        const std::string_view value = text_from(text, end + 1);
        apply_role(value.substr(0, value.find('\0')), stream);
    }
}

void read_track_user_data(TrackFacts* facts, ZatStream* stream) {
    Reader* reader = facts->reader;
    Span space = facts->track->user_data;
    Atom atom;
    while (next_child(reader, &space, &atom)) {
        uint8_t buffer[sizeof stream->title];
        if (atom.type == fourcc("name")) {
            claimed_utf8_to_utf8(text_of(read_box(reader, atom.payload, buffer)), stream->title,
                sizeof stream->title);
        } else if (atom.type == (0xA9000000U | 0x6E616D) && stream->title[0] == '\0') { // (c)nam
            read_international_text(reader, atom.payload, stream->title, sizeof stream->title);
        } else if (atom.type == fourcc("kind")) {
            read_kind(reader, atom.payload, stream);
        } else if (atom.type == fourcc("tagc")) {
            const Bytes name = read_box(reader, atom.payload, buffer);
            apply_role(
                bounded_text(reinterpret_cast<const char*>(name.data()), name.size()), stream);
        }
    }
    if (stream->title[0] == '\0') {
        read_handler_name(facts, stream);
    }
}

// What edits make of the media (ISO/IEC 14496-12, 8.6.6): empty ones at the front delay the
// track, the others tell how long it is played. Their scale is the movie's.
void read_edits(TrackFacts* facts, uint32_t movie_scale, ZatStream* stream) {
    constexpr int64_t most_entries = 65536;
    Reader* reader = facts->reader;
    const Span list = facts->track->edit_list;
    const bool large = version_1(reader, list);
    const int64_t entry_size = large ? 20 : 12;
    const int64_t entries =
        std::min<int64_t>(read_be32(reader, list, 4), (size_of(list) - 8) / entry_size);
    const double media = stream->duration;
    double played = 0;
    bool sound = entries <= most_entries;
    stream->start = 0;
    for (int64_t i = 0; movie_scale != 0 && i < std::min(entries, most_entries); ++i) {
        const int64_t at = 8 + i * entry_size;
        const uint64_t high = large ? read_be32(reader, list, at) : 0;
        const uint64_t duration = high << 32 | read_be32(reader, list, at + (large ? 4 : 0));
        const double seconds = static_cast<double>(duration) / movie_scale;
        if (read_be32(reader, list, at + (large ? 12 : 4)) != UINT32_MAX) { // media_time of -1
            played += seconds;
            sound = sound && seconds < media + 1; // one edit plays the media once at most
        } else if (played == 0) {
            stream->start += seconds;
        }
    }
    if (played > 0 && sound) {
        stream->duration = played;
    }
}

double track_header_seconds(TrackFacts* facts, uint32_t movie_scale) {
    Reader* reader = facts->reader;
    const Span header = facts->track->header;
    const bool large = version_1(reader, header);
    const uint64_t high = large ? read_be32(reader, header, 28) : 0;
    const uint64_t duration = high << 32 | read_be32(reader, header, large ? 32 : 20);
    const bool known = duration != (large ? UINT64_MAX : uint64_t{UINT32_MAX});
    return movie_scale != 0 && known ? static_cast<double>(duration) / movie_scale : 0;
}

// Samples are counted over their own time: in fragments that can be a part of what is declared.
void measure(TrackFacts* facts, uint32_t movie_scale, ZatStream* stream) {
    const Track& track = *facts->track;
    const HeaderTime media = read_header_time(facts->reader, track.media_header);
    double declared = 0;
    double fragments = 0;
    if (media.scale != 0) {
        declared = static_cast<double>(media.duration) / media.scale;
        fragments = static_cast<double>(track.fragment_duration) / media.scale;
    }
    const bool own_samples = track.totals.samples != track.fragment_samples;
    if (own_samples || fragments == 0) {
        declared = declared != 0 ? declared : track_header_seconds(facts, movie_scale);
        facts->seconds = declared + fragments;
    } else {
        facts->seconds = fragments;
    }
    stream->duration = std::max(declared, facts->seconds);
}

// Sound that older entries describe no further: samples and bytes of a packet, per channel.
struct PacketFormat {
    uint32_t format;
    uint32_t samples;
    uint32_t bytes;
};

constexpr PacketFormat packet_formats[] = {
    {fourcc("MAC3"), 6, 2},
    {fourcc("MAC6"), 6, 1},
    {fourcc("ima4"), 64, 34},
    {fourcc("agsm"), 160, 33},
    {fourcc("alaw"), 1, 1},
    {fourcc("ulaw"), 1, 1},
};

// QuickTime tells sound by samples of one byte: a packet, or a sample of all channels, has the size
// that the entry or the format tells.
uint64_t movie_bytes(const TrackFacts& facts, const ZatStream& stream) {
    const SampleTotals& totals = facts.track->totals;
    const uint64_t samples = totals.samples - facts.track->fragment_samples;
    if (!totals.one_size) {
        return totals.bytes - facts.track->fragment_bytes;
    }
    const SampleEntry& entry = facts.entry;
    if (stream.kind == ZAT_STREAM_AUDIO && totals.sample_size == 1) {
        if (entry.packet_samples != 0 && entry.frame_size != 0) {
            return samples * entry.frame_size / entry.packet_samples;
        }
        for (const PacketFormat& row : packet_formats) {
            if (row.format == facts.format) {
                return samples / row.samples * row.bytes * stream.channels;
            }
        }
        const uint64_t frame = uint64_t{stream.channels} * stream.bit_depth / 8;
        if (std::string_view(stream.codec) == "PCM" && frame != 0) {
            return samples * frame;
        }
    }
    return samples * totals.sample_size;
}

void count_bytes(TrackFacts* facts, ZatStream* stream) {
    stream->bytes = movie_bytes(*facts, *stream) + facts->track->fragment_bytes;
    const uint64_t claim = facts->claim != 0 ? facts->claim : stream->bit_rate;
    stream->bit_rate = mean_bit_rate(static_cast<double>(stream->bytes), facts->seconds);
    if (stream->bit_rate == 0) {
        stream->bit_rate = claim;
        return;
    }
    if (claim != 0 && !is_same_bit_rate(claim, stream->bit_rate)) {
        stream->nominal_bit_rate = claim;
    }
}

// The format before encryption (ISO/IEC 14496-12, 8.12).
void read_protection(TrackFacts* facts, ZatStream* stream) {
    if (size_of(facts->entry.protection) == 0) {
        return;
    }
    stream->flags |= ZAT_FLAG_ENCRYPTED;
    Span space = facts->entry.protection;
    Atom atom;
    while (next_child(facts->reader, &space, &atom)) {
        if (atom.type == fourcc("frma")) {
            facts->format = read_be32(facts->reader, atom.payload, 0, facts->format);
            return;
        }
    }
}

void read_bit_rates(TrackFacts* facts) {
    // bufferSizeDB 4, maxBitrate 4, avgBitrate 4 (ISO/IEC 14496-12, 8.5.2)
    facts->claim = read_be32(facts->reader, facts->entry.bit_rates, 8);
    const EsDescriptor& descriptor = facts->es.descriptor;
    if (facts->claim == 0) {
        facts->claim = descriptor.average_bitrate;
    }
}

} // namespace

HeaderTime read_header_time(Reader* reader, Span header) {
    const bool large = version_1(reader, header);
    const uint32_t high = large ? read_be32(reader, header, 24) : 0;
    const uint32_t low = read_be32(reader, header, large ? 28 : 16);
    HeaderTime time;
    time.scale = read_be32(reader, header, large ? 20 : 12);
    time.duration = uint64_t{high} << 32 | low;
    if (time.duration == (large ? UINT64_MAX : uint64_t{UINT32_MAX})) {
        time.duration = 0; // cannot be told
    }
    return time;
}

ZatStreamKind stream_kind(const Track& track) {
    if (track.kind != TrackKind::other) {
        return track.kind == TrackKind::video ? ZAT_STREAM_VIDEO : ZAT_STREAM_AUDIO;
    }
    const bool is_text = std::find(std::begin(text_handlers), std::end(text_handlers),
                             track.handler) != std::end(text_handlers);
    return is_text ? ZAT_STREAM_TEXT : ZAT_STREAM_DATA;
}

constexpr double highest_frame_rate = 1000;

void describe_track(Reader* reader, const Movie& movie, Track* track, ZatDetails* details) {
    ZatStream stream = new_stream(stream_kind(*track));
    TrackFacts facts;
    facts.reader = reader;
    facts.track = track;
    // The samples of the first chunk have the entry that its row tells.
    read_sample_entry(
        reader, *track, read_be32(reader, track->sample_to_chunk, 16, 1), &facts.entry);
    facts.format = ReadBE32(facts.entry.format);
    read_es_box(reader, facts.entry, &facts.es);
    const SampleTotals& totals = sample_totals(reader, track);
    const uint32_t movie_scale = read_header_time(reader, movie.header).scale;
    measure(&facts, movie_scale, &stream);

    read_track_header(&facts, &stream);
    read_language(&facts, &stream);
    read_track_user_data(&facts, &stream);
    read_edits(&facts, movie_scale, &stream);
    read_bit_rates(&facts);
    if (facts.entry.found) {
        char text[fourcc_text_size];
        printable_fourcc_text(facts.entry.format, text);
        copy_utf8(stream.codec_id, text);
        read_protection(&facts, &stream);
    }
    if (stream.kind == ZAT_STREAM_VIDEO) {
        describe_video_track(&facts, &stream);
    } else if (stream.kind == ZAT_STREAM_AUDIO) {
        describe_audio_track(&facts, &stream);
    } else {
        describe_other_track(&facts, &stream);
    }
    count_bytes(&facts, &stream);
    // An initialisation segment stands alone: its samples are elsewhere.
    const bool is_whole = !movie.fragments_announced || movie.fragments != 0;
    if (totals.samples == 0 && is_whole && !reader->limited) {
        stream.flags |= ZAT_FLAG_NO_DATA;
    }
    drop_nonsense(&stream, highest_frame_rate);
    add_stream(details, stream);
}

} // namespace zat::mp4
