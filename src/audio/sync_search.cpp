#include "audio/sync_search.h"

namespace zat {

int64_t find_mpeg_audio_sync(Bytes buf) {
    for (size_t i = 0; i + 1 < buf.size(); ++i) {
        if (buf[i] == 0xFF && (buf[i + 1] & 0xE0) == 0xE0) {
            return static_cast<int64_t>(i);
        }
    }
    return -1;
}

int64_t find_ac3_sync(Bytes buf) {
    constexpr int64_t wanted = 8; // bytes from the sync word on
    const int64_t position = find_byte_pair(buf, 0, 0x0B, 0x77);
    return position <= static_cast<int64_t>(buf.size()) - wanted ? position : -1;
}

int64_t find_dts_sync(Bytes buf) {
    int64_t position = find_byte_pair(buf, 0, 0x7F, 0xFE);
    while (position >= 0 && !has_at(buf, static_cast<size_t>(position) + 2, "\x80\x01")) {
        position = find_byte_pair(buf, static_cast<size_t>(position) + 1, 0x7F, 0xFE);
    }
    return position;
}

} // namespace zat
