// What a measured piece of code asked of the system.
#pragma once

#include <cstdint>

struct IoCounters {
    uint64_t calls; // of every kind on files, and reservations of memory
    uint64_t reads;
    uint64_t seeks; // reads that begin elsewhere than the read before them ended
    uint64_t bytes_read;
};

extern IoCounters io_counters;

// The file layer waits this many microseconds in every read, as slow media do.
extern unsigned io_read_delay;
