// The header of RealAudio, at the start of a ".ra" file and in RealMedia's media properties.
#pragma once

#include "common/bytes/bytes.h"
#include "common/record/details.h"

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr size_t realaudio_header_size = 70; // bytes up to the codec's end, of any version

struct RealAudioHeader {
    uint16_t version = 0;
    uint32_t sample_rate = 0; // Hz
    uint32_t bits = 0;        // per sample
    uint32_t channels = 0;
    uint32_t codec = 0;            // four characters
    uint32_t header_size = 0;      // bytes from the file's first on
    uint32_t data_size = 0;        // bytes of sound; 0: not told
    uint32_t bytes_per_minute = 0; // of sound; 0: not told
    uint32_t texts_at = 0;         // offset of title, author, copyright: counted texts
};

// Reads from ".ra\xFD" on. False for bytes that are cut off or a version that is not known.
bool read_realaudio_header(Bytes bytes, RealAudioHeader* header);

// Codec, rate and channels, and the bits of a lossless codec.
void realaudio_facts(const RealAudioHeader& header, ZatStream* stream);

// The catalogue's name of a codec by the four characters of its id, of RealVideo too. `out` has 256
// bytes.
void real_codec_name(uint32_t id, char* out);

} // namespace zat
