#include "container/mp4/es_descriptor.h"

#include <algorithm>

namespace zat::mp4 {

namespace {

constexpr uint8_t tag_es = 0x03;
constexpr uint8_t tag_decoder_config = 0x04;
constexpr uint8_t tag_decoder_specific_info = 0x05;

// Moves `space` behind the descriptor at its start. The length has seven bits a byte, the top bit
// set in all but the last of at most four (8.3.3).
bool next_descriptor(Reader* reader, Span* space, uint8_t* tag, Span* body) {
    uint8_t header[5] = {};
    const uint32_t got = read_some(reader, *space, 0, header, sizeof header);
    uint32_t used = 1;
    int64_t length = 0;
    for (bool more = true; more && used < sizeof header; ++used) {
        length = length << 7 | (header[used] & 0x7F);
        more = (header[used] & 0x80) != 0;
    }
    if (used > got) {
        return false;
    }
    *tag = header[0];
    body->start = space->start + used;
    body->end = body->start + std::min(length, space->end - body->start);
    space->start = body->end;
    return true;
}

bool find_descriptor(Reader* reader, Span space, uint8_t wanted, Span* body) {
    uint8_t tag = 0;
    while (next_descriptor(reader, &space, &tag, body)) {
        if (tag == wanted) {
            return true;
        }
    }
    return false;
}

// Bytes before the first descriptor inside an ES_Descriptor: the ES_ID, flags, and what they
// announce.
int64_t es_fields_size(Reader* reader, Span es) {
    uint8_t fields[6] = {};
    read_some(reader, es, 0, fields, sizeof fields);
    const uint8_t flags = fields[2];
    int64_t size = 3;
    size += (flags & 0x80) != 0 ? 2 : 0; // dependsOn_ES_ID
    if ((flags & 0x40) != 0) {           // URLlength and URLstring
        size += 1 + fields[size];
    }
    size += (flags & 0x20) != 0 ? 2 : 0; // OCR_ES_Id
    return size;
}

} // namespace

bool read_es_descriptor(Reader* reader, Span payload, EsDescriptor* descriptor) {
    payload.start += 4; // version and flags
    Span es;
    if (!find_descriptor(reader, payload, tag_es, &es)) {
        return false;
    }
    es.start += es_fields_size(reader, es);
    Span config;
    // objectTypeIndication, stream type and flags, bufferSizeDB 3, maxBitrate 4, avgBitrate 4
    uint8_t fields[13];
    if (!find_descriptor(reader, es, tag_decoder_config, &config) ||
        !read_all(reader, config, 0, fields, sizeof fields)) {
        return false;
    }
    descriptor->object_type = fields[0];
    descriptor->maximum_bitrate = ReadBE32(fields + 5);
    descriptor->average_bitrate = ReadBE32(fields + 9);
    config.start += static_cast<int64_t>(sizeof fields);
    if (!find_descriptor(reader, config, tag_decoder_specific_info, &descriptor->specific_info)) {
        descriptor->specific_info = {};
    }
    return true;
}

} // namespace zat::mp4
