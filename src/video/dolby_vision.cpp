#include "video/dolby_vision.h"

#include "common/text/text.h"

namespace zat {

void set_dolby_vision(ZatStream* stream, Bytes record) {
    constexpr size_t read_size = 5;        // up to the presence flags
    constexpr uint8_t layer_or_rpu = 0x07; // rpu, el and bl present
    const bool is_record = record.size() >= read_size && record[0] != 0;
    if (is_record && (record[3] & layer_or_rpu) != 0) {
        copy_text(stream->hdr, "Dolby Vision");
    }
}

} // namespace zat
