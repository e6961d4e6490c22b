#include "common/bytes/bits.h"

namespace zat {

uint64_t VintValue(const uint8_t* buffer) {
    const int length = VintLength(buffer[0]);
    if (length == 0) {
        return 0;
    }
    uint64_t value = buffer[0] & (0xFFU >> length);
    for (int i = 1; i < length; ++i) {
        value = value << 8 | buffer[i];
    }
    return value;
}

uint32_t peek_bits(const BitReader* reader, int n) {
    const size_t first = reader->position / 8;
    const size_t size = reader->bytes.size();
    if (n != 0 && first < size && size - first >= sizeof(uint64_t)) {
        const auto word = static_cast<uint64_t>(ReadBE64(&reader->bytes[first]));
        return static_cast<uint32_t>(word << reader->position % 8 >> (64 - n));
    }
    uint64_t value = 0;
    for (size_t i = first; i < first + 5; ++i) {
        value = value << 8 | (i < size ? reader->bytes[i] : 0U);
    }
    const auto unused = static_cast<int>(40 - reader->position % 8) - n;
    return static_cast<uint32_t>(value >> unused & ((uint64_t{1} << n) - 1));
}

uint32_t read_bits(BitReader* reader, int n) {
    const uint32_t value = peek_bits(reader, n);
    skip_bits(reader, static_cast<size_t>(n));
    return value;
}

void skip_bits(BitReader* reader, size_t n) {
    const size_t end = reader->bytes.size() * 8;
    if (n > end - reader->position) {
        reader->position = end;
        reader->failed = true;
        return;
    }
    reader->position += n;
}

} // namespace zat
