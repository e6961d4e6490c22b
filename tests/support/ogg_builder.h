// Pages of Ogg files (RFC 3533, 6), whose checksums nobody asks for.
#pragma once

#include "support/byte_builder.h"

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace zat::test {

struct OggBuilder {
    std::vector<uint8_t> bytes;
    uint64_t serial = 1;
    uint64_t sequence = 0;

    // One page with whole packets.
    OggBuilder& page(int flags, int64_t granule, std::initializer_list<std::vector<uint8_t>> packets) {
        ByteBuilder lacing;
        ByteBuilder body;
        for (const auto& packet : packets) {
            lacing.fill(packet.size() / 255, 255).u8(packet.size() % 255);
            body.append(packet);
        }
        return raw_page(flags, granule, lacing.bytes, body.bytes);
    }

    OggBuilder& raw_page(int flags, int64_t granule, const std::vector<uint8_t>& lacing, const std::vector<uint8_t>& body) {
        ByteBuilder page;
        page.text("OggS").u8(0).u8(static_cast<uint64_t>(flags)).le64(static_cast<uint64_t>(granule));
        page.le32(serial).le32(sequence++).le32(0).u8(lacing.size()).append(lacing).append(body);
        bytes.insert(bytes.end(), page.bytes.begin(), page.bytes.end());
        return *this;
    }

    OggBuilder& stream(uint64_t number) {
        serial = number;
        return *this;
    }

    OggBuilder& append(const std::vector<uint8_t>& more) {
        bytes.insert(bytes.end(), more.begin(), more.end());
        return *this;
    }
};

// A Vorbis comment without framing: the vendor and items "NAME=value".
inline std::vector<uint8_t> comment_block(std::string_view vendor, std::initializer_list<std::string_view> items) {
    ByteBuilder block;
    block.le32(vendor.size()).text(vendor).le32(items.size());
    for (const std::string_view item : items) {
        block.le32(item.size()).text(item);
    }
    return block.bytes;
}

} // namespace zat::test
