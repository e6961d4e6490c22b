// The host's control of floating-point arithmetic, which gives way to the usual one for a call and
// comes back with the end of the record. Programs of some compilers are stopped by a division by
// zero, others round elsewhere; a call computes the same in all of them.
#pragma once

#include <cstdint>

namespace zat {

struct FloatControl {
    uint32_t sse = 0; // MXCSR: masks of exceptions, rounding, and flags of exceptions that arose
    uint16_t x87 = 0; // the control word: masks, rounding and precision

    FloatControl();
    FloatControl(const FloatControl&) = delete;
    FloatControl& operator=(const FloatControl&) = delete;
    ~FloatControl();
};

} // namespace zat
