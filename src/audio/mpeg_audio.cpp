#include "audio/mpeg_audio.h"

#include <cstring>

namespace zat {

namespace {

constexpr int error_reserved_code = 11;
constexpr int error_empty_frame = 13;
constexpr int error_reserved_sample_rate = 14;

constexpr uint32_t reserved = UINT32_MAX;

// ISO/IEC 11172-3, 2.4.2.3 "ID" with its MPEG-2.5 extension, by the two bits before "layer".
constexpr int8_t version_codes[4] = {25, -1, 20, 10};

// ISO/IEC 11172-3, 2.4.2.3 "layer".
constexpr int8_t layers[4] = {-1, 3, 2, 1};

// ISO/IEC 11172-3 and 13818-3, 2.4.2.3 "sampling_frequency", by version bits and index.
constexpr uint32_t mpeg_rates[4][4] = {
    {11025, 12000, 8000, reserved},
    {reserved, reserved, reserved, reserved},
    {22050, 24000, 16000, reserved},
    {44100, 48000, 32000, reserved},
};

// ISO/IEC 11172-3, 2.4.2.3 "bitrate_index", Layers I to III; kbit/s.
constexpr int16_t bitrates_mpeg1[3][16] = {
    {-1, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448, -1},
    {-1, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384, -1},
    {-1, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, -1},
};

// ISO/IEC 13818-3, 2.4.2.3 "bitrate_index" for low sampling frequencies.
constexpr int16_t bitrates_mpeg2[3][16] = {
    {-1, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256, -1},
    {-1, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, -1},
    {-1, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, -1},
};

// ISO/IEC 11172-3, 2.4.2.3 "mode".
constexpr char mode_names[4][sizeof(MpegAudioInfo::channel_mode_name)] = {
    "Stereo", "Joint Stereo", "Dual channel", "Single Channel(mono)"};

// "mode_extension" as Layer III reads it, shown for every layer and mode.
constexpr char extension_texts[4][sizeof(MpegAudioInfo::mode_extension_text)] = {
    "", "/I", "/MS", "/I/MS"};

// Bytes of a frame for each kbit/s and kHz. Low sampling frequencies count half for every layer,
// though only Layer III has half the samples there.
constexpr uint32_t frame_factor(int version_code, int layer) {
    const uint32_t factor = layer == 1 ? 48 : 144;
    return version_code == 10 ? factor : factor / 2;
}

// Takes the next bits from the top of the header.
uint32_t take(uint32_t* header, int bits) {
    const uint32_t value = *header >> (32 - bits);
    *header <<= bits;
    return value;
}

void put_back(uint32_t bits, std::span<uint8_t, mpeg_audio_header_size> bytes) {
    for (uint32_t i = 0; i < mpeg_audio_header_size; ++i) {
        bytes[i] = static_cast<uint8_t>(bits >> (24 - 8 * i));
    }
}

} // namespace

int DecodeMpegAudioHeader(std::span<uint8_t, mpeg_audio_header_size> bytes, MpegAudioHeader* info) {
    uint32_t header = ReadBE32(bytes.data());
    take(&header, 11); // syncword
    const uint32_t version = take(&header, 2);
    info->version_code = version_codes[version];
    info->layer = layers[take(&header, 2)];
    take(&header, 1); // protection_bit
    info->bitrate_index = static_cast<uint8_t>(take(&header, 4));
    info->sample_rate_index = static_cast<uint8_t>(take(&header, 2));
    info->sample_rate = mpeg_rates[version][info->sample_rate_index];
    if (info->sample_rate_index == 3) {
        put_back(header, bytes);
        return error_reserved_sample_rate;
    }
    info->padding = static_cast<int8_t>(take(&header, 1));
    take(&header, 1); // private_bit
    info->channel_mode = static_cast<uint8_t>(take(&header, 2));
    std::memcpy(
        info->channel_mode_name, mode_names[info->channel_mode], sizeof info->channel_mode_name);
    std::memcpy(info->mode_extension_text, extension_texts[take(&header, 2)],
        sizeof info->mode_extension_text);
    put_back(0, bytes); // copyright, original and emphasis are not looked at

    if (info->version_code < 0 || info->layer < 0) {
        return error_reserved_code;
    }
    const auto& bitrates = info->version_code == 10 ? bitrates_mpeg1 : bitrates_mpeg2;
    info->bitrate = bitrates[info->layer - 1][info->bitrate_index];
    // Unsigned on purpose: the -1 of free format gives a size that no real frame has, and whoever
    // looks for a second frame behind it finds none.
    info->frame_size = static_cast<uint32_t>(info->bitrate) *
                           frame_factor(info->version_code, info->layer) * 1000U /
                           info->sample_rate +
                       static_cast<uint32_t>(info->padding);
    return info->frame_size == 0 ? error_empty_frame : 0;
}

int read_mpeg_audio_header(Bytes frame, MpegAudioHeader* info) {
    uint8_t header[mpeg_audio_header_size];
    copy_padded(frame, header);
    return DecodeMpegAudioHeader(header, info);
}

uint32_t mpeg_audio_frame_samples(const MpegAudioHeader* info) {
    if (info->layer == 1) {
        return 384;
    }
    return info->version_code != 10 && info->layer == 3 ? 576 : 1152;
}

} // namespace zat
