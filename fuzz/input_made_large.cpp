#include "input_file.h"
#include "memory_input.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace zat::test {

namespace {

// What the library reads whole; what it samples; what 32 bits do not count.
constexpr int64_t sizes[] = {int64_t{1} << 20, int64_t{24} << 20, int64_t{5} << 30};

// Bytes that are copied at a time, so that a file of few of them is read as fast as another.
constexpr size_t worth_copying = 4096;

} // namespace

InputFile input_file(Bytes bytes) {
    static uint8_t period[65536 + worth_copying];
    const size_t once = std::min(bytes.size(), sizeof period - worth_copying);
    size_t length = 0;
    while (once != 0 && length < worth_copying) {
        const size_t part = std::min(once, sizeof period - length);
        std::memcpy(period + length, bytes.data(), part);
        length += part;
    }
    if (length == 0) {
        return {put_in_memory({}, 0), 0};
    }
    const auto whole = static_cast<int64_t>(length);
    const int64_t size = sizes[bytes.size() % std::size(sizes)] / whole * whole;
    return {put_in_memory({period, length}, size), size};
}

} // namespace zat::test
