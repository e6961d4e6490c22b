#include "video/avc_config.h"

#include <algorithm>

namespace zat {

bool read_avc_config(Bytes record, AvcConfig* config) {
    constexpr size_t level_end = 4;
    constexpr size_t sps_count_at = 5;
    constexpr size_t sps_at = 8; // behind its length
    if (record.size() < level_end) {
        return false;
    }
    *config = {};
    config->profile = record[1];
    config->compatibility = record[2];
    config->level = record[3];
    if (record.size() > level_end) {
        config->length_size = (record[4] & 3U) + 1;
    }
    if (record.size() >= sps_at && (record[sps_count_at] & 0x1F) != 0) {
        const size_t length = ReadBE16(record.data() + sps_at - 2);
        config->first_sps = record.subspan(sps_at, std::min(length, record.size() - sps_at));
    }
    return true;
}

} // namespace zat
