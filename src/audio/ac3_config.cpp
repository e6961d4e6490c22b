#include "audio/ac3_config.h"

#include "audio/ac3.h"
#include "common/bytes/bits.h"

#include <bit>
#include <iterator>

namespace zat {

namespace {

void set_channels(uint32_t acmod, uint32_t lfeon, Ac3Config* config) {
    config->acmod = acmod;
    config->lfe = lfeon != 0;
    config->channels = static_cast<uint32_t>(std::popcount(ac3_channel_mask(acmod, config->lfe)));
}

} // namespace

bool read_ac3_config(Bytes record, Ac3Config* config) {
    BitReader bits{.bytes = record};
    const uint32_t fscod = read_bits(&bits, 2);
    const uint32_t bsid = read_bits(&bits, 5);
    skip_bits(&bits, 3); // bsmod
    const uint32_t acmod = read_bits(&bits, 3);
    const uint32_t lfeon = read_bits(&bits, 1);
    const uint32_t kilobits = ac3_bitrate(read_bits(&bits, 5)); // bit_rate_code
    if (bits.failed) {
        return false;
    }
    *config = {};
    config->sample_rate = ac3_sample_rate(fscod);
    config->bit_rate = kilobits != ac3_invalid_bitrate ? kilobits * 1000 : 0;
    if (bsid == 9 || bsid == 10) { // half and quarter of the usual rates
        config->sample_rate >>= bsid - 8;
        config->bit_rate >>= bsid - 8;
    }
    set_channels(acmod, lfeon, config);
    return true;
}

bool read_eac3_config(Bytes record, Ac3Config* config) {
    // Of chan_loc, the top bit first: LFE2, Cvh, Lvh/Rvh, Lw/Rw, Lsd/Rsd, Ts, Cs, Lrs/Rrs, Lc/Rc.
    constexpr uint8_t channels_by_location[] = {1, 1, 2, 2, 2, 1, 1, 2, 2};
    constexpr size_t smallest_size = 5;
    if (record.size() < smallest_size) {
        return false;
    }
    *config = {};
    BitReader bits{.bytes = record};
    config->bit_rate = read_bits(&bits, 13) * 1000;
    const uint32_t more_substreams = read_bits(&bits, 3); // num_ind_sub
    config->sample_rate = ac3_sample_rate(read_bits(&bits, 2));
    skip_bits(&bits, 5 + 1 + 1 + 3); // bsid, reserved, asvc, bsmod
    const uint32_t acmod = read_bits(&bits, 3);
    set_channels(acmod, read_bits(&bits, 1), config);
    skip_bits(&bits, 3);
    if (read_bits(&bits, 4) == 0) { // num_dep_sub
        skip_bits(&bits, 1);
    } else {
        const uint32_t locations = read_bits(&bits, 9);
        config->locations = bits.failed ? 0 : locations;
        for (int i = 0; i < std::ssize(channels_by_location); ++i) {
            config->channels +=
                (config->locations >> (8 - i) & 1) != 0 ? channels_by_location[i] : 0;
        }
    }
    if (more_substreams == 0) {
        skip_bits(&bits, 7);
        config->joint_object_coding = read_bits(&bits, 1) != 0 && !bits.failed;
    }
    return true;
}

uint32_t ac3_config_mask(const Ac3Config& config) {
    return config.locations != 0 || config.acmod == 0 ? 0
                                                      : ac3_channel_mask(config.acmod, config.lfe);
}

} // namespace zat
