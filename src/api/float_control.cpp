#include "api/float_control.h"

namespace zat {

// Other processors do not stop a program unless they are asked to in other ways.
#if defined(__SSE2__)

namespace {

// Nothing stops the program, nearest rounding, all bits: as processors start (Intel 64 and IA-32
// Architectures Software Developer's Manual, volume 1, 8.1.5 and 10.2.3).
constexpr uint16_t usual_x87 = 0x037F;
constexpr uint16_t x87_masks = 0x003F;
constexpr uint32_t usual_sse = 0x1F80;
constexpr uint32_t sse_flags = 0x003F;

// The memory that they name keeps arithmetic on the record from moving past them.
void set_sse(uint32_t control) {
    __asm__ volatile("ldmxcsr %0" : : "m"(control) : "memory");
}

void set_x87(uint16_t control) {
    __asm__ volatile("fldcw %0" : : "m"(control) : "memory");
}

bool is_usual_sse(uint32_t control) {
    return (control & ~sse_flags) == usual_sse;
}

} // namespace

FloatControl::FloatControl() {
    __asm__ volatile("stmxcsr %0" : "=m"(sse));
    __asm__ volatile("fnstcw %0" : "=m"(x87));
    if (!is_usual_sse(sse)) {
        set_sse(usual_sse);
    }
    if (x87 != usual_x87) {
        set_x87(usual_x87);
    }
}

FloatControl::~FloatControl() {
    if (!is_usual_sse(sse)) {
        set_sse(sse);
    }
    if ((x87 & x87_masks) != x87_masks) {
        __asm__ volatile("fnclex"); // what arose in the call must not stop the host
    }
    if (x87 != usual_x87) {
        set_x87(x87);
    }
}

#else

FloatControl::FloatControl() = default;
FloatControl::~FloatControl() = default;

#endif

} // namespace zat
