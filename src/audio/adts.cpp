#include "audio/adts.h"

#include "audio/aac.h"
#include "common/bytes/bits.h"
#include "common/text/text.h"

#include <iterator>

namespace zat {

namespace {

// ISO/IEC 13818-7, table 35, but for the 22500 of index 7, which this line has always shown, and
// the rate of index 12, which MPEG-2 lacks; 0 for the rest.
uint32_t adts_sample_rate(uint32_t index) {
    static constexpr uint32_t rates[] = {
        96000, 88200, 64000, 48000, 44100, 32000, 24000, 22500, 16000, 12000, 11025, 8000};
    static_assert(std::size(rates) == 12);
    return index < std::size(rates) ? rates[index] : 0;
}

const char* version_name(uint32_t version_flag) {
    return version_flag == 0 ? "MPEG4" : "MPEG2";
}

constexpr size_t profile_size = 32;

// ISO/IEC 13818-7, table 31, and the object types of ISO/IEC 14496-3.
void profile_name(const AdtsHeader* header, char (&out)[profile_size]) {
    static constexpr const char* mpeg4[] = {"AAC_MAIN", "AAC_LC", "AAC_SSR", "AAC_LTP"};
    static_assert(std::size(mpeg4) == 4);
    static constexpr const char* mpeg2[] = {
        "Main Profile", "LC", "SSR", "(Reverved)", nullptr, "HE(LC)"};
    static_assert(std::size(mpeg2) == 6);
    const uint32_t profile = header->profile;
    if (header->version_flag == 0) {
        copy_text(out, profile < std::size(mpeg4) ? mpeg4[profile] : "");
    } else if (profile < std::size(mpeg2) && mpeg2[profile] != nullptr) {
        copy_text(out, mpeg2[profile]);
    } else {
        format_text(out, profile_size, "Unknown(%d)", profile);
    }
}

} // namespace

bool IsAdtsSync(const uint8_t* bytes) {
    return bytes[0] == 0xFF && (bytes[1] & 0xF6) == 0xF0; // syncword and layer 0
}

int ParseAdtsHeader(Bytes frame, AdtsHeader* header) {
    constexpr int samples_shift = 10; // a frame has 1024 samples
    uint8_t bytes[adts_header_size];
    copy_padded(frame, bytes);
    BitReader reader{bytes};

    // adts_fixed_header
    skip_bits(&reader, 12); // syncword
    header->version_flag = read_bits(&reader, 1);
    skip_bits(&reader, 2); // layer
    skip_bits(&reader, 1); // protection_absent
    header->profile = read_bits(&reader, 2);
    header->sampling_frequency_index = read_bits(&reader, 4);
    header->sample_rate = adts_sample_rate(header->sampling_frequency_index);
    skip_bits(&reader, 1); // private_bit
    header->channel_configuration = read_bits(&reader, 3);
    skip_bits(&reader, 1); // original_copy
    skip_bits(&reader, 1); // home

    // adts_variable_header
    skip_bits(&reader, 1); // copyright_identification_bit
    skip_bits(&reader, 1); // copyright_identification_start
    header->frame_length = read_bits(&reader, 13);

    const uint64_t bits = uint64_t{header->frame_length} * 8;
    header->bitrate = static_cast<uint32_t>(bits * header->sample_rate >> samples_shift);
    return header->sample_rate == 0 ? -1 : 0;
}

void FormatAdtsLine(const AdtsHeader* header, char (&out)[line_size]) {
    char profile[profile_size] = "";
    profile_name(header, profile);
    const char* version = version_name(header->version_flag);
    switch (header->line_style) {
    case adts_version_and_profile:
        format_text(out, line_size, "[%s-AAC %s]", version, profile);
        break;
    case adts_profile:
        format_text(out, line_size, "[AAC %s]", profile);
        break;
    case adts_version:
        format_text(out, line_size, "[%s-AAC]", version);
        break;
    default:
        copy_text(out, "[AAC]");
        break;
    }
    char facts[128];
    const char* mark = header->estimated ? "~" : "";
    format_text(facts, sizeof facts, " %dHz %s %s%.3fkbps %s%dByte", header->sample_rate,
        AacChannelName(header->channel_configuration), mark, header->bitrate * 0.001, mark,
        header->frame_length);
    append_text(out, facts);
}

} // namespace zat
