// The codec identifiers of Matroska (RFC 9559, section 12, and the codec mappings of its authors).
#pragma once

#include "common/catalogue/codec_names.h"

#include <cstdint>
#include <string_view>

namespace zat::matroska {

// What describes a track.
enum class Parser : uint8_t {
    plain,  // the container alone
    code,   // the reader of video streams that have a four-character code
    vfw,    // BITMAPINFOHEADER in the private data
    stsd,   // a sample entry of QuickTime
    fourcc, // a four-character code
    raw,
    theora,
    mpeg_audio,
    aac,
    ac3,
    eac3,
    dts,
    truehd,
    vorbis,
    opus,
    flac,
    alac,
    lossless, // with the container's bits per sample
    pcm_signed_le,
    pcm_signed_be,
    pcm_float,
    acm, // WAVEFORMATEX in the private data
};

struct Codec {
    std::string_view id;
    std::string_view text; // in lines
    CodecName name;        // in details
    Parser parser = Parser::plain;
    uint32_t code = 0; // of Parser::code
};

// The row of an identifier or of the part of it before a "/"; null for one that is in no row.
const Codec* find_codec(std::string_view codec_id);

} // namespace zat::matroska
