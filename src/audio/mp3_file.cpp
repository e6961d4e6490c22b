#include "audio/mp3_file.h"

namespace zat {

int AnalyzeMp3File(InfoRecord* /*record*/) {
    return 1;
}

int AnalyzeRmp3File(InfoRecord* /*record*/) {
    return 0;
}

} // namespace zat
