#include "common/bytes/start_code.h"

namespace zat {

int64_t find_start_code_prefix(Bytes bytes, size_t from) {
    // Its last two bytes are looked for.
    for (size_t at = from + 1;;) {
        const int64_t pair = find_byte_pair(bytes, at, 0x00, 0x01);
        if (pair < 0) {
            return -1;
        }
        if (bytes[static_cast<size_t>(pair) - 1] == 0) {
            return pair - 1;
        }
        at = static_cast<size_t>(pair) + 2;
    }
}

int64_t find_start_code(Bytes bytes, size_t from) {
    return bytes.empty() ? -1 : find_start_code_prefix(bytes.first(bytes.size() - 1), from);
}

int64_t find_start_code_of(Bytes bytes, size_t from, uint8_t code) {
    int64_t at = find_start_code(bytes, from);
    while (at >= 0 && bytes[static_cast<size_t>(at) + 3] != code) {
        at = find_start_code(bytes, static_cast<size_t>(at) + 3);
    }
    return at;
}

} // namespace zat
