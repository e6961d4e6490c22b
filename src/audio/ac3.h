// The header of an AC-3 sync frame (ATSC A/52, 5.3.1, 5.3.2 and annex D) and its lines.
#pragma once

#include "common/bytes/bytes.h"
#include "common/text/text.h"

#include <cstdint>

namespace zat {

constexpr size_t ac3_header_size = 24; // bytes that ac3_info looks at

struct Ac3Info {
    uint16_t bitrate = 0;    // nominal kbit/s; 0xFFFF for a reserved frmsizecod
    int32_t sample_rate = 0; // Hz; -1 for the reserved fscod
    int32_t framesize = 0;   // bytes of the sync frame
    uint16_t channels = 0;   // as lines count them by acmod, the LFE not counted
    uint8_t acmod = 0;       // audio coding mode
    bool has_lfe = false;
    char service[16] = {};     // bit stream mode
    char mode_name[32] = {};   // audio coding mode
    char surround[64] = {};    // " Dolby Surround" or empty
    char surround_ex[64] = {}; // " Dolby Surround EX" or empty
    char lfe[6] = {};          // ".1" or empty
};

// Decodes the frame that starts at the sync word; bytes behind its end count as zeros. Returns 0,
// or 1 for anything but AC-3 with bsid 0 to 8; the fields decoded until then are set.
int ac3_info(Bytes frame, Ac3Info* info);

// Nominal kbit/s by the upper five bits of frmsizecod (ATSC A/52, table 5.18, whose rows come in
// pairs of one rate); ac3_invalid_bitrate for a reserved one.
constexpr uint16_t ac3_invalid_bitrate = 0xFFFF;
uint16_t ac3_bitrate(uint32_t frmsizecod_pair);

// Hz (ATSC A/52, table 5.6); 0 for the reserved fscod.
uint32_t ac3_sample_rate(uint32_t fscod);

// The speakers of an audio coding mode (ATSC A/52, table 5.8) as a channel mask; those of a single
// surround channel and of two of them at the back centre and the sides. Dual mono counts as stereo.
uint32_t ac3_channel_mask(uint32_t acmod, bool has_lfe);

// Bytes of a sync frame (ATSC A/52, table 5.18); 0 for reserved codes.
int32_t ac3_framesize(int frmsizecod, int fscod);

// Describes the stream.
void ac3_line(const Ac3Info* info, char (&out)[line_size]);

// The same for a Dolby TrueHD stream, by the AC-3 core interleaved with it.
void truehd_line(const Ac3Info* info, char (&out)[line_size]);

} // namespace zat
