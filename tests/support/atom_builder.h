// Atoms of MP4 files, with sizes that may lie.
#pragma once

#include "support/byte_builder.h"

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace zat::test {

constexpr int64_t own_size = -1;

inline Data atom(std::string_view type, const Data& payload, int64_t size = own_size) {
    const auto whole = static_cast<int64_t>(payload.size()) + 8;
    return ByteBuilder().be32(static_cast<uint64_t>(size == own_size ? whole : size)).text(type).append(payload).bytes;
}

inline Data atom(std::string_view type, std::initializer_list<Data> children) {
    return atom(type, join(children));
}

// With its size in 64 bits behind the type.
inline Data large_atom(std::string_view type, const Data& payload, int64_t size = own_size) {
    const auto whole = static_cast<int64_t>(payload.size()) + 16;
    const auto told = static_cast<uint64_t>(size == own_size ? whole : size);
    return ByteBuilder().be32(1).text(type).be64(told).append(payload).bytes;
}

inline Data file_type(std::string_view brand) {
    return atom("ftyp", ByteBuilder().text(brand).be32(0).bytes);
}

inline Data movie_header(uint64_t time_scale, uint64_t duration) {
    return atom("mvhd", ByteBuilder().be32(0).be64(0).be32(time_scale).be32(duration).bytes);
}

inline Data sizes(const std::vector<uint64_t>& entries, int64_t count = own_size) {
    ByteBuilder table;
    table.be32(0).be32(0).be32(count == own_size ? entries.size() : static_cast<uint64_t>(count));
    for (const uint64_t entry : entries) {
        table.be32(entry);
    }
    return atom("stsz", table.bytes);
}

inline Data constant_sizes(uint64_t size, uint64_t count) {
    return atom("stsz", ByteBuilder().be32(0).be32(size).be32(count).bytes);
}

inline Data first_chunk(uint64_t offset) {
    return atom("stco", ByteBuilder().be32(0).be32(1).be32(offset).bytes);
}

inline Data descriptions(std::initializer_list<Data> entries) {
    return atom("stsd", ByteBuilder().be32(0).be32(entries.size()).append(join(entries)).bytes);
}

inline Data video_entry(std::string_view format, std::initializer_list<Data> children = {}) {
    ByteBuilder entry;
    entry.be32(0).be32(1).fill(16).be16(320).be16(240).fill(46).be16(24).be16(0xFFFF);
    return atom(format, entry.append(join(children)).bytes);
}

// Of version 0: 44100 Hz, two channels, 16 bits.
inline Data audio_entry(std::string_view format, std::initializer_list<Data> children = {}) {
    ByteBuilder entry;
    entry.be32(0).be32(1).fill(8).be16(2).be16(16).be32(0).be16(44100).be16(0);
    return atom(format, entry.append(join(children)).bytes);
}

// One track; `tables` are what its sample table holds. The sample durations' scale is 1000.
inline Data track(uint64_t id, std::string_view handler, std::initializer_list<Data> tables) {
    const Data track_header = ByteBuilder().be32(0).be64(0).be32(id).bytes;
    const Data media_header = ByteBuilder().be32(0).be64(0).be32(1000).be32(0).bytes;
    return atom(
        "trak", {atom("tkhd", track_header),
                    atom("mdia", {atom("mdhd", media_header), atom("hdlr", ByteBuilder().be64(0).text(handler).fill(12).bytes),
                                     atom("minf", {atom("stbl", tables)})})});
}

// ISO/IEC 14496-1 descriptors around a decoder's configuration, lengths of one byte.
inline Data es_descriptor(int object_type, const Data& specific_info, uint64_t average_bitrate) {
    const Data specific = ByteBuilder().u8(5).u8(specific_info.size()).append(specific_info).bytes;
    const Data config = ByteBuilder()
                            .u8(4)
                            .u8(13 + specific.size())
                            .u8(static_cast<uint64_t>(object_type))
                            .u8(0x15)
                            .be24(0)
                            .be32(128000)
                            .be32(average_bitrate)
                            .append(specific)
                            .bytes;
    const Data es = ByteBuilder().be16(1).u8(0).append(config).bytes;
    return atom("esds", ByteBuilder().be32(0).u8(3).u8(es.size()).append(es).bytes);
}

} // namespace zat::test
