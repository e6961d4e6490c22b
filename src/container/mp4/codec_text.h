// The texts that name a track's codec.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zat::mp4 {

// Bytes of a codec text, terminator included.
constexpr size_t codec_text_size = 80;

// The catalogue's name for a sample entry's four bytes, or the remark that it has none. The object
// type of an entry with an elementary stream descriptor, 0 without, can tell another format.
void catalogue_text(
    std::string_view section, const uint8_t* format, uint8_t object_type, char* out);

} // namespace zat::mp4
