#include "video/dv.h"

#include "common/catalogue/codec_names.h"

#include <bit>

namespace zat {

namespace {

constexpr size_t block_size = 80;
constexpr size_t packs_at = 3; // in an auxiliary block, behind its identification
constexpr size_t pack_size = 5;
constexpr size_t packs_of_block = 15;

// Blocks of a sequence: the header, two of subcode, three of video auxiliary data, then nine times
// one of sound and fifteen of video. A block of sound begins with one pack.
constexpr size_t first_aux_block = 3;
constexpr size_t aux_blocks = 3;
constexpr size_t first_sound_block = 6;
constexpr size_t sound_blocks = 4; // of which the first or the last has the pack
constexpr size_t sound_block_step = 16;

constexpr uint8_t section_mask = 0xE0;
constexpr uint8_t header_section = 0x00; // section type, in the first byte
constexpr uint8_t header_block_id[] = {0x1F, 0x07, 0x00};

enum Pack : uint8_t {
    pack_sound_source = 0x50,
    pack_video_source = 0x60,
    pack_video_control = 0x61,
};

// STYPE of the video source pack: 25 or 50 Mbit/s.
constexpr uint8_t stype_50 = 4;

constexpr uint32_t sample_rates[] = {48000, 44100, 32000};
constexpr uint32_t sample_sizes[] = {16, 12, 20};

const uint8_t* find_pack(Bytes frame, Pack type) {
    for (size_t block = 0; block < aux_blocks; ++block) {
        for (size_t pack = 0; pack < packs_of_block; ++pack) {
            const size_t at = (first_aux_block + block) * block_size + packs_at + pack * pack_size;
            if (at + pack_size <= frame.size() && frame[at] == type) {
                return &frame[at];
            }
        }
    }
    return nullptr;
}

const uint8_t* find_sound_pack(Bytes frame) {
    for (size_t block = 0; block < sound_blocks; ++block) {
        const size_t at = (first_sound_block + block * sound_block_step) * block_size + packs_at;
        if (at + pack_size <= frame.size() && frame[at] == pack_sound_source) {
            return &frame[at];
        }
    }
    return nullptr;
}

void read_sound(const uint8_t* pack, DvInfo* info) {
    const uint32_t rate = pack[4] >> 3 & 7;
    const uint32_t size = pack[4] & 7;
    if (rate >= 3 || size >= 3) {
        return;
    }
    info->sample_rate = sample_rates[rate];
    info->sample_bits = sample_sizes[size];
    // STYPE tells the blocks of two channels; 12 bits at 32 kHz put four channels into one.
    const uint32_t stype = pack[3] & 0x1F;
    const bool four_in_one = stype == 0 && size == 1 && rate == 2;
    info->channels = stype == 2 || four_in_one ? 4 : stype == 3 ? 8 : 2;
}

void read_video_control(const uint8_t* pack, DvInfo* info) {
    const uint8_t display = pack[2] & 7;
    info->tells_aspect = true;
    info->wide = display == 2 || display == 7;
    info->interlaced = (pack[3] & 0x10) != 0;
}

} // namespace

bool read_dv_info(Bytes frame, DvInfo* info) {
    if (frame.size() < block_size || (frame[0] & section_mask) != header_section ||
        frame[0] != header_block_id[0] || (frame[1] & 0x0F) != header_block_id[1] ||
        frame[2] != header_block_id[2]) {
        return false;
    }
    const bool is_625 = (frame[3] & 0x80) != 0;
    const bool is_consumer = (frame[4] & 7) == 0; // APT: IEC 61834, else SMPTE 314M
    info->width = 720;
    info->height = is_625 ? 576 : 480;
    info->rate_numerator = is_625 ? 25 : 30000;
    info->rate_denominator = is_625 ? 1 : 1001;
    const uint8_t* source = find_pack(frame, pack_video_source);
    const bool is_50 = source != nullptr && (source[3] & 0x1F) == stype_50;
    info->chroma = is_50 ? "4:2:2" : is_625 && is_consumer ? "4:2:0" : "4:1:1";
    if (const uint8_t* control = find_pack(frame, pack_video_control)) {
        read_video_control(control, info);
    }
    if (const uint8_t* sound = find_sound_pack(frame)) {
        read_sound(sound, info);
    }
    return true;
}

void set_dv_facts(const DvInfo& info, ZatStream* stream) {
    copy_utf8(stream->codec, "DV");
    if (stream->width == 0 || stream->height == 0) {
        stream->width = info.width;
        stream->height = info.height;
    }
    if (stream->frame_rate == 0) {
        set_frame_rate(stream, info.rate_numerator, info.rate_denominator);
    }
    if (info.tells_aspect) {
        set_display_aspect(stream, info.wide ? 16 : 4, info.wide ? 9 : 3);
        if (stream->scan == 0) {
            stream->scan = info.interlaced ? ZAT_SCAN_INTERLACED : ZAT_SCAN_PROGRESSIVE;
        }
    }
    stream->bit_depth = 8;
    copy_utf8(stream->chroma, info.chroma);
}

void set_dv_audio_facts(const DvInfo& info, ZatStream* stream) {
    set_pcm(stream, PcmKind::signed_integer, info.sample_bits, std::endian::big);
    stream->sample_rate = info.sample_rate;
    stream->channels = info.channels;
    stream->bit_rate = uint64_t{info.sample_rate} * info.channels * info.sample_bits;
}

} // namespace zat
