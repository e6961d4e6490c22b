// The streams of a program as lines and details.
#pragma once

#include "common/record/extra_lines.h"
#include "container/mpeg_ts/analysis.h"
#include "container/mpeg_ts/timing.h"

namespace zat::ts {

// Whether the payload of a stream was kept from being read.
bool is_encrypted(const Analysis* analysis, uint32_t stream);

// Adds the streams of a program, by its index, in the order of its map; program_slots stands for
// those that no map names.
void add_program_streams(const Analysis* analysis, uint16_t program, const PlayTime& time,
    const Output& out, ExtraLines* extra);

} // namespace zat::ts
