// Detection as the host sees it.
#pragma once

#include "common/file/file_access.h"
#include "zat/zat.h"

namespace zat {

// Decides what record->path is and fills the type code, the general count and its lines, and the
// file size. A line that nothing wrote keeps what the host put there. Leaves the file open when it
// could be opened.
void fill_file_format(InfoRecord* record, FileRecord* file);

} // namespace zat
