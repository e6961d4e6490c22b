#include "detect/ac3_probe.h"

#include "audio/ac3.h"

namespace zat {

namespace {

constexpr uint8_t sync_word[2] = {0x0B, 0x77};

// fscod and frmsizecod stand behind the sync word and the two bytes of crc1.
constexpr size_t codes_offset = 4;

} // namespace

int64_t Ac3SyncCheck(Bytes bytes) {
    if (bytes.size() <= codes_offset + 1) {
        return -1;
    }
    // One byte short of the last place where the codes are inside: the sync word must start before
    // size - 5.
    const Bytes searched = bytes.first(bytes.size() - codes_offset);
    for (size_t from = 0;;) {
        const int64_t hit = find_byte_pair(searched, from, sync_word[0], sync_word[1]);
        if (hit < 0) {
            return -1;
        }
        const auto at = static_cast<size_t>(hit);
        const uint8_t codes = bytes[at + codes_offset];
        const int32_t frame = ac3_framesize(codes & 0x3F, codes >> 6);
        if (frame > 0) {
            const auto length = static_cast<size_t>(frame);
            if (length > bytes.size()) {
                return -1;
            }
            if (byte_at(bytes, at + length) == sync_word[0] &&
                byte_at(bytes, at + length + 1) == sync_word[1]) {
                return hit;
            }
        }
        from = at + 1;
    }
}

} // namespace zat
