// The typed details of Flash Video files.
#pragma once

#include "container/flv/file.h"
#include "zat/details.h"

namespace zat {

// `info` was read with `detailed` set; `seconds` is the play time.
void describe_flv(Reader* reader, const FlvInfo& info, double seconds, ZatDetails* details);

} // namespace zat
