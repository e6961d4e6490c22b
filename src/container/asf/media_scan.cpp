#include "container/asf/media_scan.h"

#include "container/asf/packet.h"

#include <algorithm>

namespace zat::asf {

namespace {

void choose_timed_streams(const Header& header, MediaScan* scan) {
    for (uint32_t i = 0; i < header.stream_count && scan->timed_count < timed_limit; ++i) {
        if (header.streams[i].type == StreamType::video) {
            scan->timed[scan->timed_count++].number = header.streams[i].number;
        }
    }
}

void take_time(uint8_t number, uint32_t time, MediaScan* scan) {
    StreamScan* stream = &scan->streams[number];
    stream->first_time = stream->has_time ? std::min(stream->first_time, time) : time;
    stream->last_time = stream->has_time ? std::max(stream->last_time, time) : time;
    stream->has_time = true;
    for (uint32_t i = 0; i < scan->timed_count; ++i) {
        if (scan->timed[i].number == number) {
            add_frame_time(&scan->timed[i].times, time);
        }
    }
}

void take_payload(const Payload& payload, MediaScan* scan) {
    StreamScan* stream = &scan->streams[payload.stream];
    stream->bytes += payload.bytes;
    stream->objects += payload.objects;
    for (uint32_t i = 0; payload.has_time && i < payload.objects; ++i) {
        take_time(payload.stream, payload.time + i * payload.time_step, scan);
    }
    if (size_of(stream->first_data) == 0) {
        stream->first_data = payload.data;
    }
}

// Takes what a packet holds, unless zeros stand in its place: a download has not brought it yet.
void take_packet(Reader* reader, Span packet, MediaScan* scan) {
    constexpr uint32_t least_header = 8;
    const Bytes start = read_view(reader, packet, 0, least_header);
    if (leading_zeros(start) == start.size()) {
        return;
    }
    ++scan->read;
    PacketReader packets;
    Payload payload;
    if (open_packet(&packets, reader, packet)) {
        while (next_payload(&packets, &payload)) {
            take_payload(payload, scan);
        }
    }
}

} // namespace

void scan_media(Reader* reader, const Header& header, uint32_t budget, MediaScan* scan) {
    const int64_t packet_size = header.largest_packet;
    if (packet_size == 0 || header.smallest_packet != header.largest_packet) {
        return;
    }
    choose_timed_streams(header, scan);
    const int64_t present = size_of(header.data) / packet_size;
    const int64_t declared =
        static_cast<int64_t>(std::min(header.packets, static_cast<uint64_t>(INT64_MAX)));
    const int64_t affordable = std::min<int64_t>(packet_limit, budget / packet_size);
    const int64_t all = declared != 0 ? declared : present;
    const int64_t wanted = std::min({all, present, affordable});
    for (int64_t i = 0; i < wanted && !reader->limited; ++i) {
        take_packet(reader, sub_span(header.data, i * packet_size, packet_size), scan);
    }
    scan->all = all;
    scan->complete = scan->read == all && all != 0 && !reader->limited;
}

} // namespace zat::asf
