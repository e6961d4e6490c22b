#include "audio/vorbis.h"

#include "common/text.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

constexpr size_t fields_size = 17;     // audio_channels up to bitrate_minimum
constexpr uint32_t unset = UINT32_MAX; // a bit rate that the encoder leaves open

struct RateMode {
    const char* name;
    uint32_t bitrate; // bit/s
};

RateMode rate_mode(uint32_t maximum, uint32_t nominal, uint32_t minimum) {
    if (minimum != maximum) {
        return {"ABR", (minimum + maximum) >> 1};
    }
    if (maximum == nominal) {
        return {"CBR", maximum};
    }
    return {maximum == unset ? "VBR" : "QB", nominal};
}

} // namespace

void FormatVorbisLine(Bytes bytes, size_t offset, char* out, uint32_t* bitrate) {
    uint8_t fields[fields_size] = {};
    if (offset < bytes.size()) {
        std::memcpy(fields, bytes.data() + offset, std::min(bytes.size() - offset, fields_size));
    }
    const uint8_t channels = fields[0];                // audio_channels
    const uint32_t sample_rate = ReadLE32(fields + 1); // audio_sample_rate
    const uint32_t maximum = ReadLE32(fields + 5);     // bitrate_maximum
    const uint32_t nominal = ReadLE32(fields + 9);     // bitrate_nominal
    const uint32_t minimum = ReadLE32(fields + 13);    // bitrate_minimum
    const RateMode mode = rate_mode(maximum, nominal, minimum);

    char layout[32] = "";
    if (channels == 1) {
        format_text(layout, sizeof layout, "[%s Mono]", mode.name);
    } else if (channels == 2) {
        format_text(layout, sizeof layout, "[%s Stereo]", mode.name);
    } else if (channels > 2) {
        // The count goes out as a character code: hosts know these lines that way.
        format_text(layout, sizeof layout, "[%s %ch]", mode.name, channels);
    }
    format_text(
        out, line_size, "OggVorbis %dHz %s %.3fkbps", sample_rate, layout, mode.bitrate * 0.001);
    *bitrate = mode.bitrate;
}

} // namespace zat
