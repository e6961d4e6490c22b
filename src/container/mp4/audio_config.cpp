#include "container/mp4/audio_config.h"

#include "common/bits.h"

#include <iterator>

namespace zat::mp4 {

namespace {

// The largest rate that the entry's 16.16 field holds.
constexpr uint32_t largest_entry_rate = 65535;

// ALACSpecificConfig (Apple Lossless Format Description) behind version and flags. The entry's rate
// stands, unless it cannot hold the true one.
uint32_t apply_alac(Reader* reader, SampleEntry* entry) {
    uint8_t cookie[28];
    if (!read_all(reader, entry->alac_cookie, 0, cookie, sizeof cookie)) {
        return 0;
    }
    entry->channels = cookie[13];
    const uint32_t rate = ReadBE32(cookie + 24);
    if (rate > largest_entry_rate) {
        entry->sample_rate = rate;
    }
    return ReadBE32(cookie + 20);
}

// The stream information (RFC 9639, 8.2) behind version and flags and a block header.
void apply_flac(Reader* reader, SampleEntry* entry) {
    uint8_t config[22];
    if (!read_all(reader, entry->flac_configuration, 0, config, sizeof config)) {
        return;
    }
    const uint32_t fields = ReadBE32(config + 18);
    if (fields >> 12 != 0) {
        entry->sample_rate = fields >> 12;
        entry->channels = (fields >> 9 & 7) + 1;
        entry->sample_size = (fields >> 4 & 31) + 1;
    }
}

// EC3SpecificBox (ETSI TS 102 366, F.6): the first independent substream and the channels that its
// dependent ones add. The entry's own count is to be ignored.
uint32_t apply_eac3(Reader* reader, SampleEntry* entry) {
    constexpr uint32_t rates[] = {48000, 44100, 32000};
    constexpr uint8_t channels_by_acmod[] = {2, 1, 2, 3, 3, 4, 4, 5};
    // Of chan_loc, the top bit first: LFE2, Cvh, Lvh/Rvh, Lw/Rw, Lsd/Rsd, Ts, Cs, Lrs/Rrs, Lc/Rc.
    constexpr uint8_t channels_by_location[] = {1, 1, 2, 2, 2, 1, 1, 2, 2};
    uint8_t config[6] = {};
    if (read_some(reader, entry->eac3_configuration, 0, config, sizeof config) < 5) {
        return 0;
    }
    BitReader bits{.bytes = config};
    const uint32_t data_rate = read_bits(&bits, 13); // kbit/s
    skip_bits(&bits, 3);                             // num_ind_sub
    const uint32_t fscod = read_bits(&bits, 2);
    skip_bits(&bits, 5 + 1 + 1 + 3); // bsid, reserved, asvc, bsmod
    entry->channels = channels_by_acmod[read_bits(&bits, 3)];
    entry->channels += read_bits(&bits, 1); // lfeon
    skip_bits(&bits, 3);
    if (read_bits(&bits, 4) != 0) { // num_dep_sub
        for (const uint8_t channels : channels_by_location) {
            entry->channels += read_bits(&bits, 1) != 0 ? channels : 0;
        }
    }
    if (fscod < std::size(rates)) {
        entry->sample_rate = rates[fscod];
    }
    return data_rate * 1000;
}

// ISO/IEC 14496-12, 12.2.4.
void apply_sampling_rate(Reader* reader, SampleEntry* entry) {
    const uint32_t rate = read_be32(reader, entry->sampling_rate, 4);
    if (rate != 0) {
        entry->sample_rate = rate;
    }
}

} // namespace

uint32_t apply_audio_config(Reader* reader, bool one_size, SampleEntry* entry) {
    apply_sampling_rate(reader, entry);
    apply_flac(reader, entry);
    const uint32_t eac3_rate = apply_eac3(reader, entry);
    const uint32_t alac_rate = apply_alac(reader, entry);
    return one_size && eac3_rate != 0 ? eac3_rate : alac_rate;
}

} // namespace zat::mp4
