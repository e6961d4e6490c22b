#include "common/start_code.h"

namespace zat {

int64_t find_start_code(Bytes bytes, size_t from) {
    if (bytes.size() < start_code_size) {
        return -1;
    }
    // Of the prefix its last two bytes are looked for; the value behind them must exist, too.
    const Bytes prefixes = bytes.first(bytes.size() - 1);
    for (size_t at = from + 1;;) {
        const int64_t pair = find_byte_pair(prefixes, at, 0x00, 0x01);
        if (pair < 0) {
            return -1;
        }
        if (bytes[static_cast<size_t>(pair) - 1] == 0) {
            return pair - 1;
        }
        at = static_cast<size_t>(pair) + 2;
    }
}

int64_t find_start_code_of(Bytes bytes, size_t from, uint8_t code) {
    int64_t at = find_start_code(bytes, from);
    while (at >= 0 && bytes[static_cast<size_t>(at) + 3] != code) {
        at = find_start_code(bytes, static_cast<size_t>(at) + 3);
    }
    return at;
}

} // namespace zat
