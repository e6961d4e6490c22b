// AC-3 and E-AC-3 as MP4's configuration records describe them (ETSI TS 102 366, Annex F).
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

struct Ac3Config {
    uint32_t bit_rate = 0;    // bit/s; 0 when the code is reserved
    uint32_t sample_rate = 0; // Hz; 0 when the code is reserved
    uint32_t channels = 0;    // those of dependent substreams included
    uint32_t acmod = 0;
    bool lfe = false;
    uint32_t locations = 0; // chan_loc: channels that dependent substreams add
    bool joint_object_coding = false;
};

// Reads the content of a "dac3" box (F.4), or of a "dec3" box (F.6), of which the first independent
// substream counts. False, and nothing is written, when it is cut off.
bool read_ac3_config(Bytes record, Ac3Config* config);
bool read_eac3_config(Bytes record, Ac3Config* config);

// The channels as a mask of WAVEFORMATEXTENSIBLE; 0 for dual mono and where dependent substreams
// add channels.
uint32_t ac3_config_mask(const Ac3Config& config);

} // namespace zat
