#include "audio/es_descriptor.h"

#include <algorithm>

namespace zat {

namespace {

constexpr uint8_t tag_es = 0x03;
constexpr uint8_t tag_decoder_config = 0x04;
constexpr uint8_t tag_decoder_specific_info = 0x05;

// Moves `space` behind the descriptor at its start. The length has seven bits a byte, the top bit
// set in all but the last of at most four (8.3.3).
bool next_descriptor(Bytes* space, uint8_t* tag, Bytes* body) {
    constexpr size_t most_length_bytes = 4;
    size_t used = 1;
    size_t length = 0;
    for (bool more = true; more && used <= most_length_bytes; ++used) {
        if (used >= space->size()) {
            return false;
        }
        length = length << 7 | ((*space)[used] & 0x7F);
        more = ((*space)[used] & 0x80) != 0;
    }
    *tag = (*space)[0];
    *body = space->subspan(used, std::min(length, space->size() - used));
    *space = space->subspan(used + body->size());
    return true;
}

bool find_descriptor(Bytes space, uint8_t wanted, Bytes* body) {
    uint8_t tag = 0;
    while (next_descriptor(&space, &tag, body)) {
        if (tag == wanted) {
            return true;
        }
    }
    return false;
}

// What stands before the first descriptor inside an ES_Descriptor: the ES_ID, flags, and what they
// announce.
Bytes skip_es_fields(Bytes es) {
    const uint8_t flags = byte_at(es, 2);
    size_t size = 3;
    size += (flags & 0x80) != 0 ? 2 : 0; // dependsOn_ES_ID
    if ((flags & 0x40) != 0) {           // URLlength and URLstring
        size += 1U + byte_at(es, size);
    }
    size += (flags & 0x20) != 0 ? 2 : 0; // OCR_ES_Id
    return es.subspan(std::min(size, es.size()));
}

} // namespace

bool read_es_descriptor(Bytes descriptors, EsDescriptor* descriptor) {
    // objectTypeIndication, stream type and flags, bufferSizeDB 3, maxBitrate 4, avgBitrate 4
    constexpr size_t fields_size = 13;
    Bytes es;
    Bytes config;
    if (!find_descriptor(descriptors, tag_es, &es) ||
        !find_descriptor(skip_es_fields(es), tag_decoder_config, &config) ||
        config.size() < fields_size) {
        return false;
    }
    descriptor->object_type = config[0];
    descriptor->maximum_bitrate = ReadBE32(config.data() + 5);
    descriptor->average_bitrate = ReadBE32(config.data() + 9);
    if (!find_descriptor(
            config.subspan(fields_size), tag_decoder_specific_info, &descriptor->specific_info)) {
        descriptor->specific_info = {};
    }
    return true;
}

} // namespace zat
