#include "container/asf/packet.h"

#include <algorithm>

namespace zat::asf {

namespace {

constexpr int type_byte = 1;
constexpr int type_word = 2;
constexpr int type_dword = 3;

// A field of 0, 1, 2 or 4 bytes, by the two bits that tell its length.
uint32_t read_field(PacketReader* packets, int length_type) {
    static constexpr uint8_t lengths[4] = {0, 1, 2, 4};
    const uint8_t length = lengths[length_type & 3];
    const Bytes bytes = read_view(packets->reader, packets->packet, 0, length);
    if (packets->failed || bytes.size() < length) {
        packets->failed = true;
        return 0;
    }
    uint32_t value = 0;
    for (size_t i = 0; i < length; ++i) {
        value |= uint32_t{bytes[i]} << (8 * i);
    }
    packets->packet = sub_span(packets->packet, length);
    return value;
}

Span take_bytes(PacketReader* packets, uint32_t length) {
    const Span bytes = sub_span(packets->packet, 0, length);
    packets->packet = sub_span(packets->packet, length);
    return bytes;
}

// Objects of one stream, each behind a byte with its size; the first one's time is told.
void read_compressed(PacketReader* packets, Span space, Payload* payload) {
    while (size_of(space) != 0 && !packets->reader->limited) {
        const Bytes head = read_view(packets->reader, space, 0, 1);
        if (head.empty()) {
            return;
        }
        const uint8_t size = head[0];
        if (payload->objects == 0) {
            payload->data = sub_span(space, 1, size);
        }
        ++payload->objects;
        payload->bytes += size;
        space = sub_span(space, 1 + size);
    }
}

void read_replicated(PacketReader* packets, uint32_t length, Payload* payload) {
    constexpr uint32_t time_at = 4; // behind the object's size
    const Span fields = take_bytes(packets, length);
    payload->has_time = size_of(fields) >= time_at + 4;
    payload->time = payload->has_time ? read_le32(packets->reader, fields, time_at) : 0;
}

} // namespace

bool open_packet(PacketReader* packets, Reader* reader, Span packet) {
    constexpr uint32_t has_error_correction = 0x80;
    constexpr uint32_t has_several_payloads = 1;
    *packets = {};
    packets->reader = reader;
    packets->packet = packet;
    uint32_t flags = read_field(packets, type_byte);
    if ((flags & has_error_correction) != 0) {
        take_bytes(packets, flags & 0x0F);
        flags = read_field(packets, type_byte);
    }
    packets->property_types = static_cast<uint8_t>(read_field(packets, type_byte));
    const uint32_t length = read_field(packets, static_cast<int>(flags >> 5));
    read_field(packets, static_cast<int>(flags >> 1)); // sequence
    const uint32_t padding = read_field(packets, static_cast<int>(flags >> 3));
    read_field(packets, type_dword); // send time
    read_field(packets, type_word);  // duration
    packets->payloads_left = 1;
    if ((flags & has_several_payloads) != 0) {
        const uint32_t payloads = read_field(packets, type_byte);
        packets->payloads_left = payloads & 0x3F;
        packets->payload_length_type = static_cast<uint8_t>(payloads >> 6);
    }
    const int64_t whole =
        length != 0 ? std::min<int64_t>(length, size_of(packet)) : size_of(packet);
    packets->packet.end = packet.start + whole - padding;
    return !packets->failed && packets->packet.end >= packets->packet.start;
}

bool next_payload(PacketReader* packets, Payload* payload) {
    if (packets->payloads_left == 0 || packets->failed || size_of(packets->packet) == 0) {
        return false;
    }
    --packets->payloads_left;
    *payload = {};
    constexpr uint32_t compressed_form = 1; // in place of a length
    const int types = packets->property_types;
    payload->stream = static_cast<uint8_t>(read_field(packets, type_byte) & 0x7F);
    read_field(packets, types >> 4); // media object number
    const uint32_t offset = read_field(packets, types >> 2);
    const uint32_t replicated = read_field(packets, types);
    if (replicated == compressed_form) {
        payload->has_time = true;
        payload->time = offset;
        payload->time_step = read_field(packets, type_byte);
    } else {
        read_replicated(packets, replicated, payload);
    }
    const uint32_t length = packets->payload_length_type != 0
                                ? read_field(packets, packets->payload_length_type)
                                : UINT32_MAX; // all that is left
    if (packets->failed) {
        return false;
    }
    const Span data = take_bytes(packets, length);
    if (replicated == compressed_form) {
        read_compressed(packets, data, payload);
    } else {
        payload->bytes = static_cast<uint64_t>(size_of(data));
        payload->objects = offset == 0 ? 1 : 0;
        payload->data = offset == 0 ? data : Span{};
    }
    return true;
}

} // namespace zat::asf
