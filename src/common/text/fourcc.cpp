#include "common/text/fourcc.h"

#include "common/text/text.h"

#include <algorithm>

namespace zat {

namespace {

void write_text(const uint8_t* bytes, uint8_t last, char (&out)[fourcc_text_size]) {
    const bool shown = std::all_of(
        bytes, bytes + 4, [last](uint8_t byte) { return byte >= 0x20 && byte <= last; });
    format_text(out, sizeof out, shown ? "%c%c%c%c" : "%02x%02x%02x%02x", bytes[0], bytes[1],
        bytes[2], bytes[3]);
}

} // namespace

void FourccText(const uint8_t* bytes, char (&out)[fourcc_text_size]) {
    write_text(bytes, 0xFF, out);
}

void printable_fourcc_text(const uint8_t* bytes, char (&out)[fourcc_text_size]) {
    write_text(bytes, 0x7E, out);
}

void printable_fourcc_text(uint32_t code, char (&out)[fourcc_text_size]) {
    const uint8_t bytes[4] = {static_cast<uint8_t>(code >> 24), static_cast<uint8_t>(code >> 16),
        static_cast<uint8_t>(code >> 8), static_cast<uint8_t>(code)};
    printable_fourcc_text(bytes, out);
}

} // namespace zat
