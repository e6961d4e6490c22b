#include "audio/lpcm.h"

#include "common/text/text.h"

#include <iterator>

namespace zat {

namespace {

// Channel assignment of the Blu-ray LPCM header.
struct Assignment {
    const char* layout;
    int8_t channels;
};

Assignment bd_assignment(uint32_t code) {
    static constexpr Assignment unknown = {"Unknown(0)", 0};
    static constexpr Assignment assignments[] = {
        unknown,
        {"C", 1},
        unknown,
        {"stereo(L+R)", 2},
        {"3/0(L+R+C)", 3},
        {"2/1(L+R+S)", 4}, // counted like the layouts with two surround channels
        {"3/1(L+R+C+S)", 4},
        {"2/2(L+R+SL+SR)", 4},
        {"3/2(L+R+C+SL+SR)", 5},
        {"3/2.1(L+R+C+SL+SR+LFE)", 6},
        {"3/4(L+R+C+SL+SR+BL+BR)", 7},
        {"3/4.1(L+R+C+BL+BR+SL+SR+LFE)", 8},
    };
    static_assert(std::size(assignments) == 12);
    return code < std::size(assignments) ? assignments[code] : unknown;
}

int32_t bd_sample_rate(uint32_t code) {
    switch (code) {
    case 1:
        return 48000;
    case 4:
        return 96000;
    case 5:
        return 192000;
    default:
        return 0;
    }
}

int32_t byte_rate_of(const LpcmInfo* info) {
    return info->bits / 8 * info->sample_rate * info->channels;
}

} // namespace

int dvd_lpcm_info(uint8_t attribute, LpcmInfo* info) {
    static constexpr int8_t bits[] = {16, 20, 24, -1};
    static constexpr int32_t rates[] = {48000, 96000, 44100, 32000};
    static_assert(std::size(bits) == 4 && std::size(rates) == 4);
    info->bits = bits[attribute >> 6];                           // quantization
    info->sample_rate = (attribute & 0x10) != 0 ? 96000 : 48000; // its other bit is not used
    info->coded_rate = rates[attribute >> 4 & 3];
    info->channels = static_cast<int8_t>((attribute & 7) + 1); // number_of_channels
    info->byte_rate = byte_rate_of(info);
    return 0;
}

int bd_lpcm_info(Bytes header, LpcmInfo* info) {
    static constexpr int8_t bits[] = {0, 16, 20, 24};
    static_assert(std::size(bits) == 4);
    info->assignment = byte_at(header, 2) >> 4; // channel_assignment
    const Assignment assignment = bd_assignment(info->assignment);
    copy_text(info->layout, assignment.layout);
    info->channels = assignment.channels;
    info->sample_rate = bd_sample_rate(byte_at(header, 2) & 0x0FU); // sampling_frequency
    info->coded_rate = info->sample_rate;
    info->bits = bits[byte_at(header, 3) >> 6]; // bits_per_sample
    info->byte_rate = byte_rate_of(info);
    return 0;
}

void dvd_lpcm_line(const LpcmInfo* info, char (&out)[line_size]) {
    format_text(out, line_size, "LPCM %dHz %dch %dBit %.3fkbps", info->sample_rate, info->channels,
        info->bits, info->byte_rate * 8 * 0.001);
}

void bd_lpcm_line(const LpcmInfo* info, char (&out)[line_size]) {
    format_text(out, line_size, "LPCM %dHz %s %dBit %.3fkbps", info->sample_rate, info->layout,
        info->bits, info->byte_rate * 8 * 0.001);
}

} // namespace zat
