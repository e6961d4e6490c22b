// Stands in for the platform: one file in memory under every path but the catalogue's, with what
// goes wrong at a chosen call. Counts what the library asks of it.
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat::test {

enum class Fault {
    none,
    short_read,  // one read yields half
    failed_read, // one read yields nothing
    failed_seek, // one look for holes finds that none is known
    vanishes,    // from here on nothing is read, and nothing opens
    shrinks,     // to half of its size
    grows,       // to what `longer` holds
};

struct MemoryFiles {
    Bytes media;
    int64_t repeated_size = 0; // of a file that has `media` again and again; 0: once
    Bytes longer;              // what the file has become once it has grown
    Bytes catalogue;           // opens under paths that end in ".ini"; without bytes nothing does

    Fault fault = Fault::none;
    int fault_at = 0;       // the call, counted from 0, at which it comes
    bool no_memory = false; // nothing can be reserved

    int calls = 0; // that opened, read or looked for holes
    int reads = 0; // of the media
    int64_t bytes_read = 0;
    int open_files = 0;           // opened and not closed
    int64_t reserved_memory = 0;  // bytes reserved and not released
    int64_t highest_reserved = 0; // at one time
    bool vanished = false;
};

extern MemoryFiles memory_files;

} // namespace zat::test
