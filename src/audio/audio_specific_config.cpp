#include "audio/audio_specific_config.h"

#include <iterator>

namespace zat {

namespace {

constexpr uint32_t explicit_rate = 15;
constexpr uint32_t escaped_object_type = 31;
constexpr uint32_t object_type_scalable = 6;
constexpr uint32_t object_type_er_scalable = 20;
constexpr uint32_t object_type_er_twinvq = 21;
constexpr uint32_t object_type_er_bsac = 22;
constexpr uint32_t object_type_er_eld = 39;
constexpr uint32_t ps_sync_extension = 0x548;

// GASpecificConfig belongs to these types, the flags of error resilience to those from 17 on.
constexpr bool is_general_audio(uint32_t type) {
    return (type >= 1 && type <= 7 && type != object_type_sbr) || type == 17 ||
           (type >= 19 && type <= 23);
}

constexpr bool is_error_resilient(uint32_t type) {
    return type == 17 || (type >= 19 && type <= 27) || type == object_type_er_eld;
}

uint32_t read_object_type(BitReader* reader) {
    const uint32_t type = read_bits(reader, 5);
    return type == escaped_object_type ? 32 + read_bits(reader, 6) : type;
}

uint32_t read_rate(BitReader* reader) {
    const uint32_t index = read_bits(reader, 4);
    return index == explicit_rate ? read_bits(reader, 24) : aac_sample_rate(index);
}

// GASpecificConfig (4.4.1).
void read_general_audio(BitReader* reader, size_t start, AudioSpecificConfig* config) {
    const uint32_t type = config->object_type;
    skip_bits(reader, 1);            // frameLengthFlag
    if (read_bits(reader, 1) != 0) { // dependsOnCoreCoder
        skip_bits(reader, 14);       // coreCoderDelay
    }
    const bool extension = read_bits(reader, 1) != 0;
    if (config->channel_configuration == 0) {
        config->channels = read_program_config(reader, start).channels;
    }
    if (type == object_type_scalable || type == object_type_er_scalable) {
        skip_bits(reader, 3); // layerNr
    }
    if (extension) {
        if (type == object_type_er_bsac) {
            skip_bits(reader, 5 + 11); // numOfSubFrame, layer_length
        } else if (is_error_resilient(type) && type != object_type_er_twinvq) {
            skip_bits(reader, 3);
        }
        skip_bits(reader, 1); // extensionFlag3
    }
}

// UsacConfig (ISO/IEC 23003-3, 5.2), as far as rate and channels stand.
void read_usac(BitReader* reader, AudioSpecificConfig* config) {
    static constexpr uint32_t further_rates[] = {57600, 51200, 40000, 38400, 34150, 28800, 25600,
        20000, 19200, 17075, 14400, 12800, 9600}; // from index 15 on
    const uint32_t index = read_bits(reader, 5);
    if (index == 31) {
        config->sample_rate = read_bits(reader, 24);
    } else if (index >= 15 && index - 15 < std::size(further_rates)) {
        config->sample_rate = further_rates[index - 15];
    } else if (index < 15) {
        config->sample_rate = aac_sample_rate(index);
    }
    skip_bits(reader, 3); // coreSbrFrameLengthIndex
    const uint32_t channel_configuration = read_bits(reader, 5);
    if (channel_configuration != 0) {
        config->channel_configuration = channel_configuration;
        config->channels = aac_channels(channel_configuration);
    } else if (const uint32_t channels = read_bits(reader, 5); channels != 31) { // numOutChannels
        config->channels = channels;
    }
}

// Low delay SBR of ELDSpecificConfig (4.6.20.3).
void read_eld(BitReader* reader, AudioSpecificConfig* config) {
    skip_bits(reader, 1 + 3);        // frameLengthFlag, resilience flags
    if (read_bits(reader, 1) != 0) { // ldSbrPresentFlag
        const bool doubles = read_bits(reader, 1) != 0;
        config->sbr = true;
        config->sbr_sample_rate = config->sample_rate * (doubles ? 2 : 1);
    }
}

// The extension that older decoders do not see, behind the configuration.
void read_sync_extension(BitReader* reader, size_t end, AudioSpecificConfig* config) {
    const auto left = [&] { return end > reader->position ? end - reader->position : 0; };
    if (config->sbr || left() < 16 || read_bits(reader, 11) != sbr_sync_extension ||
        read_object_type(reader) != object_type_sbr || read_bits(reader, 1) == 0) {
        return;
    }
    config->sbr = true;
    config->sbr_sample_rate = read_rate(reader);
    if (left() >= 12 && read_bits(reader, 11) == ps_sync_extension) {
        config->ps = read_bits(reader, 1) != 0;
    }
}

struct ChannelPlaces {
    uint32_t front = 0;
    uint32_t side = 0;
    uint32_t back = 0;
    uint32_t lfe = 0;

