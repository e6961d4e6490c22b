// The name of an MPEG-4 encode by the strings that its encoder left in it.
#pragma once

#include "common/bytes/bytes.h"
#include "zat/details.h"

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr size_t mpeg4_encoder_size = 192; // bytes of a name with an aspect, terminator included

// Names the encode by the codec's data, then the stream's start, and the four bytes of its
// compression: the encoder's name by the catalogue, else the code's, and the pixel aspect of the
// video object layer when that is known. Sets the stream's encoder.
void name_mpeg4_encode(Bytes codec_data, Bytes media, const uint8_t* compression,
    char (&name)[mpeg4_encoder_size], ZatStream* stream);

// Sets the stream's encoder alone, by the first user data.
void set_mpeg4_encoder(Bytes media, ZatStream* stream);

// Whether the bytes show an encoder's name, or the header that it stands behind.
bool shows_mpeg4_encoder(Bytes media);

} // namespace zat
