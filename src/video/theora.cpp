#include "video/theora.h"

#include "common/text/text.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace zat {

namespace {

constexpr size_t head_size = 42;

} // namespace

bool read_theora_head(Bytes packet, TheoraHead* head) {
    if (packet.size() < head_size || !has_at(packet, 0, "\x80theora")) {
        return false;
    }
    const uint8_t* p = packet.data();
    std::memcpy(head->version, p + 7, sizeof head->version); // VMAJ, VMIN, VREV
    // FMBW at 10 and FMBH at 12 count macroblocks
    head->width = ReadBE24(p + 14);              // PICW
    head->height = ReadBE24(p + 17);             // PICH
    head->rate_numerator = ReadBE32(p + 22);     // FRN
    head->rate_denominator = ReadBE32(p + 26);   // FRD
    head->aspect_numerator = ReadBE24(p + 30);   // PARN
    head->aspect_denominator = ReadBE24(p + 33); // PARD
    head->bit_rate = ReadBE24(p + 37);           // NOMBR, behind CS
    const uint32_t fields = ReadBE16(p + 40);    // QUAL 6, KFGSHIFT 5, PF 2
    head->granule_shift = fields >> 5 & 31;
    head->pixel_format = fields >> 3 & 3;
    return true;
}

int64_t theora_frames(const TheoraHead& head, int64_t granule) {
    if (granule < 0) {
        return 0;
    }
    const auto value = static_cast<uint64_t>(granule);
    const uint64_t delta = value & ((uint64_t{1} << head.granule_shift) - 1);
    // Before version 3.2.1 the first frame had the number 0.
    const bool counts_from_zero =
        head.version[0] * 65536 + head.version[1] * 256 + head.version[2] < 0x030201;
    return static_cast<int64_t>((value >> head.granule_shift) + delta + (counts_from_zero ? 1 : 0));
}

void theora_codec_text(const TheoraHead& head, char* out, size_t size) {
    format_text(out, size, "Theora %d.%d.%d", head.version[0], head.version[1], head.version[2]);
}

void set_theora_facts(const TheoraHead& head, ZatStream* stream) {
    static constexpr const char* chroma[] = {"4:2:0", "", "4:2:2", "4:4:4"};
    copy_text(stream->codec, "Theora");
    stream->width = head.width;
    stream->height = head.height;
    set_frame_rate(stream, head.rate_numerator, head.rate_denominator);
    set_pixel_aspect(stream, head.aspect_numerator, head.aspect_denominator);
    stream->bit_depth = 8;
    copy_text(stream->chroma, chroma[head.pixel_format % std::size(chroma)]);
}

} // namespace zat
