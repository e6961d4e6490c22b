#include "audio/opus_config.h"

namespace zat {

bool read_opus_config(Bytes record, OpusConfig* config) {
    // Version 1, channels 1, pre-skip 2, rate 4, gain 2, mapping family 1
    constexpr size_t record_size = 11;
    if (record.size() < record_size) {
        return false;
    }
    config->channels = record[1];
    config->pre_skip = ReadBE16(record.data() + 2);
    config->input_rate = ReadBE32(record.data() + 4);
    config->mapping_family = record[10];
    return true;
}

} // namespace zat
