// The bits of a NAL unit without its emulation prevention bytes (ITU-T H.264, 7.3.1), and the
// Exp-Golomb codes in them (9.1).
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

// A forward cursor that drops the emulation prevention bytes on the way. The data ends where the
// start code of a further NAL unit stands; bits between that end and `total_bits` read as zero, and
// so do those behind it.
struct RbspReader {
    Bytes nal;
    uint64_t position = 0;   // bits, as if the prevention bytes were not there
    uint64_t total_bits = 0; // of the whole NAL unit; a position above it is an error
    size_t next = 0;         // byte of `nal` to load
    bool owes_zero = false;  // the second zero before a dropped byte is still to load
    uint64_t loaded = 0;     // loaded bits, the next one on top, zeros below
    int loaded_bits = 0;
};

RbspReader rbsp_reader(Bytes nal);

// u(n): the next n (0 to 32) bits.
uint32_t read_u(RbspReader* reader, int n);

// ue(v). A value of more than 32 bits is cut to its low 32. A code without its first set bit gives
// 0 and puts the position one bit behind total_bits.
uint32_t read_ue(RbspReader* reader);

// se(v), modulo 2^32.
uint32_t read_se(RbspReader* reader);

inline bool rbsp_overrun(const RbspReader* reader) {
    return reader->position > reader->total_bits;
}

} // namespace zat
