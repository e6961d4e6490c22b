#include "audio/ac3.h"

#include "common/bytes/bits.h"
#include "common/text/text.h"

#include <iterator>

namespace zat {

namespace {

// ATSC A/52, table 5.7. The last code means voice over for a single channel, else karaoke.
const char* service_name(uint32_t bsmod, uint32_t acmod) {
    static constexpr const char* names[] = {"CM", "ME", "VI", "HI", "D", "C", "E"};
    static_assert(std::size(names) == 7);
    if (bsmod < std::size(names)) {
        return names[bsmod];
    }
    return acmod == 0 ? "" : acmod == 1 ? "VO" : "karaoke";
}

// ATSC A/52, table 5.8.
struct CodingMode {
    const char* name;
    uint16_t channels;
};

CodingMode coding_mode(uint32_t acmod) {
    static constexpr CodingMode modes[] = {
        {"Ch(1+1) Ch1+Ch2", 2},
        {"Ch(1/0) C", 1},
        {"Ch(2/0) L+R", 2},
        {"Ch(3/0) L+C+R", 3},
        {"Ch(2/1) L+R+S", 4}, // counted like the modes with two surround channels
        {"Ch(3/1) L+C+R+S", 4},
        {"Ch(2/2) L+R+SL+SR", 4},
        {"Ch(3/2) L+C+R+SL+SR", 5},
    };
    static_assert(std::size(modes) == 8);
    return acmod < std::size(modes) ? modes[acmod] : CodingMode{"Multi Channnel(Unknown)", 0};
}

// What the two programmes of a dual mono stream have each.
void skip_programme(BitReader* reader) {
    skip_bits(reader, 5);     // dialnorm
    skip_optional(reader, 8); // compre, compr
    skip_optional(reader, 8); // langcode, langcod
    skip_optional(reader, 7); // audprodie, mixlevel (5), roomtyp (2)
}

// ATSC A/52, annex D, 2.3: the alternate syntax puts these in place of the time codes.
void read_alternate_syntax(BitReader* reader, Ac3Info* info) {
    skip_optional(reader, 14);           // xbsi1e, dmixmod (2), four mix levels (3 each)
    if (read_bits(reader, 1) != 0) {     // xbsi2e
        if (read_bits(reader, 2) == 2) { // dsurexmod
            copy_text(info->surround_ex, " Dolby Surround EX");
        }
    }
}

// syncinfo() (ATSC A/52, 5.3.1).
bool read_sync_info(BitReader* reader, Ac3Info* info) {
    constexpr uint32_t sync_word = 0x0B77;
    if (read_bits(reader, 16) != sync_word) {
        return false;
    }
    skip_bits(reader, 16); // crc1
    const uint32_t fscod = read_bits(reader, 2);
    const uint32_t sample_rate = ac3_sample_rate(fscod);
    info->sample_rate = sample_rate != 0 ? static_cast<int32_t>(sample_rate) : -1;
    if (sample_rate == 0) {
        return false;
    }
    const uint32_t frmsizecod = read_bits(reader, 6);
    info->bitrate = ac3_bitrate(frmsizecod >> 1);
    if (info->bitrate == ac3_invalid_bitrate) {
        return false;
    }
    info->framesize = ac3_framesize(static_cast<int>(frmsizecod), static_cast<int>(fscod));
    return true;
}

// The coding mode's mix levels, of which each mode has those that it needs.
void read_mix_levels(BitReader* reader, uint32_t acmod, Ac3Info* info) {
    const bool has_centre = (acmod & 1) != 0 && acmod != 1;
    skip_bits(reader, has_centre ? 2 : 0);         // cmixlev
    skip_bits(reader, (acmod & 4) != 0 ? 2 : 0);   // surmixlev
    if (acmod == 2 && read_bits(reader, 2) == 2) { // dsurmod
        copy_text(info->surround, " Dolby Surround");
    }
}

// bsi() (ATSC A/52, 5.3.2), up to the fields of the alternate syntax.
bool read_bit_stream_information(BitReader* reader, Ac3Info* info) {
    constexpr uint32_t last_bsid = 8; // E-AC-3 from 11 on
    constexpr uint32_t alternate_syntax = 6;
    const uint32_t bsid = read_bits(reader, 5);
    if (bsid > last_bsid) {
        return false;
    }
    const uint32_t bsmod = read_bits(reader, 3);
    const uint32_t acmod = read_bits(reader, 3);
    const CodingMode mode = coding_mode(acmod);
    info->acmod = static_cast<uint8_t>(acmod);
    copy_text(info->service, service_name(bsmod, acmod));
    copy_text(info->mode_name, mode.name);
    info->channels = mode.channels;
    read_mix_levels(reader, acmod, info);
    if (read_flag(reader)) { // lfeon
        copy_text(info->lfe, ".1");
        info->has_lfe = true;
    }
    skip_programme(reader);
    if (acmod == 0) {
        skip_programme(reader);
    }
    skip_bits(reader, 1); // copyrightb
    skip_bits(reader, 1); // origbs
    if (bsid == alternate_syntax) {
        read_alternate_syntax(reader, info);
    }
    return !reader->failed;
}

void format_line(const char* name, const Ac3Info* info, char (&out)[line_size]) {
    format_text(out, line_size, "%s %dHz [%d%s%s %s%s%s] %dkbps", name, info->sample_rate,
        info->channels, info->lfe, info->mode_name, info->service, info->surround,
        info->surround_ex, info->bitrate);
}

} // namespace

uint32_t ac3_sample_rate(uint32_t fscod) {
    static constexpr uint32_t rates[] = {48000, 44100, 32000};
    return fscod < std::size(rates) ? rates[fscod] : 0;
}

uint32_t ac3_channel_mask(uint32_t acmod, bool has_lfe) {
    static constexpr uint32_t masks[] = {0x3, 0x4, 0x3, 0x7, 0x103, 0x107, 0x603, 0x607};
    static_assert(std::size(masks) == 8);
    constexpr uint32_t lfe = 0x8;
    return (acmod < std::size(masks) ? masks[acmod] : 0) | (has_lfe ? lfe : 0);
}

uint16_t ac3_bitrate(uint32_t frmsizecod_pair) {
    static constexpr uint16_t rates[] = {
        32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384, 448, 512, 576, 640};
    static_assert(std::size(rates) == 19);
    return frmsizecod_pair < std::size(rates) ? rates[frmsizecod_pair] : ac3_invalid_bitrate;
}

int32_t ac3_framesize(int frmsizecod, int fscod) {
    // 16-bit words at 32, 44.1 and 48 kHz.
    static constexpr uint16_t words[][3] = {
        {96, 69, 64},
        {96, 70, 64},
        {120, 87, 80},
        {120, 88, 80},
        {144, 104, 96},
        {144, 105, 96},
        {168, 121, 112},
        {168, 122, 112},
        {192, 139, 128},
        {192, 140, 128},
        {240, 174, 160},
        {240, 175, 160},
        {288, 208, 192},
        {288, 209, 192},
        {336, 243, 224},
        {336, 244, 224},
        {384, 278, 256},
        {384, 279, 256},
        {480, 348, 320},
        {480, 349, 320},
        {576, 417, 384},
        {576, 418, 384},
        {672, 487, 448},
        {672, 488, 448},
        {768, 557, 512},
        {768, 558, 512},
        {960, 696, 640},
        {960, 697, 640},
        {1152, 835, 768},
        {1152, 836, 768},
        {1344, 975, 896},
        {1344, 976, 896},
        {1536, 1114, 1024},
        {1536, 1115, 1024},
        {1728, 1253, 1152},
        {1728, 1254, 1152},
        {1920, 1393, 1280},
        {1920, 1394, 1280},
    };
    static_assert(std::size(words) == 38);
    if (frmsizecod < 0 || static_cast<size_t>(frmsizecod) >= std::size(words) || fscod < 0 ||
        fscod > 2) {
        return 0;
    }
    return words[frmsizecod][2 - fscod] * 2;
}

int ac3_info(Bytes frame, Ac3Info* info) {
    uint8_t header[ac3_header_size];
    copy_padded(frame, header);
    BitReader reader{header};
    return read_sync_info(&reader, info) && read_bit_stream_information(&reader, info) ? 0 : 1;
}

void ac3_line(const Ac3Info* info, char (&out)[line_size]) {
    format_line("AC3", info, out);
}

void truehd_line(const Ac3Info* info, char (&out)[line_size]) {
    format_line("Dolby TrueHD", info, out);
}

} // namespace zat
