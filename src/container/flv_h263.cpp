#include "container/flv_h263.h"

#include "common/bits.h"

namespace zat {

namespace {

// By PictureSize. Codes 0 and 1 are followed by the size, code 7 is reserved.
constexpr H263PictureSize picture_sizes[8] = {
    {}, {}, {352, 288}, {176, 144}, {128, 96}, {320, 240}, {160, 120}, {}};

} // namespace

H263PictureSize ParseFlvH263PictureSize(Bytes picture) {
    BitReader reader{picture};
    skip_bits(&reader, 17); // PictureStartCode
    skip_bits(&reader, 5);  // Version
    skip_bits(&reader, 8);  // TemporalReference
    const uint32_t code = read_bits(&reader, 3);
    H263PictureSize size = picture_sizes[code];
    if (code <= 1) {
        const int width = code == 0 ? 8 : 16;
        size.width = read_bits(&reader, width);
        size.height = read_bits(&reader, width);
    }
    return reader.failed ? H263PictureSize{} : size;
}

} // namespace zat
