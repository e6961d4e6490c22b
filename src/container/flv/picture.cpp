#include "container/flv/picture.h"

#include "common/bytes/bits.h"

namespace zat {

namespace {

// By PictureSize. Codes 0 and 1 are followed by the size, code 7 is reserved.
constexpr FlvPictureSize picture_sizes[8] = {
    {}, {}, {352, 288}, {176, 144}, {128, 96}, {320, 240}, {160, 120}, {}};

} // namespace

FlvPictureSize ParseFlvH263PictureSize(Bytes picture) {
    BitReader reader{picture};
    skip_bits(&reader, 17); // PictureStartCode
    skip_bits(&reader, 5);  // Version
    skip_bits(&reader, 8);  // TemporalReference
    const uint32_t code = read_bits(&reader, 3);
    FlvPictureSize size = picture_sizes[code];
    if (code <= 1) {
        const int width = code == 0 ? 8 : 16;
        size.width = read_bits(&reader, width);
        size.height = read_bits(&reader, width);
    }
    return reader.failed ? FlvPictureSize{} : size;
}

FlvPictureSize flv_vp6_picture_size(Bytes packet, bool alpha) {
    // The adjustments of the size, and the alpha data's offset; then the frame's header.
    const size_t header_at = alpha ? 4 : 1;
    const uint8_t first = byte_at(packet, header_at);
    const uint8_t second = byte_at(packet, header_at + 1);
    const bool inter_frame = (first & 0x80) != 0;
    // An offset to the second partition precedes the counts of macroblocks.
    const bool partitioned = (first & 1) != 0 || (second & 6) == 0;
    const size_t counts_at = header_at + (partitioned ? 4 : 2);
    if (inter_frame || packet.size() < counts_at + 2) {
        return {};
    }
    const uint32_t height = packet[counts_at] * 16U;
    const uint32_t width = packet[counts_at + 1] * 16U;
    const uint32_t less_width = packet[0] >> 4;
    const uint32_t less_height = packet[0] & 0x0F;
    return width > less_width && height > less_height
               ? FlvPictureSize{width - less_width, height - less_height}
               : FlvPictureSize{};
}

FlvPictureSize flv_screen_picture_size(Bytes packet) {
    BitReader reader{packet};
    FlvPictureSize size;
    skip_bits(&reader, 4); // BlockWidth
    size.width = read_bits(&reader, 12);
    skip_bits(&reader, 4); // BlockHeight
    size.height = read_bits(&reader, 12);
    return reader.failed ? FlvPictureSize{} : size;
}

} // namespace zat
