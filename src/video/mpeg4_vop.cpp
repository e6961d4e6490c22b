#include "video/mpeg4_vop.h"

#include "common/bytes/bits.h"

namespace zat {

int64_t read_mpeg4_time(Mpeg4Clock* clock, Bytes behind) {
    constexpr uint32_t bidirectional = 2;
    constexpr uint32_t most_seconds = 60; // more are of no true picture
    BitReader reader{behind};
    const uint32_t coding_type = read_bits(&reader, 2); // vop_coding_type
    uint32_t seconds = 0;
    while (read_bits(&reader, 1) != 0) { // modulo_time_base
        if (++seconds > most_seconds) {
            return -1;
        }
    }
    const bool marker = read_bits(&reader, 1) != 0; // marker_bit
    const int bits = clock->resolution > 1 ? std::bit_width(clock->resolution - 1U) : 1;
    const uint32_t increment = read_bits(&reader, bits); // vop_time_increment
    if (reader.failed || !marker || increment >= clock->resolution) {
        return -1;
    }
    if (coding_type != bidirectional) {
        clock->seconds_before = clock->seconds;
        clock->seconds += seconds;
        return clock->seconds * clock->resolution + increment;
    }
    return (clock->seconds_before + seconds) * clock->resolution + increment;
}

void read_mpeg4_group(Mpeg4Clock* clock, Bytes behind) {
    BitReader reader{behind};
    const uint32_t hours = read_bits(&reader, 5);   // time_code_hours
    const uint32_t minutes = read_bits(&reader, 6); // time_code_minutes
    const bool marker = read_bits(&reader, 1) != 0; // marker_bit
    const uint32_t seconds = read_bits(&reader, 6); // time_code_seconds
    if (!reader.failed && marker) {
        clock->seconds = hours * 3600 + minutes * 60 + seconds;
    }
}

} // namespace zat
