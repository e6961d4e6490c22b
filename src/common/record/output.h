// Where an analyser writes.
#pragma once

#include "zat/details.h"

#include <cstdint>

namespace zat {

// Bits of InfoRecord.options.
constexpr uint32_t option_thorough = 1; // walk the whole file where that makes the answer exact
constexpr uint32_t option_check = 2;    // walk a program stream for damage

struct Output {
    InfoRecord* record = nullptr;
    ZatDetails* details = nullptr; // null when the host asked for the record only
};

inline bool is_thorough(const InfoRecord& record) {
    return (record.options & option_thorough) != 0;
}

} // namespace zat
