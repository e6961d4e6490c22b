#include "audio/dts_hd.h"

#include "audio/stream_facts.h"
#include "common/bytes/bits.h"

#include <bit>
#include <iterator>

namespace zat {

namespace {

// Bits of nuCoreExtensionMask.
constexpr uint32_t extension_xbr = 0x020;
constexpr uint32_t extension_xxch = 0x040;
constexpr uint32_t extension_x96 = 0x080;
constexpr uint32_t extension_lbr = 0x100;
constexpr uint32_t extension_xll = 0x200;

// What the descriptors of the assets depend on.
struct StaticFields {
    bool present = false;
    bool mixing = false;
    uint32_t mix_count = 0;
    uint32_t mix_channels[4] = {};
    uint32_t assets = 1;
};

// Speakers of a mask, whose pairs count twice.
uint32_t count_speakers(uint32_t mask) {
    constexpr uint32_t pairs = 0xAE66;
    return static_cast<uint32_t>(std::popcount(mask) + std::popcount(mask & pairs));
}

// 7.4.1, from bStaticFieldsPresent's fields on.
void read_static_fields(BitReader* reader, uint32_t substream_index, StaticFields* fields) {
    skip_bits(reader, 2 + 3);  // nuRefClockCode, nuExSSFrameDurationCode
    skip_optional(reader, 36); // bTimeStampFlag, nuTimeStamp, nLSB
    const uint32_t presentations = read_bits(reader, 3) + 1;
    fields->assets = read_bits(reader, 3) + 1;
    uint32_t active[8] = {};
    for (uint32_t i = 0; i < presentations; ++i) {
        active[i] = read_bits(reader, static_cast<int>(substream_index) + 1);
    }
    for (uint32_t i = 0; i < presentations; ++i) {
        skip_bits(reader, size_t{8} * static_cast<size_t>(std::popcount(active[i])));
    }
    fields->mixing = read_flag(reader); // bMixMetadataEnbl
    if (fields->mixing) {
        skip_bits(reader, 2); // nuMixMetadataAdjLevel
        const auto mask_bits = static_cast<int>((read_bits(reader, 2) + 1) * 4);
        fields->mix_count = read_bits(reader, 2) + 1;
        for (uint32_t i = 0; i < fields->mix_count; ++i) {
            fields->mix_channels[i] = count_speakers(read_bits(reader, mask_bits));
        }
    }
}

struct Embedded {
    bool stereo = false;
    bool six_channels = false;
};

// 7.5.1, the static metadata of an asset.
void read_static_metadata(BitReader* reader, DtsHdInfo* info, Embedded* embedded) {
    static constexpr uint32_t rates[] = {8000, 16000, 32000, 64000, 128000, 22050, 44100, 88200,
        176400, 352800, 12000, 24000, 48000, 96000, 192000, 384000};
    static_assert(std::size(rates) == 16);
    skip_optional(reader, 4);  // asset type
    skip_optional(reader, 24); // language
    if (read_flag(reader)) {   // additional text
        const uint32_t size = read_bits(reader, 10) + 1;
        skip_bits(reader, size_t{8} * size);
    }
    info->bits = read_bits(reader, 5) + 1;
    info->sample_rate = rates[read_bits(reader, 4)];
    info->channels = read_bits(reader, 8) + 1;
    if (!read_flag(reader)) { // bOne2OneMapChannels2Speakers
        skip_bits(reader, 3); // nuRepresentationType
        return;
    }
    embedded->stereo = info->channels > 2 && read_flag(reader);
    embedded->six_channels = info->channels > 6 && read_flag(reader);
    int mask_bits = 0;
    if (read_flag(reader)) {
        mask_bits = static_cast<int>((read_bits(reader, 2) + 1) * 4);
        info->speaker_mask = read_bits(reader, mask_bits);
    }
    const uint32_t sets = read_bits(reader, 3);
    uint32_t speakers[8] = {};
    for (uint32_t i = 0; i < sets; ++i) {
        speakers[i] = count_speakers(read_bits(reader, mask_bits));
    }
    for (uint32_t i = 0; i < sets; ++i) {
        const auto decoded = static_cast<int>(read_bits(reader, 5) + 1);
        for (uint32_t j = 0; j < speakers[i]; ++j) {
            const int coefficients = std::popcount(read_bits(reader, decoded));
            skip_bits(reader, size_t{5} * static_cast<size_t>(coefficients));
        }
    }
}

// 7.5.1, how the asset is mixed into others.
void skip_mixing(
    BitReader* reader, const StaticFields& fields, const Embedded& embedded, uint32_t channels) {
    skip_bits(reader, 1 + 6); // bExternalMixFlag, nuPostMixGainAdjCode
    skip_bits(reader, read_bits(reader, 2) == 3 ? 8 : 3);
    const bool separate = read_flag(reader); // bEnblPerChMainAudioScale
    for (uint32_t i = 0; i < fields.mix_count; ++i) {
        skip_bits(reader, size_t{6} * (separate ? fields.mix_channels[i] : 1));
    }
    const uint32_t mixed = channels + (embedded.six_channels ? 6 : 0) + (embedded.stereo ? 2 : 0);
    for (uint32_t i = 0; i < fields.mix_count; ++i) {
        const auto bits = static_cast<int>(fields.mix_channels[i]);
        for (uint32_t j = 0; j < mixed && !reader->failed; ++j) {
            const int coefficients = std::popcount(read_bits(reader, bits));
            skip_bits(reader, size_t{6} * static_cast<size_t>(coefficients));
        }
    }
}

DtsHdKind kind_of(uint32_t coding_mode, uint32_t extensions) {
    if (coding_mode == 1 || (coding_mode == 0 && (extensions & extension_xll) != 0)) {
        return DtsHdKind::master_audio;
    }
    if (coding_mode == 2 || (coding_mode == 0 && (extensions & extension_lbr) != 0)) {
        return DtsHdKind::express;
    }
    constexpr uint32_t high_resolution = extension_xbr | extension_xxch | extension_x96;
    return coding_mode == 0 && (extensions & high_resolution) != 0 ? DtsHdKind::high_resolution
                                                                   : DtsHdKind::unknown;
}

// 7.5.1
void read_asset(BitReader* reader, const StaticFields& fields, DtsHdInfo* info) {
    Embedded embedded;
    skip_bits(reader, 9 + 3); // nuAssetDescriptFsize, nuAssetIndex
    if (fields.present) {
        read_static_metadata(reader, info, &embedded);
    }
    const bool has_drc = read_flag(reader);
    skip_bits(reader, has_drc ? 8 : 0);
    skip_optional(reader, 5); // dialogue normalisation
    skip_bits(reader, has_drc && embedded.stereo ? 8 : 0);
    if (fields.mixing && read_flag(reader)) {
        skip_mixing(reader, fields, embedded, info->channels);
    }
    const uint32_t coding_mode = read_bits(reader, 2);
    const uint32_t extensions = coding_mode == 0 ? read_bits(reader, 12) : 0;
    if (!reader->failed) {
        info->kind = kind_of(coding_mode, extensions);
    }
}

// By the bits of nuSpkrActivityMask; 0 for speakers that the channel mask does not know.
uint32_t channel_mask(uint32_t speakers) {
    static constexpr uint32_t masks[] = {0x4, 0x3, 0x600, 0x8, 0x100, 0x5000, 0x30, 0x2000, 0x800,
        0xC0, 0, 0x600, 0, 0, 0x10000, 0x28000};
    uint32_t mask = 0;
    for (size_t bit = 0; bit < std::size(masks); ++bit) {
        mask |= (speakers >> bit & 1) != 0 ? masks[bit] : 0;
    }
    return mask;
}

} // namespace

bool dts_hd_info(Bytes substream, DtsHdInfo* info) {
    BitReader reader{.bytes = substream};
    if (read_bits(&reader, 32) != dts_hd_sync) {
        return false;
    }
    skip_bits(&reader, 8); // UserDefinedBits
    const uint32_t index = read_bits(&reader, 2);
    const bool wide = read_flag(&reader); // bHeaderSizeType
    skip_bits(&reader, wide ? 12 : 8);    // nuExtSSHeaderSize
    const int size_bits = wide ? 20 : 16;
    info->size = read_bits(&reader, size_bits) + 1;
    StaticFields fields;
    fields.present = read_flag(&reader);
    if (fields.present) {
        read_static_fields(&reader, index, &fields);
    }
    skip_bits(&reader, static_cast<size_t>(size_bits) * fields.assets); // nuAssetFsize
    read_asset(&reader, fields, info);
    return !reader.failed;
}

const char* dts_hd_name(DtsHdKind kind) {
    static constexpr const char* names[] = {"", "DTS-HD HRA", "DTS-HD MA", "DTS Express"};
    static_assert(std::size(names) == static_cast<size_t>(DtsHdKind::express) + 1);
    return names[static_cast<size_t>(kind)];
}

void dts_hd_facts(const DtsHdInfo& info, ZatStream* stream) {
    static constexpr const char* profiles[] = {"", "HD HRA", "HD MA", "Express"};
    copy_utf8(stream->codec, "DTS");
    if (info.kind != DtsHdKind::unknown) {
        copy_utf8(stream->profile, profiles[static_cast<size_t>(info.kind)]);
        stream->bit_rate = 0; // the core's is not the stream's
        stream->bit_rate_mode = 0;
    }
    if (info.sample_rate != 0) {
        stream->sample_rate = info.sample_rate;
    }
    if (info.channels != 0) {
        stream->channels = info.channels;
        set_layout(channel_mask(info.speaker_mask), stream);
    }
    if (info.kind == DtsHdKind::master_audio) {
        stream->flags |= ZAT_FLAG_LOSSLESS;
        stream->bit_depth = info.bits;
        stream->bit_rate_mode = ZAT_BIT_RATE_VARIABLE;
    }
}

} // namespace zat
