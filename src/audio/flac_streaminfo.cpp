#include "audio/flac_streaminfo.h"

#include "common/bytes/bits.h"

#include <cstring>

namespace zat {

bool read_flac_streaminfo(Bytes block, FlacStreamInfo* info) {
    if (block.size() < flac_streaminfo_size) {
        return false;
    }
    BitReader bits{.bytes = block};
    info->smallest_block = read_bits(&bits, 16);
    info->largest_block = read_bits(&bits, 16);
    info->smallest_frame = read_bits(&bits, 24);
    info->largest_frame = read_bits(&bits, 24);
    info->sample_rate = read_bits(&bits, 20);
    info->channels = read_bits(&bits, 3) + 1;
    info->bits = read_bits(&bits, 5) + 1;
    info->samples = uint64_t{read_bits(&bits, 4)} << 32;
    info->samples |= read_bits(&bits, 32);
    std::memcpy(
        info->md5, block.data() + flac_streaminfo_size - sizeof info->md5, sizeof info->md5);
    return true;
}

Bytes flac_streaminfo_of_blocks(Bytes blocks) {
    constexpr size_t header_size = 4; // a last-block flag, seven bits of the type, 24 of the size
    if (blocks.size() < header_size || (blocks[0] & 0x7F) != 0) {
        return {};
    }
    return blocks.subspan(header_size);
}

} // namespace zat
