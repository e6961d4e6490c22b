#include "audio/alac.h"

namespace zat {

bool read_alac_config(Bytes cookie, AlacConfig* config) {
    constexpr size_t config_size = 24;
    if (cookie.size() < config_size) {
        return false;
    }
    const uint8_t* fields = cookie.data();
    config->frame_length = ReadBE32(fields);
    config->bit_depth = fields[5];
    config->channels = fields[9];
    config->average_bit_rate = ReadBE32(fields + 16);
    config->sample_rate = ReadBE32(fields + 20);
    return true;
}

} // namespace zat
