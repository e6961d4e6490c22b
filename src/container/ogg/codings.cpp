#include "container/ogg/codings.h"

#include "common/bytes/tables.h"

#include <algorithm>
#include <cmath>

namespace zat::ogg {

namespace {

using namespace std::string_view_literals;

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

// Each reads from the first packet the rate of the granule positions, the number of headers where
// the packet tells it, and the length of packets.
using HeadReader = void (*)(Bytes head, LogicalStream* stream);

// Vorbis I, 4.2.2.
void read_vorbis(Bytes head, LogicalStream* stream) {
    constexpr size_t vorbis_head_size = 30;
    if (head.size() >= vorbis_head_size) {
        vorbis_info(head.subspan(vorbis_fields_offset), &stream->vorbis);
        stream->unit_rate = stream->vorbis.sample_rate;
        stream->packet_units = (1U << (head[28] >> 4)) / 2; // half of the long block
    }
}

void read_opus(Bytes head, LogicalStream* stream) {
    if (read_opus_head(head, &stream->opus)) {
        stream->unit_rate = opus_rate;
    }
}

void read_speex(Bytes head, LogicalStream* stream) {
    constexpr uint32_t most_extra_headers = 8;
    constexpr uint64_t most_samples = 1 << 20; // of a packet
    if (!read_speex_head(head, &stream->speex)) {
        return;
    }
    const SpeexHead& speex = stream->speex;
    stream->unit_rate = speex.sample_rate;
    stream->header_packets += std::min(speex.extra_headers, most_extra_headers);
    stream->packet_units = static_cast<uint32_t>(
        std::min(uint64_t{speex.frame_samples} * std::max(speex.packet_frames, 1U), most_samples));
}

// RFC 9639, 10.1: mapping version, the number of headers, "fLaC" and STREAMINFO.
void read_flac(Bytes head, LogicalStream* stream) {
    constexpr size_t flac_streaminfo_at = 17; // behind a metadata block's header
    if (head.size() > flac_streaminfo_at &&
        take_streaminfo(head.subspan(flac_streaminfo_at), stream)) {
        stream->header_packets += ReadBE16(head.data() + 7);
    }
}

void read_theora(Bytes head, LogicalStream* stream) {
    if (read_theora_head(head, &stream->theora)) {
        stream->unit_rate = rate_of(stream->theora.rate_numerator, stream->theora.rate_denominator);
        stream->packet_units = 1;
    }
}

void read_vp8(Bytes head, LogicalStream* stream) {
    constexpr size_t vp8_head_size = 26;
    if (head.size() >= vp8_head_size) {
        stream->unit_rate = rate_of(ReadBE32(head.data() + 18), ReadBE32(head.data() + 22));
        stream->packet_units = 1;
    }
}

void read_kate(Bytes head, LogicalStream* stream) {
    constexpr size_t kate_head_size = 64;
    if (head.size() >= kate_head_size) {
        stream->header_packets = std::max<uint32_t>(head[11], 1);
        stream->unit_rate = rate_of(ReadLE32(head.data() + 24), ReadLE32(head.data() + 28));
    }
}

void read_celt(Bytes head, LogicalStream* stream) {
    constexpr size_t rate_at = 36; // behind codec, version and the size of the header
    stream->unit_rate = head.size() >= rate_at + 8 ? ReadLE32(head.data() + rate_at) : 0;
}

// OggPCM.
void read_pcm(Bytes head, LogicalStream* stream) {
    constexpr size_t rate_at = 16;
    constexpr size_t pcm_head_size = 22; // up to the number of channels
    stream->unit_rate = head.size() >= pcm_head_size ? ReadBE32(head.data() + rate_at) : 0;
}

void read_ogm(Bytes head, LogicalStream* stream) {
    constexpr size_t ogm_head_size = 53;
    stream->unit_rate = head.size() >= ogm_head_size ? ogm_rate(head.data()) : 0;
}

struct CodingRow {
    std::string_view packet; // what the first packet begins with
    Coding coding;
    ZatStreamKind kind;
    uint32_t header_packets;
    HeadReader read_head = nullptr;
};

// The first match wins.
constexpr CodingRow codings[] = {
    {"\1vorbis"sv, Coding::vorbis, ZAT_STREAM_AUDIO, 3, read_vorbis}, // Vorbis I, 4.2.1
    {"OpusHead"sv, Coding::opus, ZAT_STREAM_AUDIO, 2, read_opus},     // RFC 7845, 3
    {"Speex   "sv, Coding::speex, ZAT_STREAM_AUDIO, 2, read_speex},
    {"\x7F"
     "FLAC"sv,
        Coding::flac, ZAT_STREAM_AUDIO, 1,
        read_flac}, // RFC 9639, 10.1: the packet tells how many follow
    {"fLaC"sv, Coding::old_flac, ZAT_STREAM_AUDIO, 2},
    {"\x80theora"sv, Coding::theora, ZAT_STREAM_VIDEO, 3, read_theora}, // Theora, 6.1
    {"OVP80\1"sv, Coding::vp8, ZAT_STREAM_VIDEO, 2, read_vp8},
    {"BBCD\0"sv, Coding::dirac, ZAT_STREAM_VIDEO, 1},
    {"CELT    "sv, Coding::celt, ZAT_STREAM_AUDIO, 2, read_celt},
    {"PCM     "sv, Coding::pcm, ZAT_STREAM_AUDIO, 2, read_pcm},
    {"\x80kate\0\0\0"sv, Coding::kate, ZAT_STREAM_TEXT, 9, read_kate},
    {"CMML\0\0\0\0"sv, Coding::cmml, ZAT_STREAM_TEXT, 3},
    {"fishead\0"sv, Coding::skeleton, ZAT_STREAM_DATA, 1},
    {"\1video\0\0\0"sv, Coding::ogm_video, ZAT_STREAM_VIDEO, 2, read_ogm},
    {"\1audio\0\0\0"sv, Coding::ogm_audio, ZAT_STREAM_AUDIO, 2, read_ogm},
    {"\1text\0\0\0\0"sv, Coding::ogm_text, ZAT_STREAM_TEXT, 2, read_ogm},
};

} // namespace

ZatStreamKind kind_of(Coding coding) {
    const CodingRow* row = find_row(codings, &CodingRow::coding, coding);
    return row != nullptr ? row->kind : ZAT_STREAM_DATA;
}

bool take_streaminfo(Bytes block, LogicalStream* stream) {
    if (!read_flac_streaminfo(block, &stream->flac)) {
        return false;
    }
    stream->unit_rate = stream->flac.sample_rate;
    stream->packet_units = stream->flac.largest_block;
    return true;
}

void read_coding(LogicalStream* stream) {
    stream->header_packets = 1; // of a coding that is not known
    const Bytes head = {stream->head, stream->head_length};
    for (const CodingRow& row : codings) {
        if (!text_of(head).starts_with(row.packet)) {
            continue;
        }
        stream->coding = row.coding;
        stream->header_packets = row.header_packets;
        if (row.read_head != nullptr) {
            row.read_head(head, stream);
        }
        return;
    }
}

} // namespace zat::ogg
