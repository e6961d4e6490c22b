// The core frame header of a DTS stream (ETSI TS 102 114, 5.3 and 5.4) in its four packings, and
// its line.
#pragma once

#include <cstdint>

namespace zat {

constexpr int dts_sync_size = 6;    // bytes that dts_sync_type looks at
constexpr int dts_packed_size = 16; // bytes that dts_to_16bit_be rewrites
constexpr int dts_header_size = 15; // bytes that dts_info looks at

// The packing of a stream: words of 16 bits, or words that carry 14.
enum DtsSyncType : uint32_t { dts_none, dts_16bit_be, dts_16bit_le, dts_14bit_be, dts_14bit_le };

struct DtsInfo {
    int32_t bitrate = 0;       // bit/s; -1 for an invalid RATE
    int32_t sample_rate = 0;   // Hz; -1 for an invalid SFREQ
    int16_t channels = 0;      // by AMODE, the LFE not counted; -1 when the user defined them
    char arrangement[64] = {}; // channel arrangement
    char extension[64] = {};   // "(XCh)", "(X96k)", "(XCh,X96k)" or empty
    char lfe[3] = {};          // ".1" or empty
    char es[8] = {};           // "-ES" or empty
    int8_t bits = 0;           // source resolution; -1 for an invalid PCMR
    uint32_t sync_type = 0;    // a DtsSyncType, set by the caller behind dts_info
};

// The packing that the sync word at `buf` (dts_sync_size bytes) shows.
DtsSyncType dts_sync_type(const uint8_t* buf);

// Rewrites dts_packed_size bytes into big-endian words of 16 bits. Of a stream of 14-bit words the
// first 14 bytes are header then, and the last two meaningless.
void dts_to_16bit_be(uint8_t* buf, DtsSyncType type);

// Decodes the header, packed as big-endian words of 16 bits. `buf` holds dts_header_size bytes,
// zeros where the stream ended. Returns 0, or 1 when it is no core header.
int dts_info(const uint8_t* buf, DtsInfo* info);

// Describes the stream: `out` has line_size bytes. Appends "+LFE" to info->arrangement for a stream
// with that channel, so it is called once.
void dts_line(DtsInfo* info, char* out);

} // namespace zat
