// Where an analyser writes.
#pragma once

#include "zat/details.h"

namespace zat {

struct Output {
    InfoRecord* record = nullptr;
    ZatDetails* details = nullptr; // null when the host asked for the record only
};

} // namespace zat
