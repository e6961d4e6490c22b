#include "audio/wave_format.h"

#include "common/text/text.h"

#include <cstring>

namespace zat {

namespace {

constexpr size_t guid_tag_size = 2; // bytes of a GUID that hold a format tag

// Behind the tag: KSDATAFORMAT_SUBTYPE_WAVEFORMATEX, and the subtypes of Ambisonic B-format.
constexpr uint8_t tag_guids[][guid_size - guid_tag_size] = {
    {0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71},
    {0, 0, 0x21, 0x07, 0xD3, 0x11, 0x86, 0x44, 0xC8, 0xC1, 0xCA, 0, 0, 0},
};

} // namespace

WaveFormat read_wave_format(Bytes bytes) {
    uint8_t fields[wave_extensible_size];
    copy_padded(bytes, fields);
    WaveFormat format;
    format.tag = ReadLE16(fields);
    format.channels = ReadLE16(fields + 2);
    format.sample_rate = ReadLE32(fields + 4);
    format.byte_rate = ReadLE32(fields + 8);
    format.block_align = ReadLE16(fields + 12);
    format.bits_per_sample = ReadLE16(fields + 14);
    format.extension_size = ReadLE16(fields + 16);
    format.valid_bits = ReadLE16(fields + 18);
    format.channel_mask = ReadLE32(fields + 20);
    std::memcpy(format.guid, fields + 24, guid_size);
    return format;
}

uint16_t codec_tag(const WaveFormat& format) {
    if (format.tag == wave_tag_extensible) {
        for (const auto& rest : tag_guids) {
            if (std::memcmp(format.guid + guid_tag_size, rest, sizeof rest) == 0) {
                return ReadLE16(format.guid);
            }
        }
    }
    return format.tag;
}

uint32_t sample_block_size(const WaveFormat& format) {
    const uint32_t block = format.channels * ((format.bits_per_sample + 7U) / 8);
    const bool contradicts =
        uint64_t{format.block_align} * format.sample_rate != format.byte_rate &&
        uint64_t{block} * format.sample_rate == format.byte_rate;
    return format.block_align == 0 || contradicts ? block : format.block_align;
}

void wave_tag_name(uint16_t tag, char (&out)[codec_name_size]) {
    char key[5]; // "0055"
    format_text(key, sizeof key, "%.4X", tag);
    codec_name("[AVI-Audio]", key, key, out, sizeof out);
}

void wave_guid_name(const uint8_t* guid, char (&out)[codec_name_size]) {
    char key[guid_text_size];
    guid_text(guid, key);
    codec_name("[WAV-EXT]", key, key, out, sizeof out);
}

void guid_text(const uint8_t* guid, char (&out)[guid_text_size]) {
    static constexpr uint8_t order[guid_size] = {
        3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    size_t at = 0;
    for (size_t i = 0; i < guid_size; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            out[at++] = '-';
        }
        at += format_text(out + at, guid_text_size - at, "%.2X", guid[order[i]]);
    }
}

} // namespace zat
