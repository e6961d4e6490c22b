// The header of an AC-3 sync frame (ATSC A/52, 5.3.1, 5.3.2 and annex D) and its lines.
#pragma once

#include <cstdint>

namespace zat {

constexpr int ac3_header_size = 24; // bytes that ac3_info looks at

struct Ac3Info {
    uint16_t bitrate = 0;      // nominal kbit/s; 0xFFFF for a reserved frmsizecod
    int32_t sample_rate = 0;   // Hz; -1 for the reserved fscod
    int32_t framesize = 0;     // bytes of the sync frame
    uint16_t channels = 0;     // by acmod, the LFE not counted
    char service[16] = {};     // bit stream mode
    char mode_name[32] = {};   // audio coding mode
    char surround[64] = {};    // " Dolby Surround" or empty
    char surround_ex[64] = {}; // " Dolby Surround EX" or empty
    char lfe[6] = {};          // ".1" or empty
};

// Decodes the header that starts at the sync word. `header` holds ac3_header_size bytes, zeros
// where the frame ended. Returns 0, or 1 for anything but AC-3 with bsid 0 to 8; the fields decoded
// until then are set.
int ac3_info(const uint8_t* header, Ac3Info* info);

// Bytes of a sync frame (ATSC A/52, table 5.18); 0 for reserved codes.
int32_t ac3_framesize(int frmsizecod, int fscod);

// Describes the stream: `out` has line_size bytes.
void ac3_line(const Ac3Info* info, char* out);

// The same for a Dolby TrueHD stream, by the AC-3 core interleaved with it.
void truehd_line(const Ac3Info* info, char* out);

} // namespace zat
