#include "audio/aac_file.h"

#include "container/mp4.h"
#include "detect/quicktime_brand.h"
#include "zat/zat.h"

namespace zat {

int AnalyzeAacFile(FileRecord* file, const Output& out) {
    constexpr uint32_t looked_at = 12;
    uint8_t start[looked_at] = {};
    (void)read_at(file, 0, start, sizeof start);
    return QuickTimeBrandCheck(start) != FILETYPE_UNKNOWN ? AnalyzeMp4File(file, out) : 1;
}

} // namespace zat
