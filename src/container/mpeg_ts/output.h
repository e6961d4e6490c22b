// The lines and details of a transport stream.
#pragma once

#include "common/record/output.h"
#include "container/mpeg_ts/analysis.h"
#include "container/mpeg_ts/timing.h"

namespace zat::ts {

// Orders the programs: the one with the most described streams first. Fills `order` with their
// indices, those that count only; returns how many there are.
uint32_t order_programs(const Analysis* analysis, uint16_t (&order)[program_slots]);

// Writes everything. `order` holds `program_count` programs.
void write_analysis(const Analysis* analysis, const uint16_t* order, uint32_t program_count,
    const PlayTime& time, const Output& out);

} // namespace zat::ts
