#include "audio/eac3.h"

#include "audio/ac3.h"
#include "audio/stream_facts.h"
#include "audio/sync_search.h"
#include "common/bytes/bits.h"

#include <algorithm>
#include <iterator>

namespace zat {

namespace {

constexpr size_t eac3_header_size = 12; // bytes that are looked at
constexpr uint32_t sync_word = 0x0B77;
constexpr uint32_t ac3_samples = 1536;
constexpr uint32_t eac3_block_samples = 256;
constexpr size_t bsid_offset = 5; // of the byte that begins with it
constexpr uint32_t last_ac3_bsid = 8;

// ATSC A/52, table E2.5, from the map's top bit on.
struct Location {
    uint8_t channels;
    uint16_t mask; // bits of the channel mask; 0 without a name there
};

constexpr Location locations_by_bit[16] = {
    {1, 0x1},    // L
    {1, 0x4},    // C
    {1, 0x2},    // R
    {1, 0x200},  // Ls
    {1, 0x400},  // Rs
    {2, 0xC0},   // Lc/Rc
    {2, 0x30},   // Lrs/Rrs
    {1, 0x100},  // Cs
    {1, 0x800},  // Ts
    {2, 0},      // Lsd/Rsd
    {2, 0},      // Lw/Rw
    {2, 0x5000}, // Vhl/Vhr
    {1, 0x2000}, // Vhc
    {2, 0},      // Lts/Rts
    {1, 0},      // LFE2
    {1, 0x8},    // LFE
};

constexpr bool has_bit(uint16_t locations, size_t index) {
    return (locations >> (15 - index) & 1) != 0;
}

// The speakers of an audio coding mode.
uint16_t eac3_locations(uint8_t acmod, bool has_lfe) {
    // ATSC A/52, table 5.8: L C R Ls Rs ... Cs
    static constexpr uint16_t by_mode[] = {
        0xA000, 0x4000, 0xA000, 0xE000, 0xA100, 0xE100, 0xB800, 0xF800};
    const uint16_t locations = acmod < std::size(by_mode) ? by_mode[acmod] : uint16_t{0};
    return static_cast<uint16_t>(locations | (has_lfe ? 1 : 0));
}

// The channels of the speakers of a channel map.
uint32_t eac3_channels(uint16_t locations) {
    uint32_t channels = 0;
    for (size_t i = 0; i < std::size(locations_by_bit); ++i) {
        channels += has_bit(locations, i) ? locations_by_bit[i].channels : 0;
    }
    return channels;
}

// The same as a channel mask; 0 for a map with speakers that it does not know.
uint32_t eac3_channel_mask(uint16_t locations) {
    uint32_t mask = 0;
    for (size_t i = 0; i < std::size(locations_by_bit); ++i) {
        if (has_bit(locations, i)) {
            if (locations_by_bit[i].mask == 0) {
                return 0;
            }
            mask |= locations_by_bit[i].mask;
        }
    }
    return mask;
}

bool read_ac3_frame(Bytes bytes, Eac3Frame* frame) {
    Ac3Info info;
    if (ac3_info(bytes, &info) != 0) {
        return false;
    }
    frame->size = static_cast<uint32_t>(info.framesize);
    frame->sample_rate = static_cast<uint32_t>(info.sample_rate);
    frame->samples = ac3_samples;
    frame->acmod = info.acmod;
    frame->has_lfe = info.has_lfe;
    frame->locations = eac3_locations(info.acmod, info.has_lfe);
    return true;
}

// Skips what each of the two programmes of a dual mono stream has.
void skip_eac3_programme(BitReader* reader) {
    skip_bits(reader, 5);     // dialnorm
    skip_optional(reader, 8); // compre, compr
}

} // namespace

bool read_eac3_frame(Bytes bytes, Eac3Frame* frame) {
    static constexpr uint8_t block_counts[] = {1, 2, 3, 6};
    uint8_t header[eac3_header_size];
    copy_padded(bytes, header);
    BitReader reader{.bytes = header};
    if (read_bits(&reader, 16) != sync_word) {
        return false;
    }
    const uint32_t bsid = header[bsid_offset] >> 3;
    if (bsid <= last_ac3_bsid) {
        return read_ac3_frame(bytes, frame);
    }
    if (bsid <= 10 || bsid > 16) {
        return false;
    }
    const uint32_t stream_type = read_bits(&reader, 2); // strmtyp
    frame->dependent = stream_type == 1;
    frame->substream = static_cast<uint8_t>(read_bits(&reader, 3)); // substreamid
    frame->size = (read_bits(&reader, 11) + 1) * 2;                 // frmsiz
    const uint32_t fscod = read_bits(&reader, 2);
    const uint32_t code = read_bits(&reader, 2); // fscod2 or numblkscod
    if (fscod == 3) {
        frame->sample_rate = ac3_sample_rate(code) / 2;
        frame->samples = 6 * eac3_block_samples;
    } else {
        frame->sample_rate = ac3_sample_rate(fscod);
        frame->samples = block_counts[code] * eac3_block_samples;
    }
    frame->acmod = static_cast<uint8_t>(read_bits(&reader, 3));
    frame->has_lfe = read_bits(&reader, 1) != 0; // lfeon
    frame->locations = eac3_locations(frame->acmod, frame->has_lfe);
    skip_bits(&reader, 5); // bsid
    skip_eac3_programme(&reader);
    if (frame->acmod == 0) {
        skip_eac3_programme(&reader);
    }
    if (frame->dependent && read_bits(&reader, 1) != 0) { // chanmape
        frame->locations = static_cast<uint16_t>(read_bits(&reader, 16));
    }
    return stream_type != 3 && frame->sample_rate != 0;
}

bool eac3_info(Bytes bytes, Eac3Info* info) {
    struct Units {
        uint64_t size = 0; // bytes
        uint64_t samples = 0;
    };
    Units whole; // each from an independent frame of the first programme to the next one
    Units last;
    bool enhanced = false;
    bool first_programme = true;
    for (Bytes rest = bytes; !rest.empty();) {
        Eac3Frame frame;
        if (!read_eac3_frame(rest, &frame) || (last.samples == 0 && frame.dependent)) {
            break;
        }
        if (last.samples == 0) {
            info->first = frame;
        }
        const bool starts_unit = !frame.dependent && frame.substream == info->first.substream;
        if (starts_unit) {
            whole = {whole.size + last.size, whole.samples + last.samples};
            last = {0, frame.samples};
        }
        last.size += frame.size;
        first_programme = frame.dependent ? first_programme : starts_unit;
        if (first_programme) {
            info->locations = static_cast<uint16_t>(info->locations | frame.locations);
        }
        enhanced = enhanced || byte_at(rest, bsid_offset) >> 3 > last_ac3_bsid;
        rest = rest.subspan(std::min<size_t>(frame.size, rest.size()));
    }
    if (!enhanced) {
        return false;
    }
    info->channels = eac3_channels(info->locations);
    const Units counted = whole.samples != 0 ? whole : last;
    info->bitrate =
        static_cast<uint32_t>(counted.size * 8 * info->first.sample_rate / counted.samples);
    return true;
}

bool find_eac3(Bytes* bytes, Eac3Info* info) {
    constexpr int most_syncs = 64; // that stand by chance in front of a frame
    Bytes rest = *bytes;
    for (int i = 0; i < most_syncs; ++i) {
        const int64_t at = find_ac3_sync(rest);
        if (at < 0) {
            return false;
        }
        rest = rest.subspan(static_cast<size_t>(at));
        if (eac3_info(rest, info)) {
            *bytes = rest;
            return true;
        }
        rest = rest.subspan(1);
    }
    return false;
}

void eac3_name(const Eac3Info& info, char (&out)[line_size]) {
    static constexpr const char* modes[] = {"1+1", "1/0", "2/0", "3/0", "2/1", "3/1", "2/2", "3/2"};
    format_text(out, line_size, "[E-AC-3 %s%s] %dHz %dch", modes[info.first.acmod & 7],
        info.first.has_lfe ? ".1" : "", static_cast<int32_t>(info.first.sample_rate),
        static_cast<int32_t>(info.channels));
}

void eac3_line(const Eac3Info* info, char (&out)[line_size]) {
    eac3_name(*info, out);
    char rate[32];
    format_text(rate, sizeof rate, " %.3fkbps", info->bitrate * 0.001);
    append_text(out, rate);
}

void eac3_facts(const Eac3Info& info, ZatStream* stream) {
    copy_utf8(stream->codec, "E-AC-3");
    stream->sample_rate = info.first.sample_rate;
    stream->channels = info.channels;
    if (info.first.acmod != 0) { // not of two programmes
        set_layout(eac3_channel_mask(info.locations), stream);
    }
    stream->bit_rate = info.bitrate;
    stream->estimated |= ZAT_ESTIMATED_BIT_RATE;
}

} // namespace zat
