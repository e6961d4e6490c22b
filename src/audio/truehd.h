// The major sync of a Dolby TrueHD access unit (Dolby TrueHD (MLP) high-level bitstream
// description, 4.2).
#pragma once

#include "common/bytes/bytes.h"
#include "common/text/text.h"

#include <cstdint>

namespace zat {

constexpr size_t truehd_header_size = 40; // bytes that truehd_info looks at
constexpr size_t channel_name_size = 8;   // bytes, terminator included

struct TrueHdInfo {
    uint32_t channels = 0;
    uint32_t assignment = 0;   // channel assignment mask that `channels` follows from
    uint32_t peak_bitrate = 0; // bit/s
    uint32_t sample_rate = 0;  // Hz; 0 when the code names none
    uint32_t vbr = 0;          // 1: variable bit rate
};

// Decodes the first major sync in the first truehd_header_size bytes of an access unit; missing
// ones count as zero. Returns 0, -1 when there is no sync and -2 when it belongs to another MLP
// stream than TrueHD.
int truehd_info(Bytes access_unit, TrueHdInfo* info);

// Bytes of the access unit at the front, by access_unit_length; 0 when no header of one is there.
uint32_t mlp_unit_size(Bytes unit);

// Decodes format_info: rate, channels and their assignment. False when its four bytes are cut.
bool read_truehd_format(Bytes format, TrueHdInfo* info);

// The major sync of an MLP stream of DVD-Audio, which orders the same fields otherwise.
struct MlpInfo {
    uint32_t sample_rate = 0;  // Hz, of the first group of channels; 0 when not told
    uint32_t bits = 0;         // per sample, of that group; 0 when not told
    uint32_t channels = 0;     // 0 for a reserved assignment
    uint32_t channel_mask = 0; // the same as a mask
    bool variable_rate = false;
};

// Decodes the major sync at the front. False when it is none of MLP or cut.
bool mlp_info(Bytes major_sync, MlpInfo* info);

// Channels of a 13-bit channel assignment mask.
uint32_t TrueHDchannels(uint32_t mask);

// Names a layout: 6 gives "5.1ch". A count of 0 or above 20 leaves `out` as it is.
void truehd_channel_name(uint32_t count, char (&out)[channel_name_size]);

// Describes the stream by its own sync: "TrueHD 48000Hz [5.1ch VBR] 4410.000kbps" behind the name
// that it is given. What the sync does not tell is left out.
void named_truehd_line(const TrueHdInfo& info, const char* name, char (&out)[line_size]);

} // namespace zat
