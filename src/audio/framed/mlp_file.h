// Raw files of MLP streams, Dolby TrueHD among them.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Returns 0, 1 when the first access unit is cut, or -1 with nothing written when the file is of
// another kind.
int mlp_file(FileRecord* file, const Output& out);

} // namespace zat
