// The names of codecs in the typed details: one vocabulary for all containers, whatever each of
// them calls the codec. (The names in lines come from the catalogue, which a host can edit.)
#pragma once

#include "common/record/details.h"

#include <bit>
#include <cstdint>
#include <string_view>

namespace zat {

// Empty for a code that is in no table. Neither is longer than 31 bytes.
struct CodecName {
    std::string_view codec;
    std::string_view profile = {}; // where the code alone tells it
};

// By the four characters of AVI, QuickTime, MP4, RealMedia and ASF, in upper or lower case; the
// first one in the top byte. BITMAPINFOHEADER's compression numbers count as their four bytes.
CodecName video_fourcc_name(uint32_t code);
CodecName audio_fourcc_name(uint32_t code);

// By the code of QuickTime's sample entries, one of which is another codec's elsewhere.
CodecName video_entry_name(uint32_t code);

// By a WAVE format tag (RFC 2361 and the multimedia registry).
CodecName format_tag_name(uint16_t tag);

// Sets the codec and, where the name tells one, the profile; flags the codecs that are lossless.
void set_codec(ZatStream* stream, const CodecName& name);

// Sets the codec of a video or audio stream and its codec_id by a four-character code. One that is
// in no table is its own name.
void set_fourcc_codec(ZatStream* stream, uint32_t code);

// Sets the codec of an audio stream, its codec_id ("0x0055") and, of PCM, the profile by the tag
// and the bits per sample.
void set_format_tag_codec(ZatStream* stream, uint16_t tag, uint32_t bits);

enum class PcmKind : uint8_t { signed_integer, unsigned_integer, floating };

// Sets the codec PCM and its profile, such as "signed 16 LE", and the bit depth. A byte has no byte
// order; without bits there is no profile.
void set_pcm(ZatStream* stream, PcmKind kind, uint32_t bits, std::endian order);

} // namespace zat
