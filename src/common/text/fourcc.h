// Four-character codes, in files and as constants.
#pragma once

#include <cstdint>

namespace zat {

// As a number, the first character in the top byte: what ReadBE32 gives.
constexpr uint32_t fourcc(const char (&text)[5]) {
    uint32_t code = 0;
    for (int i = 0; i < 4; ++i) {
        code = code << 8 | static_cast<uint8_t>(text[i]);
    }
    return code;
}

// Room for both forms of FourccText.
constexpr int fourcc_text_size = 9;

// The four characters, or eight hexadecimal digits when a byte is below 0x20.
void FourccText(const uint8_t* bytes, char (&out)[fourcc_text_size]);

// The same, with the digits also for bytes above 0x7E.
void printable_fourcc_text(const uint8_t* bytes, char (&out)[fourcc_text_size]);
void printable_fourcc_text(uint32_t code, char (&out)[fourcc_text_size]);

} // namespace zat
