#include "common/text_codes.h"

#include "common/details.h"

namespace zat {

size_t utf8_to_cp932(std::string_view utf8, char* out, size_t size) {
    copy_utf8(out, size, utf8);
    return std::string_view(out).size();
}

} // namespace zat
