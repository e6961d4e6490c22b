// A logical bitstream of an Ogg file: what its first packet says it is, and how far its pages
// reach.
#pragma once

#include "audio/flac_streaminfo.h"
#include "audio/opus.h"
#include "audio/speex.h"
#include "audio/vorbis.h"
#include "container/ogg/page.h"
#include "video/theora.h"
#include "zat/details.h"

#include <cstdint>
#include <string_view>

namespace zat::ogg {

enum class Coding : uint8_t {
    unknown,
    vorbis,
    opus,
    speex,
    flac,     // mapping of version 1
    old_flac, // a native FLAC stream, one metadata block or frame to a packet
    theora,
    vp8,
    dirac,
    celt,
    pcm,
    kate,
    cmml,
    skeleton, // describes the others; no stream for a listener
    ogm_video,
    ogm_audio,
    ogm_text,
};

constexpr uint32_t head_size = 256; // bytes kept of a stream's first packet

struct LogicalStream {
    uint32_t serial = 0;
    Coding coding = Coding::unknown;
    Page first_page;
    uint8_t head[head_size] = {};
    uint32_t head_length = 0; // bytes of it

    uint32_t header_packets = 0; // packets that stand before the data
    double unit_rate = 0;        // samples or frames per second; 0 when not known
    uint32_t packet_units = 0;   // the most that a packet holds; 0 when that is not known
    VorbisInfo vorbis;
    OpusHead opus;
    SpeexHead speex;
    TheoraHead theora;
    FlacStreamInfo flac;

    // By the pages.
    uint32_t packets = 0;    // that ended
    uint64_t units_held = 0; // at most, by the packets up to the first granule above 0
    bool pages_lost = false; // before the first granule above 0
    int64_t first_granule = 0;
    int64_t last_granule = 0;
    uint64_t bytes = 0;        // page bodies from the first granule above 0 on
    uint64_t data_packets = 0; // that ended on those pages
};

// Reads the first packet of the stream that begins on a page.
void open_stream(Reader* reader, const Page& page, LogicalStream* stream);

// Takes a page of the stream behind or at its first one.
void take_page(Reader* reader, const Page& page, LogicalStream* stream);

// Whole samples or frames up to the last granule position, less the stream's start where it was
// joined late; never negative.
uint64_t units_played(const LogicalStream& stream);

// The same in seconds; 0 when the rate is not known.
double seconds_played(const LogicalStream& stream);

// Whether the first data page names a position that its packets cannot reach from 0: the file is
// part of a longer transmission.
bool joined_late(const LogicalStream& stream);

} // namespace zat::ogg
