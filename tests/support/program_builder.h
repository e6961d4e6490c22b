// MPEG program streams, built unit by unit.
#pragma once

#include "support/byte_builder.h"
#include "support/video_builder.h"

namespace zat::test {

using Payload = std::vector<uint8_t>;

constexpr int64_t no_stamp = -1;

// A clock of 33 bits with its markers, behind four bits.
inline Payload clock_bytes(uint64_t prefix, int64_t clock) {
    const auto ticks = static_cast<uint64_t>(clock);
    return BitBuilder()
        .bits(prefix, 4)
        .bits(ticks >> 30, 3)
        .bits(1, 1)
        .bits(ticks >> 15, 15)
        .bits(1, 1)
        .bits(ticks, 15)
        .bits(1, 1)
        .bytes;
}

struct ProgramBuilder : ByteBuilder {
    // A pack of MPEG-2; the rate in units of 50 bytes per second.
    ProgramBuilder& pack(int64_t clock, uint64_t rate = 25200) {
        const auto ticks = static_cast<uint64_t>(clock);
        BitBuilder bits;
        bits.bits(0x1BA, 32).bits(1, 2).bits(ticks >> 30, 3).bits(1, 1).bits(ticks >> 15, 15).bits(1, 1).bits(ticks, 15);
        append(bits.bits(1, 1).bits(0, 9).bits(1, 1).bits(rate, 22).bits(3, 2).bits(0x1F, 5).bits(0, 3).bytes);
        return *this;
    }
    ProgramBuilder& pack1(int64_t clock) {
        be32(0x1BA).append(clock_bytes(2, clock));
        append(BitBuilder().bits(1, 1).bits(3500, 22).bits(1, 1).bytes);
        return *this;
    }
    // A packet of MPEG-2, and one of MPEG-1. A length of -1 is the true one.
    ProgramBuilder& packet(int id, const Payload& payload, int64_t stamp = no_stamp, int length = -1) {
        const Payload clock = stamp == no_stamp ? Payload{} : clock_bytes(2, stamp);
        return unit(id,
            ByteBuilder().raw({0x81, stamp == no_stamp ? 0 : 0x80}).u8(clock.size()).append(clock).append(payload).bytes, length);
    }
    ProgramBuilder& packet1(int id, const Payload& payload, int64_t stamp = no_stamp) {
        return unit(id, ByteBuilder().append(stamp == no_stamp ? Payload{0x0F} : clock_bytes(2, stamp)).append(payload).bytes);
    }
    ProgramBuilder& unit(int id, const Payload& content, int length = -1) {
        be24(1).u8(static_cast<uint64_t>(id)).be16(length < 0 ? content.size() : static_cast<uint64_t>(length)).append(content);
        return *this;
    }
    // A program stream map of streams {type, id}, all with the same descriptors.
    ProgramBuilder& map(std::initializer_list<std::pair<int, int>> streams,
        const Payload& descriptors = {0x0A, 4, 'j', 'p', 'n', 0}, int flags = 0xE1) {
        ByteBuilder entries;
        for (const auto& [type, id] : streams) {
            entries.raw({type, id}).be16(descriptors.size()).append(descriptors);
        }
        return unit(0xBC, ByteBuilder().raw({flags, 0xFF, 0, 0}).be16(entries.bytes.size()).append(entries.bytes).be32(0).bytes);
    }
};

// Frames of audio.
inline Payload mp2_frames(int count) { // 44.1 kHz, 64 kbit/s, mono
    ByteBuilder all;
    for (int i = 0; i < count; ++i) {
        all.append(ByteBuilder().raw({0xFF, 0xFD, 0x40, 0xC0}).pad_to(208, 0x11).bytes);
    }
    return all.bytes;
}
inline Payload ac3_frames(int count) { // 48 kHz, 64 kbit/s, stereo
    ByteBuilder all;
    for (int i = 0; i < count; ++i) {
        all.append(ByteBuilder().raw({0x0B, 0x77, 0, 0, 0x08, 0x40, 0x40, 0}).pad_to(256, 0x11).bytes);
    }
    return all.bytes;
}

} // namespace zat::test
