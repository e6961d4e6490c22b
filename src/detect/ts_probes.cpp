#include "detect/ts_probes.h"

#include <cstring>

namespace zat {

namespace {

constexpr uint8_t sync_byte = 'G';
constexpr int sync_bytes_tried = 5;

bool has_sync(Bytes bytes, size_t at) {
    return byte_at(bytes, at) == sync_byte;
}

} // namespace

int64_t TsFullCheck(Bytes bytes, uint32_t* packet_size) {
    const uint8_t* p = bytes.data();
    // Places with a whole packet and one byte more behind them.
    const size_t end =
        bytes.size() > timestamped_packet_size ? bytes.size() - timestamped_packet_size : 0;
    size_t at = 0;
    for (int tried = 0; at < end; ++tried, ++at) {
        const void* hit = std::memchr(p + at, sync_byte, end - at);
        if (hit == nullptr) {
            break;
        }
        if (tried == sync_bytes_tried) {
            return -1;
        }
        at = static_cast<size_t>(static_cast<const uint8_t*>(hit) - p);
        for (const uint32_t size : {ts_packet_size, timestamped_packet_size}) {
            if (p[at + size] == sync_byte) {
                *packet_size = size;
                return static_cast<int64_t>(at);
            }
        }
    }
    return ts_wants_more;
}

int TsTwoPacketCheck(Bytes bytes, uint32_t* packet_size) {
    if (!has_sync(bytes, 0)) {
        return -1;
    }
    for (const uint32_t size : {ts_packet_size, timestamped_packet_size}) {
        if (has_sync(bytes, size)) {
            *packet_size = size;
            return 0;
        }
    }
    return -1;
}

int TsOnePacketCheck(Bytes bytes) {
    return has_sync(bytes, has_sync(bytes, 0) ? ts_packet_size : 4) ? 0 : -1;
}

} // namespace zat
