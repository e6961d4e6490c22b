// The core frame header of a DTS stream (ETSI TS 102 114, 5.3 and 5.4) in its four packings, and
// its line.
#pragma once

#include "common/bytes/bytes.h"
#include "common/text/text.h"

#include <cstdint>

namespace zat {

constexpr size_t dts_frame_start_size = 16; // bytes of a frame that are looked at

// The packing of a stream: words of 16 bits, or words that carry 14.
enum DtsSyncType : uint32_t { dts_none, dts_16bit_be, dts_16bit_le, dts_14bit_be, dts_14bit_le };

struct DtsInfo {
    int32_t bitrate = 0;       // bit/s; -1 for an invalid RATE
    int32_t sample_rate = 0;   // Hz; -1 for an invalid SFREQ
    int16_t channels = 0;      // by AMODE, the LFE not counted; -1 when the user defined them
    uint8_t amode = 0;         // channel arrangement
    char arrangement[64] = {}; // its name
    bool has_extension = false;
    uint8_t extension_id = 0; // EXT_AUDIO_ID
    char extension[64] = {};  // "(XCh)", "(X96k)", "(XCh,X96k)" or empty
    char lfe[3] = {};         // ".1" or empty
    char es[8] = {};          // "-ES" or empty
    int8_t bits = 0;          // source resolution; -1 for an invalid PCMR
    uint32_t frame_size = 0;  // bytes, by FSIZE
    uint32_t samples = 0;     // of a frame, per channel, by NBLKS
    uint32_t sync_type = 0;   // a DtsSyncType
};

// EXT_AUDIO_ID (ETSI TS 102 114, table 5-14).
constexpr uint8_t dts_extension_xch = 0;
constexpr uint8_t dts_extension_x96 = 2;
constexpr uint8_t dts_extension_xch_x96 = 3;

// The packing that the sync word at the frame's start shows.
DtsSyncType dts_sync_type(Bytes frame);

// Decodes a frame in any packing; bytes behind its end count as zeros. Returns 0, or 1 when it does
// not begin with a core header.
int dts_info(Bytes frame, DtsInfo* info);

// Describes the stream.
void dts_line(const DtsInfo* info, char (&out)[line_size]);

} // namespace zat
