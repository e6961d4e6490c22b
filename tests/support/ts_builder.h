// Transport streams, packet by packet.
#pragma once

#include "common/bytes/crc.h"
#include "container/mpeg_ts/sections.h"
#include "support/byte_builder.h"

#include <algorithm>
#include <map>

namespace zat::test {

inline std::vector<uint8_t> descriptor(int tag, const std::vector<uint8_t>& data) {
    return ByteBuilder().raw({tag}).u8(data.size()).append(data).bytes;
}
inline std::vector<uint8_t> descriptor(int tag, std::string_view data) {
    return ByteBuilder().raw({tag}).u8(data.size()).text(data).bytes;
}

// A section of the long form with its CRC. `crc_error` spoils that.
inline std::vector<uint8_t> section(
    int table_id, uint64_t extension, const std::vector<uint8_t>& body, int number = 0, uint32_t crc_error = 0) {
    ByteBuilder to;
    to.raw({table_id})
        .be16(0xB000 | (body.size() + 9))
        .be16(extension)
        .raw({0xC1, number, table_id == 0x4E ? 1 : 0})
        .append(body);
    return to.be32(crc32_mpeg2(to.bytes) ^ crc_error).bytes;
}

inline std::vector<uint8_t> pat(const std::vector<std::pair<int, int>>& programs) {
    ByteBuilder body;
    for (const auto& [number, pid] : programs) {
        body.be16(static_cast<uint64_t>(number)).be16(static_cast<uint64_t>(0xE000 | pid));
    }
    return section(0, 1, body.bytes);
}

struct MapEntry {
    int type, pid;
    std::vector<uint8_t> descriptors = {};
};

inline std::vector<uint8_t> pmt(int program, int pcr_pid, const std::vector<MapEntry>& entries,
    const std::vector<uint8_t>& descriptors = {}, uint32_t crc_error = 0) {
    ByteBuilder body;
    body.be16(static_cast<uint64_t>(0xE000 | pcr_pid)).be16(0xF000 | descriptors.size()).append(descriptors);
    for (const MapEntry& entry : entries) {
        body.raw({entry.type}).be16(static_cast<uint64_t>(0xE000 | entry.pid));
        body.be16(0xF000 | entry.descriptors.size()).append(entry.descriptors);
    }
    return section(2, static_cast<uint64_t>(program), body.bytes, 0, crc_error);
}

struct TsBuilder {
    ByteBuilder file;
    size_t stride = 188;
    std::map<int, int> counters;

    // A packet; the payload is filled up by an adaptation field.
    TsBuilder& packet(int pid, const std::vector<uint8_t>& payload, bool starts = false, int scrambling = 0, int64_t pcr = -1) {
        if (stride == 192) {
            file.be32(0);
        }
        const size_t from = file.bytes.size();
        const int flags = (starts ? 0x40 : 0) | pid >> 8;
        const bool has_field = pcr >= 0 || payload.size() < 184;
        int& counter = counters[pid];
        file.raw({0x47, flags, pid & 0xFF, scrambling << 6 | (has_field ? 0x20 : 0) | (payload.empty() ? 0 : 0x10) | counter});
        counter = payload.empty() ? counter : (counter + 1) & 15;
        if (has_field) {
            const size_t length = 183 - payload.size();
            file.u8(length);
            if (length > 0) {
                file.raw({pcr >= 0 ? 0x10 : 0});
            }
            if (pcr >= 0) {
                const auto base = static_cast<uint64_t>(pcr / 300);
                const auto extension = static_cast<uint64_t>(pcr % 300);
                file.be32(base >> 1).be16((base & 1) << 15 | 0x7E00 | extension);
            }
            file.pad_to(from + 188 - payload.size(), 0xFF);
        }
        file.append(payload);
        if (stride == 204) {
            file.fill(16);
        }
        return *this;
    }

    // A unit over as many packets as it takes.
    TsBuilder& unit(int pid, const std::vector<uint8_t>& bytes, int scrambling = 0) {
        for (size_t at = 0; at < bytes.size(); at += 184) {
            const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(std::min(at + 184, bytes.size()));
            packet(pid, {bytes.begin() + static_cast<std::ptrdiff_t>(at), end}, at == 0, scrambling);
        }
        return *this;
    }

    TsBuilder& table(int pid, const std::vector<uint8_t>& bytes) { return unit(pid, ByteBuilder().u8(0).append(bytes).bytes); }

    TsBuilder& pes(int pid, int stream_id, int64_t pts, const std::vector<uint8_t>& payload, int scrambling = 0) {
        const auto t = static_cast<uint64_t>(pts) & 0x1FFFFFFFF;
        ByteBuilder to;
        to.be24(1).raw({stream_id}).be16(0).raw({0x80, 0x80, 5});
        to.u8(0x21 | t >> 29).be16((t >> 14 & 0xFFFE) | 1).be16((t << 1 & 0xFFFE) | 1).append(payload);
        return unit(pid, to.bytes, scrambling);
    }
};

} // namespace zat::test
