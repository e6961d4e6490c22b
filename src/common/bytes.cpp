#include "common/bytes.h"

namespace zat {

namespace {

constexpr size_t block_size = 64;

// Free of branches, so that the compiler makes vector instructions of it: as fast as memchr, and
// not slower on data that is full of the first byte.
bool block_has_pair(const uint8_t* block, uint8_t a, uint8_t b) {
    uint8_t found = 0;
    for (size_t i = 0; i < block_size; ++i) {
        const auto first = static_cast<uint8_t>(block[i] == a ? 1 : 0);
        const auto second = static_cast<uint8_t>(block[i + 1] == b ? 1 : 0);
        found = static_cast<uint8_t>(found | (first & second));
    }
    return found != 0;
}

} // namespace

int64_t find_byte_pair(Bytes bytes, size_t from, uint8_t a, uint8_t b) {
    const size_t end = bytes.empty() ? 0 : bytes.size() - 1; // of the places for `a`
    const uint8_t* p = bytes.data();
    // A pair is often close by: blocks only once it is not.
    size_t checked = 0;
    for (size_t at = from; at < end; ++at, ++checked) {
        if (checked >= block_size) {
            while (end - at >= block_size && !block_has_pair(p + at, a, b)) {
                at += block_size;
            }
            checked = 0;
            if (at == end) {
                break;
            }
        }
        if (p[at] == a && p[at + 1] == b) {
            return static_cast<int64_t>(at);
        }
    }
    return -1;
}

size_t leading_zeros(Bytes bytes) {
    size_t count = 0;
    for (uint64_t word = 0; bytes.size() - count >= sizeof word; count += sizeof word) {
        std::memcpy(&word, bytes.data() + count, sizeof word);
        if (word != 0) {
            break;
        }
    }
    while (count < bytes.size() && bytes[count] == 0) {
        ++count;
    }
    return count;
}

} // namespace zat
