#include "container/mp4/atom_walk.h"

namespace zat::mp4 {

namespace {

constexpr uint32_t containers[] = {fourcc("moov"), fourcc("trak"), fourcc("clip"), fourcc("matt"),
    fourcc("edts"), fourcc("tref"), fourcc("mdia"), fourcc("minf"), fourcc("dinf"), fourcc("udta"),
    fourcc("stbl"), fourcc("cmov"), fourcc("rmra"), fourcc("rmda"), fourcc("moof"), fourcc("traf")};

// Asked of every atom. Compares with all of them, which the compiler does four at a time.
bool is_container(uint32_t type) {
    uint32_t found = 0;
    for (const uint32_t container : containers) {
        found |= container == type;
    }
    return found != 0;
}

// A container with a 64-bit size is stepped over, as is one that is nested too deep and QuickTime's
// empty user data, which is nothing but a terminator of four bytes.
bool is_entered(const AtomWalk* walk, const Atom& atom) {
    return atom.size != 1 && walk->level + 1 < max_levels &&
           !(atom.type == fourcc("udta") && atom.size == 12);
}

} // namespace

void start_walk(AtomWalk* walk, Reader* reader) {
    walk->reader = reader;
    walk->position = 0;
    walk->level = 0;
    walk->ends[0] = reader->block.file->size;
    walk->large_atom_seen = false;
}

bool next_atom(AtomWalk* walk, Atom* atom, std::span<const uint32_t>* path) {
    for (;;) {
        const int64_t end = walk->ends[walk->level];
        if (walk->position >= end) {
            if (walk->level == 0) {
                return false;
            }
            walk->position = end;
            --walk->level;
            continue;
        }
        const bool readable = read_atom(walk->reader, {walk->position, end}, atom);
        const bool container = is_container(atom->type);
        walk->large_atom_seen |= atom->size == 1 && !container;
        if (!readable) {
            walk->position = end;
            continue;
        }
        walk->types[walk->level] = atom->type;
        *path = {walk->types, static_cast<size_t>(walk->level) + 1};
        walk->position = atom->payload.end;
        if (container && is_entered(walk, *atom)) {
            walk->position = atom->payload.start;
            walk->ends[++walk->level] = atom->payload.end;
        }
        return true;
    }
}

} // namespace zat::mp4
