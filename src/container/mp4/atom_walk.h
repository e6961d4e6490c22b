// The tree of atoms, in file order.
#pragma once

#include "container/mp4/atom_reader.h"

#include <cstdint>
#include <span>

namespace zat::mp4 {

// Levels of nesting, the file itself included; containers beyond are stepped over.
constexpr int max_levels = 64;

struct AtomWalk {
    Reader* reader = nullptr;
    int64_t position = 0;
    int level = 0;                 // containers that are open, the file included, less one
    int64_t ends[max_levels] = {}; // where each open container ends
    uint32_t types[max_levels];    // of the open containers and, last, of the atom at hand
    bool large_atom_seen = false;  // an atom that is no container had a 64-bit size
};

void start_walk(AtomWalk* walk, Reader* reader);

// Gives the next atom and, in `path`, the types from the file's level down to it; containers come
// before what they hold. False at the end of the file. An atom that read_atom refuses ends its
// container, and the walk goes on behind that.
bool next_atom(AtomWalk* walk, Atom* atom, std::span<const uint32_t>* path);

} // namespace zat::mp4