    bool operator==(const ChannelPlaces&) const = default;
};

// The channelConfiguration (table 1.19) of channels at these places; 0 when there is none.
uint32_t configuration_of(const ChannelPlaces& places) {
    static constexpr struct {
        ChannelPlaces places;
        uint32_t configuration;
    } rows[] = {{{1, 0, 0, 0}, 1}, {{2, 0, 0, 0}, 2}, {{3, 0, 0, 0}, 3}, {{3, 0, 1, 0}, 4},
        {{3, 0, 2, 0}, 5}, {{3, 2, 0, 0}, 5}, {{3, 0, 2, 1}, 6}, {{3, 2, 0, 1}, 6},
        {{5, 0, 2, 1}, 7}, {{5, 2, 0, 1}, 7}};
    for (const auto& row : rows) {
        if (row.places == places) {
            return row.configuration;
        }
    }
    return 0;
}

} // namespace

ProgramConfig read_program_config(BitReader* reader, size_t start) {
    ProgramConfig config;
    skip_bits(reader, 4); // element_instance_tag
    config.object_type = read_bits(reader, 2) + 1;
    config.sample_rate = aac_sample_rate(read_bits(reader, 4));
    const uint32_t elements[] = {
        read_bits(reader, 4), read_bits(reader, 4), read_bits(reader, 4)}; // front, side, back
    const uint32_t lfe = read_bits(reader, 2);
    const uint32_t associated = read_bits(reader, 3);
    const uint32_t coupling = read_bits(reader, 4);
    for (const size_t mixdown_bits : {4, 4, 3}) { // mono, stereo, matrix
        if (read_bits(reader, 1) != 0) {
            skip_bits(reader, mixdown_bits);
        }
    }
    ChannelPlaces places = {.lfe = lfe};
    uint32_t* const channels[] = {&places.front, &places.side, &places.back};
    for (size_t place = 0; place < std::size(elements); ++place) {
        for (uint32_t i = 0; i < elements[place]; ++i) {
            *channels[place] += 1 + read_bits(reader, 1); // is_cpe
            skip_bits(reader, 4);
        }
    }
    config.channels = places.front + places.side + places.back + lfe;
    config.channel_configuration = configuration_of(places);
    skip_bits(reader, size_t{4} * (lfe + associated) + size_t{5} * coupling);
    skip_bits(reader, (8 - (reader->position - start) % 8) % 8);
    const uint32_t comment = read_bits(reader, 8);
    skip_bits(reader, size_t{8} * comment);
    return config;
}

uint32_t aac_sample_rate(uint32_t index) {
    static constexpr uint32_t rates[] = {
        96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000, 7350};
    return index < std::size(rates) ? rates[index] : 0;
}

uint32_t aac_channels(uint32_t channel_configuration) {
    static constexpr uint8_t channels[] = {0, 1, 2, 3, 4, 5, 6, 8, 0, 0, 0, 7, 8, 24, 8};
    return channel_configuration < std::size(channels) ? channels[channel_configuration] : 0;
}

bool read_audio_specific_config(BitReader* reader, size_t end, AudioSpecificConfig* config) {
    const size_t start = reader->position;
    config->object_type = read_object_type(reader);
    config->sample_rate = read_rate(reader);
    config->channel_configuration = read_bits(reader, 4);
    config->channels = aac_channels(config->channel_configuration);
    if (config->object_type == object_type_sbr || config->object_type == object_type_ps) {
        config->ps = config->object_type == object_type_ps;
        config->sbr = true;
        config->sbr_sample_rate = read_rate(reader);
        config->object_type = read_object_type(reader);
        if (config->object_type == object_type_er_bsac) {
            skip_bits(reader, 4); // extensionChannelConfiguration
        }
    }
    if (reader->failed) {
        *config = {};
        return false;
    }
    bool passed = true;
    if (is_general_audio(config->object_type)) {
        read_general_audio(reader, start, config);
    } else if (config->object_type == object_type_usac) {
        read_usac(reader, config);
        passed = false;
    } else if (config->object_type == object_type_er_eld) {
        read_eld(reader, config);
        passed = false;
    } else {
        passed = false;
    }
    if (passed && is_error_resilient(config->object_type)) {
        passed = read_bits(reader, 2) < 2; // epConfig
    }
    if (passed && end != 0) {
        read_sync_extension(reader, end, config);
        if (reader->position < end) {
            skip_bits(reader, end - reader->position);
        }
    }
    return passed && !reader->failed;
}

bool read_audio_specific_config(Bytes bytes, AudioSpecificConfig* config) {
    BitReader reader{.bytes = bytes};
    return read_audio_specific_config(&reader, bytes.size() * 8, config);
}

} // namespace zat
