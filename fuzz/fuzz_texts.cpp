// The texts of broadcasts: every table, every size of the buffer. Aborts when a result is not a
// terminated, well-formed text of the length that was returned.
#include "target.h"

#include "common/utf8.h"
#include "text/arib_text.h"
#include "text/dvb_text.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "unsound text: %s\n", what);
        std::abort();
    }
}

void require_sound(const char* text, size_t length, size_t size, bool utf8) {
    require(length < size && std::strlen(text) == length, "length");
    require(!utf8 || zat::is_utf8({text, length}), "UTF-8");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    char out[256];
    const size_t room = data[0] + size_t{1}; // 1 to 256
    const zat::Bytes text(data + 1, size - 1);
    require_sound(out, zat::arib_to_utf8(text, out, room), room, true);
    require_sound(out, zat::arib_to_cp932(text, out, room), room, false);
    for (const auto table : {zat::DvbDefault::iso6937, zat::DvbDefault::iso8859_15}) {
        require_sound(out, zat::dvb_to_utf8(text, table, out, room), room, true);
    }
    (void)zat::looks_like_iso8859_15(text);
    return 0;
}
