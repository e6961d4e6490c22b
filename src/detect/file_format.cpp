#include "detect/file_format.h"

namespace zat {

int detect(DetectContext* context) {
    context->type_code = FILETYPE_UNKNOWN;
    return -6;
}

void fill_file_format(InfoRecord* record) {
    record->type_code = FILETYPE_UNKNOWN;
}

} // namespace zat
