#include "video/rbsp_reader.h"

#include <algorithm>
#include <bit>

namespace zat {

namespace {

constexpr int end_of_data = -1;

int next_byte(RbspReader* reader) {
    if (reader->owes_zero) {
        reader->owes_zero = false;
        return 0;
    }
    const Bytes left = reader->nal.subspan(reader->next);
    if (left.empty()) {
        return end_of_data;
    }
    if (has_at(left, 0, "\0\0\3")) {
        reader->next += 3;
        reader->owes_zero = true;
        return 0;
    }
    if (has_at(left, 0, "\0\0\1") && left.size() > 3 && (left[3] & 0x1F) != 0) {
        reader->next = reader->nal.size();
        return end_of_data;
    }
    ++reader->next;
    return left[0];
}

// Loads as many whole bytes as fit.
void load(RbspReader* reader) {
    while (reader->loaded_bits <= 56) {
        const int byte = next_byte(reader);
        if (byte == end_of_data) {
            return;
        }
        reader->loaded |= static_cast<uint64_t>(byte) << (56 - reader->loaded_bits);
        reader->loaded_bits += 8;
    }
}

// n: 0 to 63.
void consume(RbspReader* reader, int n) {
    reader->loaded <<= n;
    reader->loaded_bits = std::max(reader->loaded_bits - n, 0);
    reader->position += static_cast<uint64_t>(n);
}

} // namespace

RbspReader rbsp_reader(Bytes nal) {
    RbspReader reader{};
    reader.nal = nal;
    reader.total_bits = uint64_t{nal.size()} * 8;
    return reader;
}

uint32_t read_u(RbspReader* reader, int n) {
    if (reader->loaded_bits < n) {
        load(reader);
    }
    const auto value = static_cast<uint32_t>(n == 0 ? 0 : reader->loaded >> (64 - n));
    consume(reader, n);
    return value;
}

uint32_t read_ue(RbspReader* reader) {
    uint64_t zeros = 0;
    for (;;) {
        load(reader);
        if (reader->loaded != 0) {
            break;
        }
        if (reader->loaded_bits == 0) {
            reader->position = reader->total_bits + 1;
            return 0;
        }
        const int run = std::min(reader->loaded_bits, 63);
        zeros += static_cast<uint64_t>(run);
        consume(reader, run);
    }
    const int run = std::countl_zero(reader->loaded);
    zeros += static_cast<uint64_t>(run);
    consume(reader, run);

    // The set bit and as many bits again as there were zeros before it.
    uint32_t value = read_u(reader, 1);
    for (uint64_t left = zeros; left > 0;) {
        const int n = static_cast<int>(std::min<uint64_t>(left, 32));
        value = static_cast<uint32_t>(uint64_t{value} << n) | read_u(reader, n);
        left -= static_cast<uint64_t>(n);
    }
    return value - 1;
}

uint32_t read_se(RbspReader* reader) {
    const uint32_t code = read_ue(reader);
    return code % 2 != 0 ? code / 2 + 1 : 0U - code / 2;
}

} // namespace zat
