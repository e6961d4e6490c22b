#include "common/zero_skip.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

// Most runs are short or empty: the first look is small, the further ones are not.
constexpr uint32_t first_look = 64;
constexpr uint32_t largest_look = 16384;

} // namespace

uint32_t leading_zeros(const uint8_t* bytes, uint32_t length) {
    uint32_t count = 0;
    for (uint64_t word = 0; length - count >= sizeof word; count += sizeof word) {
        std::memcpy(&word, bytes + count, sizeof word);
        if (word != 0) {
            break;
        }
    }
    while (count < length && bytes[count] == 0) {
        ++count;
    }
    return count;
}

int64_t skip_zeros(FileRecord* file) {
    uint8_t bytes[largest_look];
    const int64_t start = file->position;
    for (uint32_t look = first_look;; look = largest_look) {
        const uint32_t got = FileRead(file, bytes, look);
        if (got == 0) {
            return -1;
        }
        const uint32_t zeros = leading_zeros(bytes, got);
        if (zeros < got) {
            FileSeek(file, int64_t{zeros} - got, SeekOrigin::current);
            return file->position - start;
        }
        FileSeek(file, next_data(file, file->position), SeekOrigin::begin);
    }
}

} // namespace zat
