#include "container/ogg/logical_stream.h"

#include "common/text.h"

#include <algorithm>
#include <cmath>

namespace zat::ogg {

namespace {

using namespace std::string_view_literals;

struct CodingRow {
    std::string_view packet; // what the first packet begins with
    Coding coding;
    ZatStreamKind kind;
    uint32_t header_packets;
};

// The first match wins.
constexpr CodingRow codings[] = {
    {"\1vorbis"sv, Coding::vorbis, ZAT_STREAM_AUDIO, 3}, // Vorbis I, 4.2.1
    {"OpusHead"sv, Coding::opus, ZAT_STREAM_AUDIO, 2},   // RFC 7845, 3
    {"Speex   "sv, Coding::speex, ZAT_STREAM_AUDIO, 2},
    {"\x7F"
     "FLAC"sv,
        Coding::flac, ZAT_STREAM_AUDIO, 1}, // RFC 9639, 10.1: the packet tells how many follow
    {"fLaC"sv, Coding::old_flac, ZAT_STREAM_AUDIO, 2},
    {"\x80theora"sv, Coding::theora, ZAT_STREAM_VIDEO, 3}, // Theora, 6.1
    {"OVP80\1"sv, Coding::vp8, ZAT_STREAM_VIDEO, 2},
    {"BBCD\0"sv, Coding::dirac, ZAT_STREAM_VIDEO, 1},
    {"CELT    "sv, Coding::celt, ZAT_STREAM_AUDIO, 2},
    {"PCM     "sv, Coding::pcm, ZAT_STREAM_AUDIO, 2},
    {"\x80kate\0\0\0"sv, Coding::kate, ZAT_STREAM_TEXT, 9},
    {"CMML\0\0\0\0"sv, Coding::cmml, ZAT_STREAM_TEXT, 3},
    {"fishead\0"sv, Coding::skeleton, ZAT_STREAM_DATA, 1},
    {"\1video\0\0\0"sv, Coding::ogm_video, ZAT_STREAM_VIDEO, 2},
    {"\1audio\0\0\0"sv, Coding::ogm_audio, ZAT_STREAM_AUDIO, 2},
    {"\1text\0\0\0\0"sv, Coding::ogm_text, ZAT_STREAM_TEXT, 2},
};

constexpr size_t vorbis_head_size = 30;
constexpr size_t flac_streaminfo_at = 17; // behind mapping, "fLaC" and a block header
constexpr size_t vp8_head_size = 26;
constexpr size_t ogm_head_size = 53;
constexpr size_t kate_head_size = 64;

// Seconds that no file of this size can hold: its granule positions are no positions.
constexpr double longest_plausible = 360000;
constexpr double least_bit_rate = 64;

double rate_of(uint64_t numerator, uint64_t denominator) {
    return denominator == 0 ? 0 : static_cast<double>(numerator) / static_cast<double>(denominator);
}

// OGM's stream header (1 byte behind the packet's start): time unit in 100 ns and samples per unit.
double ogm_rate(const uint8_t* head) {
    const int64_t time_unit = ReadLE64(head + 17);
    const int64_t samples = ReadLE64(head + 25);
    return time_unit <= 0 || samples <= 0
               ? 0
               : 1e7 * static_cast<double>(samples) / static_cast<double>(time_unit);
}

bool take_streaminfo(Bytes block, LogicalStream* stream) {
    if (!read_flac_streaminfo(block, &stream->flac)) {
        return false;
    }
    stream->unit_rate = stream->flac.sample_rate;
    stream->packet_units = stream->flac.largest_block;
    return true;
}

void read_flac_head(Bytes head, LogicalStream* stream) {
    if (head.size() > flac_streaminfo_at &&
        take_streaminfo(head.subspan(flac_streaminfo_at), stream)) {
        stream->header_packets += ReadBE16(head.data() + 7);
    }
}

// The first packet is the marker alone.
void read_old_flac_head(PacketCursor* cursor, LogicalStream* stream) {
    constexpr uint32_t block_header_size = 4;
    uint8_t block[block_header_size + flac_streaminfo_size];
    if (next_packet(cursor)) {
        const uint32_t size = read_packet(cursor, block, sizeof block);
        take_streaminfo(flac_streaminfo_of_blocks({block, size}), stream);
    }
}

// Rate, headers and packet length by the first packet.
void read_head(LogicalStream* stream) {
    const Bytes head = {stream->head, stream->head_length};
    switch (stream->coding) {
    case Coding::vorbis:
        if (head.size() >= vorbis_head_size) {
            vorbis_info(head.subspan(vorbis_fields_offset), &stream->vorbis);
            stream->unit_rate = stream->vorbis.sample_rate;
            stream->packet_units = (1U << (head[28] >> 4)) / 2; // half of the long block
        }
        break;
    case Coding::opus:
        if (read_opus_head(head, &stream->opus)) {
            stream->unit_rate = opus_rate;
        }
        break;
    case Coding::speex:
        if (read_speex_head(head, &stream->speex)) {
            stream->unit_rate = stream->speex.sample_rate;
            stream->header_packets += std::min(stream->speex.extra_headers, 8U);
            stream->packet_units = static_cast<uint32_t>(std::min(
                uint64_t{stream->speex.frame_samples} * std::max(stream->speex.packet_frames, 1U),
                uint64_t{1} << 20));
        }
        break;
    case Coding::flac:
        read_flac_head(head, stream);
        break;
    case Coding::theora:
        if (read_theora_head(head, &stream->theora)) {
            stream->unit_rate =
                rate_of(stream->theora.rate_numerator, stream->theora.rate_denominator);
            stream->packet_units = 1;
        }
        break;
    case Coding::vp8:
        if (head.size() >= vp8_head_size) {
            stream->unit_rate = rate_of(ReadBE32(head.data() + 18), ReadBE32(head.data() + 22));
            stream->packet_units = 1;
        }
        break;
    case Coding::kate:
        if (head.size() >= kate_head_size) {
            stream->header_packets = std::max<uint32_t>(head[11], 1);
            stream->unit_rate = rate_of(ReadLE32(head.data() + 24), ReadLE32(head.data() + 28));
        }
        break;
    case Coding::celt:
        stream->unit_rate = head.size() >= 44 ? ReadLE32(head.data() + 36) : 0;
        break;
    case Coding::pcm:
        stream->unit_rate = head.size() >= 22 ? ReadBE32(head.data() + 16) : 0;
        break;
    case Coding::ogm_video:
    case Coding::ogm_audio:
    case Coding::ogm_text:
        stream->unit_rate = head.size() >= ogm_head_size ? ogm_rate(head.data()) : 0;
        break;
    default:
        break;
    }
}

// The units up to the event that the granule counts from, and those from there on.
int64_t kate_units(uint32_t shift, int64_t granule) {
    if (shift >= 63) {
        return granule;
    }
    const int64_t mask = (int64_t{1} << shift) - 1;
    return (granule >> shift) + (granule & mask);
}

// A granule position in samples, frames or a text's units.
int64_t units_of(const LogicalStream& stream, int64_t granule) {
    switch (stream.coding) {
    case Coding::theora:
        return theora_frames(stream.theora, granule);
    case Coding::vp8:
        return granule >> 32;
    case Coding::kate:
        return kate_units(stream.head[15], granule);
    case Coding::dirac:
        return 0; // a position in bits of its own, whose frames nobody counts here
    default:
        return granule;
    }
}

// Where the stream begins, in samples or frames.
int64_t start_of(const LogicalStream& stream) {
    const int64_t joined_at = joined_late(stream) ? units_of(stream, stream.first_granule) -
                                                        static_cast<int64_t>(stream.units_held)
                                                  : 0;
    return joined_at + (stream.coding == Coding::opus ? stream.opus.pre_skip : 0);
}

// What the packets that end on a page hold at the most.
uint64_t units_on(Reader* reader, const Page& page, const LogicalStream& stream) {
    uint64_t units = 0;
    uint32_t index = stream.packets;
    int64_t position = body_of(page);
    bool begins_here = (page.flags & flag_continued) == 0;
    int64_t packet_at = position;
    for (uint32_t i = 0; i < page.segments; ++i) {
        position += page.lacing[i];
        if (page.lacing[i] == 255) {
            continue;
        }
        if (index >= stream.header_packets) {
            uint32_t held = stream.packet_units;
            if (stream.coding == Coding::opus && begins_here) {
                held = opus_packet_samples(read_view(reader, {packet_at, position}, 0, 2));
            }
            units += held;
        }
        ++index;
        begins_here = true;
        packet_at = position;
    }
    return units;
}

bool is_plausible(Reader* reader, const LogicalStream& stream, int64_t granule) {
    if (stream.unit_rate <= 0) {
        return true;
    }
    const double seconds = static_cast<double>(units_of(stream, granule)) / stream.unit_rate;
    return seconds < longest_plausible ||
           static_cast<double>(reader->block.file->size) * 8 / seconds >= least_bit_rate;
}

} // namespace

ZatStreamKind kind_of(Coding coding) {
    for (const CodingRow& row : codings) {
        if (row.coding == coding) {
            return row.kind;
        }
    }
    return ZAT_STREAM_DATA;
}

void open_stream(Reader* reader, const Page& page, LogicalStream* stream) {
    *stream = {};
    stream->serial = page.serial;
    stream->first_page = page;
    PacketCursor cursor;
    start_packet(&cursor, reader, page, 0);
    stream->head_length = read_packet(&cursor, stream->head, head_size);
    stream->header_packets = 1; // of a coding that is not known
    const std::string_view head(reinterpret_cast<const char*>(stream->head), stream->head_length);
    for (const CodingRow& row : codings) {
        if (head.starts_with(row.packet)) {
            stream->coding = row.coding;
            stream->header_packets = row.header_packets;
            break;
        }
    }
    read_head(stream);
    if (stream->coding == Coding::old_flac) {
        read_old_flac_head(&cursor, stream);
    }
}

void take_page(Reader* reader, const Page& page, LogicalStream* stream) {
    if (stream->first_granule == 0) {
        stream->units_held += units_on(reader, page, *stream);
    }
    stream->packets += packets_ended(page);
    if (page.granule > 0 && is_plausible(reader, *stream, page.granule)) {
        if (stream->first_granule == 0) {
            stream->first_granule = page.granule;
        }
        stream->last_granule = std::max(stream->last_granule, page.granule);
    }
    if (stream->first_granule != 0) {
        stream->bytes += page.body_size;
        stream->data_packets += packets_ended(page);
    }
}

bool joined_late(const LogicalStream& stream) {
    constexpr uint64_t slack_packets = 8;
    constexpr uint64_t opus_slack = slack_packets * 960;
    const uint64_t slack = stream.coding == Coding::opus ? opus_slack + stream.opus.pre_skip
                                                         : slack_packets * stream.packet_units;
    return stream.first_granule != 0 && !stream.pages_lost && slack != 0 &&
           static_cast<uint64_t>(std::max<int64_t>(units_of(stream, stream.first_granule), 0)) >
               stream.units_held + slack;
}

uint64_t units_played(const LogicalStream& stream) {
    if (stream.last_granule == 0) {
        return 0;
    }
    const int64_t units = units_of(stream, stream.last_granule) - start_of(stream);
    return static_cast<uint64_t>(std::max<int64_t>(units, 0));
}

double seconds_played(const LogicalStream& stream) {
    const double seconds =
        stream.unit_rate > 0 ? static_cast<double>(units_played(stream)) / stream.unit_rate : 0;
    return std::isfinite(seconds) ? seconds : 0;
}

} // namespace zat::ogg
