#include "common/record/extra_info.h"

#include "common/record/details.h"
#include "common/text/text.h"
#include "common/text/text_codes.h"

namespace zat {

void append_writer(const Output& out, std::string_view writer) {
    constexpr size_t writer_size = 121; // terminator included
    char shown[writer_size];
    if (utf8_to_cp932(writer, shown) != 0) {
        append_text(out.record->extra_info, out.record->extra_info[0] != '\0' ? " / " : "");
        append_text(out.record->extra_info, shown);
    }
    if (out.details != nullptr) {
        copy_utf8(out.details->writer, writer);
    }
}

} // namespace zat
