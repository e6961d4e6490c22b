// General and extra lines of service information.
#pragma once

#include "common/record/extra_lines.h"
#include "container/mpeg_ts/analysis.h"

namespace zat::ts {

// Writes the service shown and its present event as general lines, the event's text as extra-info
// text, and adds the other services, the following event and the items of the present one. Services
// count whose program map is in the file: those of `order`, or all when it is empty.
void write_services(const Analysis* analysis, const uint16_t* order, uint32_t program_count,
    const Output& out, ExtraLines* extra);

} // namespace zat::ts
