// The line of packet identifiers.
#pragma once

#include "container/mpeg_ts/analysis.h"
#include "zat/zat.h"

namespace zat::ts {

// "PID 0000(PAT) 0100(PMT) 1FFF(Null packets)": those read at the head that belong to no stream, by
// their names in the catalogue. Written where an extra line is free.
void write_pid_line(const Analysis* analysis, InfoRecord* record);

} // namespace zat::ts
