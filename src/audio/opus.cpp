#include "audio/opus.h"

#include "common/record/channel_layout.h"
#include "common/text/text.h"

namespace zat {

namespace {

constexpr size_t opus_head_size = 19;
constexpr uint32_t longest_packet = 5760; // 120 ms

// By the configuration number in the first byte's top five bits, in samples.
uint32_t opus_frame_samples(uint8_t toc) {
    static constexpr uint16_t silk[] = {480, 960, 1920, 2880};
    static constexpr uint16_t hybrid[] = {480, 960};
    static constexpr uint16_t celt[] = {120, 240, 480, 960};
    const uint32_t config = toc >> 3;
    return config < 12 ? silk[config % 4] : config < 16 ? hybrid[config % 2] : celt[config % 4];
}

} // namespace

bool read_opus_head(Bytes packet, OpusHead* head) {
    if (packet.size() < opus_head_size || !has_at(packet, 0, "OpusHead")) {
        return false;
    }
    // Version at 8, gain at 16.
    head->channels = packet[9];
    head->pre_skip = ReadLE16(packet.data() + 10);
    head->input_rate = ReadLE32(packet.data() + 12);
    head->mapping_family = packet[18];
    return true;
}

bool read_opus_record(Bytes record, OpusHead* head) {
    // Version 1, channels 1, pre-skip 2, rate 4, gain 2, mapping family 1
    constexpr size_t record_size = 11;
    if (record.size() < record_size) {
        return false;
    }
    head->channels = record[1];
    head->pre_skip = ReadBE16(record.data() + 2);
    head->input_rate = ReadBE32(record.data() + 4);
    head->mapping_family = record[10];
    return true;
}

uint32_t opus_packet_samples(Bytes packet) {
    if (packet.empty()) {
        return 0;
    }
    const uint32_t code = packet[0] & 3;
    const uint32_t frames = code == 0 ? 1 : code < 3 ? 2 : byte_at(packet, 1) & 0x3F;
    const uint32_t samples = frames * opus_frame_samples(packet[0]);
    return samples <= longest_packet ? samples : 0;
}

void set_opus_facts(uint32_t channels, uint32_t mapping_family, ZatStream* stream) {
    constexpr uint32_t largest_fixed_family = 1; // RFC 7845, 5.1.1.2: the order of Vorbis
    copy_text(stream->codec, "Opus");
    stream->sample_rate = opus_rate;
    stream->channels = channels;
    if (mapping_family <= largest_fixed_family) {
        details_layout(default_channel_mask(channels), channels, stream->layout);
    }
}

} // namespace zat
