// The languages of tracks.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zat::mp4 {

constexpr size_t language_size = 4; // bytes of a three-letter code, its terminator included

// Writes the code that a media header's 16 bits stand for: three letters of five bits each (ISO/IEC
// 14496-12, 8.4.2.3), or a number of the Macintosh's script manager (QuickTime File Format,
// "Language Code Values"), then as ISO 639-2/T. Nothing when it is unspecified.
void language_text(uint16_t code, char (&out)[language_size]);

} // namespace zat::mp4
