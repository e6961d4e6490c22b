#include "audio/dts.h"

#include "common/bytes/bits.h"
#include "common/text/text.h"

#include <iterator>
#include <utility>

namespace zat {

namespace {

// ETSI TS 102 114, table 5-4.
struct Arrangement {
    const char* name;
    int16_t channels;
};

Arrangement arrangement_of(uint32_t amode) {
    static constexpr Arrangement arrangements[] = {
        {"A", 1},
        {"A+B(dual mono)", 2},
        {"L+R(stereo)", 2},
        {"(L+R)+(L-R)(sum-difference)", 2},
        {"LT+RT(left and right total)", 2},
        {"C+L+R", 3},
        {"L+R+S", 3},
        {"C+L+R+S", 4},
        {"L+R+SL+SR", 4},
        {"C+L+R+SL+SR", 5},
        {"CL+CR+L+R+SL+SR", 6},
        {"C+L+R+LR+RR+OV", 6},
        {"CF+CR+LF+RF+LR+RR", 6},
        {"CL+C+CR+L+R+SL+SR", 7},
        {"CL+CR+L+R+SL1+SL2+SR1+SR2", 8},
        {"CL+C+CR+L+R+SL+S+SR", 8},
    };
    static_assert(std::size(arrangements) == 16);
    return amode < std::size(arrangements) ? arrangements[amode] : Arrangement{"User defined", -1};
}

// ETSI TS 102 114, table 5-5.
int32_t dts_sample_rate(uint32_t sfreq) {
    static constexpr int32_t rates[] = {
        -1, 8000, 16000, 32000, -1, -1, 11025, 22050, 44100, -1, -1, 12000, 24000, 48000, -1, -1};
    static_assert(std::size(rates) == 16);
    return sfreq < std::size(rates) ? rates[sfreq] : -1;
}

// ETSI TS 102 114, table 5-7. The rate of code 22 is meant as it stands.
int32_t dts_bitrate(uint32_t rate) {
    static constexpr int32_t rates[] = {32000, 56000, 64000, 96000, 112000, 128000, 192000, 224000,
        256000, 320000, 384000, 448000, 512000, 576000, 640000, 768000, 960000, 1024000, 1152000,
        1280000, 1344000, 1408000, 1411020, 1472000, 1536000, 1920000, 2048000, 3072000, 3840000};
    static_assert(std::size(rates) == 29);
    return rate < std::size(rates) ? rates[rate] : -1;
}

// ETSI TS 102 114, table 5-14.
const char* extension_name(uint32_t ext_audio_id) {
    switch (ext_audio_id) {
    case dts_extension_xch:
        return "(XCh)";
    case dts_extension_x96:
        return "(X96k)";
    case dts_extension_xch_x96:
        return "(XCh,X96k)";
    default:
        return "";
    }
}

// ETSI TS 102 114, table 5-17.
struct Resolution {
    int8_t bits;
    const char* es;
};

Resolution resolution_of(uint32_t pcmr) {
    static constexpr Resolution resolutions[] = {
        {16, ""}, {16, "-ES"}, {20, ""}, {20, "-ES"}, {-1, ""}, {24, "-ES"}, {24, ""}, {-1, ""}};
    static_assert(std::size(resolutions) == 8);
    return pcmr < std::size(resolutions) ? resolutions[pcmr] : Resolution{-1, ""};
}

const char* packing_name(uint32_t sync_type) {
    static constexpr const char* names[] = {"", "16BitBE", "16BitLE", "14BitBE", "14BitLE"};
    static_assert(std::size(names) == dts_14bit_le + 1);
    return sync_type < std::size(names) ? names[sync_type] : "";
}

using FrameStart = uint8_t[dts_frame_start_size];

void swap_words(FrameStart& buf) {
    for (size_t i = 0; i < sizeof buf; i += 2) {
        std::swap(buf[i], buf[i + 1]);
    }
}

// Joins the low 14 bits of the big-endian words; the last word only gives its bits to the others.
void join_14bit_words(FrameStart& buf) {
    int taken = 2; // bits of the next word
    for (uint8_t* at = buf; at + 2 < buf + sizeof buf; at += 2) {
        const uint32_t next = ReadBE16(at + 2) & 0x3FFFU;
        const uint32_t word = static_cast<uint32_t>(ReadBE16(at)) << taken | next >> (14 - taken);
        at[0] = static_cast<uint8_t>(word >> 8);
        at[1] = static_cast<uint8_t>(word);
        taken += 2;
    }
}

// Rewrites the start into big-endian words of 16 bits. Of a stream of 14-bit words the first 14
// bytes are header then, and the last two meaningless.
void unpack(DtsSyncType type, FrameStart& buf) {
    if (type == dts_16bit_le || type == dts_14bit_le) {
        swap_words(buf);
    }
    if (type == dts_14bit_be || type == dts_14bit_le) {
        join_14bit_words(buf);
    }
}

} // namespace

DtsSyncType dts_sync_type(Bytes frame) {
    FrameStart buf;
    copy_padded(frame, buf);
    switch (ReadBE32(buf)) {
    case 0x7FFE8001:
        return dts_16bit_be;
    case 0xFE7F0180:
        return dts_16bit_le;
    // In 14-bit words the sync word goes on into the third: FTYPE 1 and SHORT 31.
    case 0x1FFFE800:
        return buf[4] == 0x07 && buf[5] >> 4 == 0xF ? dts_14bit_be : dts_none;
    case 0xFF1F00E8:
        return buf[5] == 0x07 && buf[4] >> 4 == 0xF ? dts_14bit_le : dts_none;
    default:
        return dts_none;
    }
}

int dts_info(Bytes frame, DtsInfo* info) {
    constexpr uint32_t sync_word = 0x7FFE8001;
    constexpr size_t header_size = 15;
    FrameStart buf;
    copy_padded(frame, buf);
    const DtsSyncType type = dts_sync_type(frame);
    info->sync_type = type;
    unpack(type, buf);
    BitReader reader{Bytes(buf, header_size)};

    if (read_bits(&reader, 32) != sync_word) {
        return 1;
    }
    skip_bits(&reader, 1); // FTYPE
    skip_bits(&reader, 5); // SHORT
    const bool cpf = read_bits(&reader, 1) != 0;
    info->samples = (read_bits(&reader, 7) + 1) * 32;          // NBLKS
    info->frame_size = read_bits(&reader, 14) + 1;             // FSIZE
    info->amode = static_cast<uint8_t>(read_bits(&reader, 6)); // AMODE
    const Arrangement arrangement = arrangement_of(info->amode);
    copy_text(info->arrangement, arrangement.name);
    info->channels = arrangement.channels;
    info->sample_rate = dts_sample_rate(read_bits(&reader, 4));       // SFREQ
    info->bitrate = dts_bitrate(read_bits(&reader, 5));               // RATE
    skip_bits(&reader, 1);                                            // MIX
    skip_bits(&reader, 1);                                            // DYNF
    skip_bits(&reader, 1);                                            // TIMEF
    skip_bits(&reader, 1);                                            // AUXF
    skip_bits(&reader, 1);                                            // HDCD
    info->extension_id = static_cast<uint8_t>(read_bits(&reader, 3)); // EXT_AUDIO_ID
    info->has_extension = read_bits(&reader, 1) != 0;                 // EXT_AUDIO
    if (info->has_extension) {
        copy_text(info->extension, extension_name(info->extension_id));
    }
    skip_bits(&reader, 1); // ASPF
    const uint32_t lff = read_bits(&reader, 2);
    if (lff == 1 || lff == 2) {
        copy_text(info->lfe, ".1");
    }
    skip_bits(&reader, 1); // HFLAG
    if (cpf) {
        skip_bits(&reader, 16); // HCRC
    }
    skip_bits(&reader, 1);                                              // FILTS
    skip_bits(&reader, 4);                                              // VERNUM
    skip_bits(&reader, 2);                                              // CHIST
    const Resolution resolution = resolution_of(read_bits(&reader, 3)); // PCMR
    info->bits = resolution.bits;
    copy_text(info->es, resolution.es);
    return reader.failed ? 1 : 0;
}

void dts_line(const DtsInfo* info, char (&out)[line_size]) {
    format_text(out, line_size, "DTS(%s)%s%s %dHz %d%sCh %s%s %.3fkbps %dBit",
        packing_name(info->sync_type), info->es, info->extension, info->sample_rate, info->channels,
        info->lfe, info->arrangement, info->lfe[0] != '\0' ? "+LFE" : "", info->bitrate * 0.001,
        info->bits);
}

} // namespace zat
