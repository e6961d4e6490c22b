// Detection as the host sees it.
#pragma once

#include "zat/zat.h"

namespace zat {

// Decides what record->path is and fills the type code, the general count and its lines, and the
// file size. A line that nothing wrote keeps what the host put there.
void fill_file_format(InfoRecord* record);

} // namespace zat
