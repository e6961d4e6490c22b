#include "detect/mpeg_probes.h"

#include "audio/mpeg_audio.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

// Frames are shorter than this: the standard's bit rates make none of even half, and the size that
// is computed for a free-format header is far above.
constexpr uint32_t frame_limit = 5116;

// Decodes a copy of the header at `at`, zeros where the bytes end. False without a sync or when it
// does not decode.
bool decode_header(Bytes bytes, size_t at, MpegAudioHeader* info) {
    const uint8_t sync[2] = {byte_at(bytes, at), byte_at(bytes, at + 1)};
    return IsMpegAudioSync(sync) && read_mpeg_audio_header(bytes.subspan(at), info) == 0;
}

bool has_frame_pair(Bytes bytes, size_t at) {
    MpegAudioHeader first{};
    MpegAudioHeader second{};
    return decode_header(bytes, at, &first) && first.frame_size < frame_limit &&
           decode_header(bytes, at + first.frame_size, &second);
}

constexpr size_t block_size = 256;
constexpr size_t next_start_code = 76;
constexpr size_t candidate_size = next_start_code + 3;

// Whether a start code prefix may start within the `block_size` bytes at p, one more of which is
// readable: wherever it does, 00 00 or 00 01 stands at an odd place of the block. That is rare, and
// told by a single comparison of words of 16 bits.
bool block_may_have_prefix(const uint8_t* p) {
    constexpr auto others = static_cast<uint16_t>(std::endian::native == std::endian::little
                                                      ? 0xFEFF
                                                      : 0xFFFE); // bits that are set in others
    uint16_t found = 0;
    for (size_t i = 1; i < block_size; i += sizeof(uint16_t)) {
        uint16_t word = 0;
        std::memcpy(&word, p + i, sizeof word);
        found = static_cast<uint16_t>(found + ((word & others) == 0 ? 1 : 0));
    }
    return found != 0;
}

// Whether a sequence header candidate starts within the `block_size` bytes at p, 78 more of which
// are readable. All places are judged without a branch, which makes vector instructions of it and
// lets no pattern of near misses slow it down.
bool block_has_candidate(const uint8_t* p) {
    if (!block_may_have_prefix(p)) {
        return false;
    }
    uint8_t found = 0;
    for (size_t i = 0; i < block_size; ++i) {
        const int zeros = p[i] | p[i + 1] | p[i + 76] | p[i + 77];
        const int others = (p[i + 2] ^ 0x01) | (p[i + 3] ^ 0xB3) | (p[i + 78] ^ 0x01);
        found = static_cast<uint8_t>(found | ((zeros | others) == 0 ? 1 : 0));
    }
    return found != 0;
}

bool is_candidate(const uint8_t* p) {
    return ReadBE32(p) == 0x000001B3 && ReadBE24(p + next_start_code) == 0x000001;
}

} // namespace

int64_t WrappedMp3Check(Bytes bytes) {
    // A time stamp of four bytes and the sync byte of a transport packet, twice.
    if (byte_at(bytes, 4) == 'G' && byte_at(bytes, 196) == 'G') {
        return 0;
    }
    // A pack or a sequence header's start code is no length.
    if (!has_at(bytes, 0, "\x00\x00\x01") || byte_at(bytes, 3) == 0xBA ||
        byte_at(bytes, 3) == 0xB3) {
        return 0;
    }
    const size_t frame = size_t{0x100} + byte_at(bytes, 3) + 4;
    const uint8_t sync[2] = {byte_at(bytes, frame), byte_at(bytes, frame + 1)};
    return IsMpegAudioSync(sync) ? static_cast<int64_t>(frame) : 0;
}

int64_t MpegAudioCheck(Bytes bytes, MpegAudioMode mode) {
    const size_t positions = mode == MpegAudioMode::at_start ? 1 : mpeg_audio_positions;
    const size_t end = std::min(positions, bytes.size());
    for (size_t at = 0; at < end; ++at) {
        const void* sync = std::memchr(bytes.data() + at, 0xFF, end - at);
        if (sync == nullptr) {
            return -1;
        }
        at = static_cast<size_t>(static_cast<const uint8_t*>(sync) - bytes.data());
        if (has_frame_pair(bytes, at)) {
            return static_cast<int64_t>(at);
        }
    }
    return -1;
}

// Backwards, as the last candidate counts.
int64_t MpegSequenceCheck(Bytes bytes) {
    const uint8_t* p = bytes.data();
    size_t end = bytes.size() < candidate_size ? 0 : bytes.size() - candidate_size + 1;
    while (end > 0) {
        while (end >= block_size && !block_has_candidate(p + end - block_size)) {
            end -= block_size;
        }
        const size_t stop = end < block_size ? 0 : end - block_size;
        for (; end > stop; --end) {
            if (is_candidate(p + end - 1)) {
                return static_cast<int64_t>(end - 1);
            }
        }
    }
    return -1;
}

} // namespace zat
