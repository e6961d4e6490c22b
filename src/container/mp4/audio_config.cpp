#include "container/mp4/audio_config.h"

#include "audio/ac3_config.h"
#include "audio/alac.h"
#include "audio/flac_streaminfo.h"
#include "audio/truehd.h"

#include <cstring>

namespace zat::mp4 {

namespace {

// The largest rate that the entry's 16.16 field holds.
constexpr uint32_t largest_entry_rate = 65535;

// Bytes of the boxes that are read, of which the decoders need less.
constexpr uint32_t config_box_size = 64;

// An ALACSpecificConfig behind version and flags; only an entry of that codec has one. The entry's
// rate and bits stand, unless it cannot hold the true rate.
uint32_t apply_alac(Reader* reader, SampleEntry* entry) {
    uint8_t box[config_box_size];
    AlacConfig config;
    if (std::memcmp(entry->format, "alac", sizeof entry->format) != 0 ||
        !read_alac_config(read_box(reader, sub_span(entry->alac_cookie, 4), box), &config)) {
        return 0;
    }
    entry->channels = config.channels;
    if (config.sample_rate > largest_entry_rate) {
        entry->sample_rate = config.sample_rate;
        entry->sample_size = config.bit_depth;
    }
    return config.average_bit_rate;
}

// Metadata blocks behind version and flags.
void apply_flac(Reader* reader, SampleEntry* entry) {
    uint8_t box[config_box_size];
    FlacStreamInfo info;
    const Bytes blocks = read_box(reader, sub_span(entry->flac_configuration, 4), box);
    if (read_flac_streaminfo(flac_streaminfo_of_blocks(blocks), &info) && info.sample_rate != 0) {
        entry->sample_rate = info.sample_rate;
        entry->channels = info.channels;
        entry->sample_size = info.bits;
    }
}

// The entry's own count of channels is to be ignored.
uint32_t apply_eac3(Reader* reader, SampleEntry* entry) {
    uint8_t box[config_box_size];
    Ac3Config config;
    if (!read_eac3_config(read_box(reader, entry->eac3_configuration, box), &config)) {
        return 0;
    }
    entry->channels = config.channels;
    if (config.sample_rate != 0) {
        entry->sample_rate = config.sample_rate;
    }
    return config.bit_rate;
}

// The entry's own count of channels is that of the stereo presentation.
void apply_truehd(Reader* reader, SampleEntry* entry) {
    uint8_t format[4];
    TrueHdInfo info;
    if (std::memcmp(entry->format, "mlpa", sizeof entry->format) == 0 &&
        read_truehd_format(read_box(reader, entry->audio_configuration, format), &info) &&
        info.channels != 0 && info.sample_rate != 0) {
        entry->channels = info.channels;
        entry->sample_rate = info.sample_rate;
    }
}

// ISO/IEC 14496-12, 12.2.4.
void apply_sampling_rate(Reader* reader, SampleEntry* entry) {
    const uint32_t rate = read_be32(reader, entry->sampling_rate, 4);
    if (rate != 0) {
        entry->sample_rate = rate;
    }
}

} // namespace

uint32_t apply_audio_config(Reader* reader, SampleEntry* entry) {
    apply_sampling_rate(reader, entry);
    apply_flac(reader, entry);
    apply_truehd(reader, entry);
    const uint32_t eac3_rate = apply_eac3(reader, entry);
    const uint32_t alac_rate = apply_alac(reader, entry);
    return eac3_rate != 0 ? eac3_rate : alac_rate;
}

} // namespace zat::mp4
