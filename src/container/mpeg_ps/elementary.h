// A file that is one video stream, without packs and packets around it.
#pragma once

#include "container/mpeg_ps/program.h"

namespace zat::ps {

// Describes the video that begins at or behind `from` of the program's source. Writes nothing when
// none is found. Returns 0.
int analyze_elementary_stream(Program* program, int64_t from, const Output& out);

} // namespace zat::ps
