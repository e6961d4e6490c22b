#include "audio/truehd.h"

#include "common/bytes/bytes.h"
#include "common/text/text.h"

#include <bit>
#include <iterator>

namespace zat {

namespace {

constexpr size_t format_sync_reach = 24; // positions at which format_sync is looked for

// format_info.audio_sampling_frequency.
uint32_t truehd_sample_rate(uint32_t code) {
    if (code == 15) {
        return 0;
    }
    const uint32_t base = (code & 8) != 0 ? 44100 : 48000;
    return base << (code & 7);
}

} // namespace

uint32_t mlp_unit_size(Bytes unit) {
    constexpr uint32_t header_size = 4;     // the next field is the time it is decoded at
    constexpr uint32_t length_mask = 0xFFF; // words of 16 bits
    const uint32_t size = unit.size() < header_size ? 0 : (ReadBE16(unit.data()) & length_mask) * 2;
    return size > header_size ? size : 0;
}

bool read_truehd_format(Bytes format, TrueHdInfo* info) {
    if (format.size() < 4) {
        return false;
    }
    // audio_sampling_frequency (4), channel types and modifiers (8), then the two assignments with
    // the 8-channel modifier (2) between them.
    const uint32_t six_channel_assignment = (format[1] & 0x0FU) << 1 | format[2] >> 7;
    const uint32_t eight_channel_assignment = (format[2] & 0x1FU) << 8 | format[3];
    info->assignment =
        eight_channel_assignment != 0 ? eight_channel_assignment : six_channel_assignment;
    info->channels = TrueHDchannels(info->assignment);
    info->sample_rate = truehd_sample_rate(format[0] >> 4);
    return true;
}

int truehd_info(Bytes access_unit, TrueHdInfo* info) {
    uint8_t buf[truehd_header_size];
    copy_padded(access_unit, buf);
    constexpr uint32_t sync = 0xF8726F; // format_sync, the same for all MLP streams ...
    constexpr uint8_t truehd = 0xBA;    // ... up to this byte
    size_t position = 0;
    while (ReadBE24(buf + position) != sync) {
        if (++position == format_sync_reach) {
            return -1;
        }
    }
    if (buf[position + 3] != truehd) {
        return -2;
    }
    const uint8_t* p = buf + position + 4;
    read_truehd_format({p, 4}, info);
    // Behind signature, flags and a reserved word (16 each): variable_rate (1) and peak_data_rate
    // (15), in sixteenths of a bit per sample.
    const uint16_t rate = ReadBE16(p + 10);
    info->vbr = rate >> 15;
    info->peak_bitrate =
        static_cast<uint32_t>((uint64_t{rate & 0x7FFFU} * info->sample_rate + 8) >> 4);
    return 0;
}

bool mlp_info(Bytes major_sync, MlpInfo* info) {
    constexpr size_t rate_offset = 14;
    static constexpr uint8_t bits[] = {16, 20, 24};
    // channel_assignment, as the speakers of a channel mask: front L 1, R 2, C 4, LFE 8, surround
    // S 100, Ls and Rs 600.
    static constexpr uint16_t masks[] = {0x004, 0x003, 0x103, 0x603, 0x00B, 0x10B, 0x60B, 0x007,
        0x107, 0x607, 0x00F, 0x10F, 0x60F, 0x107, 0x607, 0x00F, 0x10F, 0x60F, 0x60B, 0x607, 0x60F};
    if (!has_at(major_sync, 0, "\xF8\x72\x6F\xBB") || major_sync.size() <= rate_offset) {
        return false;
    }
    const uint8_t* p = major_sync.data() + 4;
    const uint32_t quantization = p[0] >> 4;
    const uint32_t assignment = p[3] & 0x1FU;
    info->bits = quantization < std::size(bits) ? bits[quantization] : 0;
    info->sample_rate = truehd_sample_rate(p[1] >> 4);
    info->channel_mask = assignment < std::size(masks) ? masks[assignment] : 0;
    info->channels = static_cast<uint32_t>(std::popcount(info->channel_mask));
    info->variable_rate = (major_sync[rate_offset] & 0x80) != 0;
    return true;
}

uint32_t TrueHDchannels(uint32_t mask) {
    // L/R, C, LFE, Ls/Rs, Lvh/Rvh, Lc/Rc, Lrs/Rrs, Cs, Ts, Lsd/Rsd, Lw/Rw, Cvh, LFE2
    static constexpr uint8_t channels[] = {2, 1, 1, 2, 2, 2, 2, 1, 1, 2, 2, 1, 1};
    static_assert(std::size(channels) == 13);
    uint32_t count = 0;
    for (size_t bit = 0; bit < std::size(channels); ++bit) {
        count += (mask >> bit & 1) != 0 ? channels[bit] : 0;
    }
    return count;
}

void truehd_channel_name(uint32_t count, char (&out)[channel_name_size]) {
    if (count == 1 || count == 2) {
        format_text(out, channel_name_size, "%uch", count);
    } else if (count >= 3 && count <= 20) {
        format_text(out, channel_name_size, "%u.1ch", count - 1); // one is taken to be the LFE
    }
}

void named_truehd_line(const TrueHdInfo& info, const char* name, char (&out)[line_size]) {
    char channels[channel_name_size] = "";
    truehd_channel_name(info.channels, channels);
    copy_text(out, name);
    char piece[64];
    if (info.sample_rate != 0) {
        format_text(piece, sizeof piece, " %uHz", info.sample_rate);
        append_text(out, piece);
    }
    format_text(piece, sizeof piece, " [%s%s%s]", channels, channels[0] != '\0' ? " " : "",
        info.vbr != 0 ? "VBR" : "CBR");
    append_text(out, piece);
    if (info.peak_bitrate != 0) {
        format_text(piece, sizeof piece, " %.3fkbps", info.peak_bitrate * 0.001);
        append_text(out, piece);
    }
}

} // namespace zat
