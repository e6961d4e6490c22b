// What a measured piece of code asked of the system.
#pragma once

#include <cstdint>

struct IoCounters {
    uint64_t calls;
    uint64_t bytes_read;
};

extern IoCounters io_counters;
