#include "common/bytes.h"

namespace zat {

int64_t find_byte_pair(Bytes bytes, size_t from, uint8_t a, uint8_t b) {
    size_t at = from;
    while (bytes.size() >= 2 && at <= bytes.size() - 2) {
        const void* hit = std::memchr(bytes.data() + at, a, bytes.size() - 1 - at);
        if (hit == nullptr) {
            return -1;
        }
        at = static_cast<size_t>(static_cast<const uint8_t*>(hit) - bytes.data());
        if (bytes[at + 1] == b) {
            return static_cast<int64_t>(at);
        }
        ++at;
    }
    return -1;
}

} // namespace zat
