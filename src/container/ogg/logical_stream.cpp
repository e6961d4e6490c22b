#include "container/ogg/logical_stream.h"

#include "container/ogg/codings.h"

#include <algorithm>
#include <cmath>

namespace zat::ogg {

namespace {

// Seconds that no file of this size can hold: its granule positions are no positions.
constexpr double longest_plausible = 360000;
constexpr double least_bit_rate = 64;

// The first packet is the marker alone.
void read_old_flac_head(PacketCursor* cursor, LogicalStream* stream) {
    constexpr uint32_t block_header_size = 4;
    uint8_t block[block_header_size + flac_streaminfo_size];
    if (next_packet(cursor)) {
        const uint32_t size = read_packet(cursor, block, sizeof block);
        take_streaminfo(flac_streaminfo_of_blocks({block, size}), stream);
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

void open_stream(Reader* reader, const Page& page, LogicalStream* stream) {
    *stream = {};
    stream->serial = page.serial;
    stream->first_page = page;
    PacketCursor cursor;
    start_packet(&cursor, reader, page, 0);
    stream->head_length = read_packet(&cursor, stream->head, head_size);
    read_coding(stream);
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
