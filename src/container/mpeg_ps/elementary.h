// A file that is one video stream, without packs and packets around it.
#pragma once

#include "container/mpeg_ps/program.h"

namespace zat::ps {

// Describes the video that begins at or behind `from` of the program's source. False, with nothing
// written, when none is found.
bool analyze_elementary_stream(Program* program, int64_t from, const Output& out);

} // namespace zat::ps
