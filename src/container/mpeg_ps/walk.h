// The units of a program stream, one behind the other: packs, system headers and packets. Their
// payload is stepped over unread.
#pragma once

#include "container/mpeg_pes.h"
#include "container/mpeg_ps/pack.h"
#include "container/mpeg_ps/source.h"

#include <cstdint>

namespace zat::ps {

struct Unit {
    uint8_t code = 0;      // the byte behind the start code prefix
    bool in_order = false; // begins where the unit before it ended
    int64_t position = 0;  // of the start code
    int64_t end = 0;       // behind the unit, by its own length
    PackHeader pack;       // of a pack
    PesHeader packet;      // of the other units but the end code
    Bytes head;            // the unit's first bytes; valid until the source's next use
};

struct Walk {
    Source* source = nullptr;
    int64_t position = 0;
    int64_t end = 0;       // units that begin at or behind it are left alone
    bool in_order = false; // a unit may begin at `position`
    int64_t damaged = 0; // units whose end met neither a start code nor zeros nor the stream's end
};

enum class Begin { at_unit, anywhere };

void walk_start(Walk* walk, Source* source, int64_t from, int64_t to, Begin begin);

// The next unit; false when there is none before the walk's end. One that was found by a search,
// not at the end of the unit before it, is shown only when another one, zeros or the stream's end
// follow it: a start code may stand in any data.
bool next_unit(Walk* walk, Unit* unit);

} // namespace zat::ps
