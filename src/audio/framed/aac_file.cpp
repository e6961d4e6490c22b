#include "audio/framed/aac_file.h"

#include "audio/aac.h"
#include "audio/adts.h"
#include "audio/audio_specific_config.h"
#include "audio/frame_search.h"
#include "audio/framed/framed_file.h"
#include "audio/latm.h"
#include "audio/stream_facts.h"
#include "common/bytes/bits.h"
#include "common/bytes/numbers.h"
#include "common/record/stream_lines.h"
#include "container/mp4.h"

namespace zat {

namespace {

// ADTS (ISO/IEC 13818-7, 6.2)

constexpr uint32_t adts_look = 8; // bytes, the header and the one behind it

bool read_adts_frame(Bytes bytes, AudioFrame* frame) {
    frame->size = audio_frame_size(FrameKind::adts, bytes);
    if (frame->size <= adts_header_size || aac_sample_rate(bytes[2] >> 2 & 0xF) == 0) {
        return false;
    }
    frame->samples = audio_frame_samples(FrameKind::adts, bytes);
    return true;
}

int64_t find_adts_frames(Bytes bytes) {
    return find_audio_frame(FrameKind::adts, bytes);
}

constexpr FrameFormat adts_frames = {adts_look, read_adts_frame, find_adts_frames};

int analyze_adts(FramedFile* framed, const Output& out) {
    constexpr uint32_t first_look = 128; // bytes, the longest program_config_element but its text
    constexpr uint32_t variable_fullness = 0x7FF;
    const Bytes start = framed_start(framed, first_look);
    AdtsHeader header;
    (void)ParseAdtsHeader(start, &header); // refuses one rate that frames may have
    ZatStream* facts = &framed->facts;
    adts_facts(header, start, facts);
    facts->estimated = 0;
    const uint32_t fullness = (start[5] & 0x1FU) << 6 | start[6] >> 2; // adts_buffer_fullness
    facts->bit_rate_mode =
        fullness == variable_fullness ? ZAT_BIT_RATE_VARIABLE : ZAT_BIT_RATE_CONSTANT;
    if (header.sample_rate == 0) {
        header.sample_rate = facts->sample_rate;
    }
    if (!count_framed_file(framed, adts_frames, out)) {
        return 1;
    }
    const FrameCount& count = framed->count;
    header.line_style = adts_version_and_profile;
    header.frame_length = static_cast<uint32_t>(count.bytes / count.frames);
    header.bitrate =
        clamp_to_integer<uint32_t>(static_cast<double>(count.bytes) * 8 * header.sample_rate /
                                   static_cast<double>(count.samples));
    header.estimated = (facts->estimated & ZAT_ESTIMATED_BIT_RATE) != 0;
    FormatAdtsLine(&header, framed->line);
    write_framed_file(framed, out);
    return 0;
}

// LOAS (ISO/IEC 14496-3, 1.7.2)

constexpr uint32_t loas_frame_samples = 1024; // of a sub-frame

// The samples are those of one sub-frame.
bool read_loas_frame(Bytes bytes, AudioFrame* frame) {
    *frame = {loas_frame_size(bytes), loas_frame_samples};
    return frame->size > loas_header_size;
}

constexpr FrameFormat loas_frames = {loas_header_size, read_loas_frame, find_loas_sync};

int analyze_latm(FramedFile* framed, const Output& out) {
    // Among so many bytes some frame has the configuration.
    constexpr uint32_t configuration_reach = 16384;
    uint8_t start[configuration_reach];
    const uint32_t length =
        read_some(&framed->reader, framed->stream, 0, start, configuration_reach);
    LatmInfo info;
    if (!latm_info({start, length}, &info)) {
        return 1;
    }
    latm_facts(info, &framed->facts);
    framed->facts.estimated = 0;
    // Frames count by the core's rate, which SBR may double.
    ZatStream* facts = &framed->facts;
    const uint32_t rate = facts->sample_rate;
    const uint32_t core_rate = info.config.sample_rate;
    facts->sample_rate = core_rate;
    if (!count_framed_file(framed, loas_frames, out, info.sub_frames)) {
        return 1;
    }
    facts->samples =
        clamp_to_integer<uint64_t>(static_cast<double>(facts->samples) * rate / core_rate);
    facts->sample_rate = rate;
    aac_stream_name(info.config, framed->line);
    append_bit_rate(framed->facts, framed->line);
    write_framed_file(framed, out);
    return 0;
}

// ADIF (ISO/IEC 13818-7, 6.1)

int analyze_adif(FramedFile* framed, const Output& out) {
    constexpr uint32_t header_reach = 512; // bytes
    constexpr size_t copyright_id_bits = 72;
    BitReader reader{.bytes = framed_start(framed, header_reach)};
    skip_bits(&reader, 32);           // adif_id
    if (read_bits(&reader, 1) != 0) { // copyright_id_present
        skip_bits(&reader, copyright_id_bits);
    }
    skip_bits(&reader, 2);                            // original_copy, home
    const bool variable = read_bits(&reader, 1) != 0; // bitstream_type
    const uint32_t bit_rate = read_bits(&reader, 23); // the peak of a variable one
    skip_bits(&reader, 4);                            // num_program_config_elements
    skip_bits(&reader, variable ? 0 : 20);            // adif_buffer_fullness
    const ProgramConfig program = read_program_config(&reader, 0);
    if (reader.failed || program.sample_rate == 0) {
        return 1;
    }
    const AudioSpecificConfig config = {.object_type = program.object_type,
        .sample_rate = program.sample_rate,
        .channel_configuration = program.channel_configuration,
        .channels = program.channels};
    ZatStream* facts = &framed->facts;
    aac_facts(config, facts);
    facts->bit_rate = bit_rate;
    facts->bit_rate_mode = variable ? ZAT_BIT_RATE_VARIABLE : ZAT_BIT_RATE_CONSTANT;
    complete_by_bytes(size_of(framed->stream), facts);
    facts->estimated |= variable && bit_rate != 0 ? uint32_t{ZAT_ESTIMATED_BIT_RATE} : 0;
    format_text(framed->line, line_size, "[AAC %s] %dHz %s", facts->profile,
        static_cast<int32_t>(facts->sample_rate), AacChannelName(config.channel_configuration));
    append_bit_rate(*facts, framed->line);
    write_framed_file(framed, out);
    return 0;
}

struct BareForm {
    const char* label;
    const char* format; // in the details
    bool (*matches)(Bytes start);
    int (*analyze)(FramedFile* framed, const Output& out);
};

template <bool (*read)(Bytes, AudioFrame*)>
bool begins_with_frame(Bytes start) {
    AudioFrame frame;
    return read(start, &frame);
}

constexpr BareForm bare_forms[] = {
    {"[ADIF]", "ADIF", [](Bytes start) { return has_at(start, 0, "ADIF"); }, analyze_adif},
    {"[ADTS]", "ADTS", begins_with_frame<read_adts_frame>, analyze_adts},
    {"[LATM]", "LATM", begins_with_frame<read_loas_frame>, analyze_latm},
};

// Returns the analyser's result, or -1 for a file of boxes. A function of its own, so that these
// buffers have left the stack when AnalyzeMp4File brings its own.
int analyze_bare_stream(FileRecord* file, const Output& out) {
    FramedFile framed;
    open_framed_file(&framed, file);
    const Bytes start = framed_start(&framed, adts_look);
    for (const BareForm& form : bare_forms) {
        if (form.matches(start)) {
            name_framed_file(out, form.label, form.format);
            return form.analyze(&framed, out);
        }
    }
    return -1;
}

} // namespace

int AnalyzeAacFile(FileRecord* file, const Output& out) {
    const int result = analyze_bare_stream(file, out);
    return result >= 0 ? result : AnalyzeMp4File(file, out);
}

} // namespace zat
