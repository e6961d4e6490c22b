// The parsers and converters that few files reach, one by one: the first byte of the input chooses
// from a table. Seeds count on its order: new rows go to its end.
#include "memory_file_access.h"
#include "sound.h"
#include "target.h"

#include "audio/ac3.h"
#include "audio/ac3_config.h"
#include "audio/adts.h"
#include "audio/alac.h"
#include "audio/audio_specific_config.h"
#include "audio/dts.h"
#include "audio/dts_hd.h"
#include "audio/eac3.h"
#include "audio/es_descriptor.h"
#include "audio/first_frame.h"
#include "audio/flac_streaminfo.h"
#include "audio/latm.h"
#include "audio/lossless/flac_frame.h"
#include "audio/lpcm.h"
#include "audio/midi/midi_track.h"
#include "audio/mpeg_audio.h"
#include "audio/opus.h"
#include "audio/speex.h"
#include "audio/stream_facts.h"
#include "audio/truehd.h"
#include "audio/vorbis.h"
#include "audio/wave_format.h"
#include "common/catalogue/codec_catalogue.h"
#include "common/record/details.h"
#include "common/record/stream_lines.h"
#include "common/tags/info_list.h"
#include "common/tags/tag_texts.h"
#include "common/text/text_codes.h"
#include "picture/bmp_file.h"
#include "picture/gif_file.h"
#include "picture/jpeg_file.h"
#include "text/arib_text.h"
#include "text/dvb_text.h"
#include "video/av1_config.h"
#include "video/avc_config.h"
#include "video/avc_sps.h"
#include "video/bitmap_info.h"
#include "video/divx_probe.h"
#include "video/dolby_vision.h"
#include "video/dv.h"
#include "video/encoder_message.h"
#include "video/hevc_sps.h"
#include "video/mjpeg.h"
#include "video/mpeg4_encoder.h"
#include "video/mpeg4_vol.h"
#include "video/mpeg_video_headers.h"
#include "video/stream_facts.h"
#include "video/theora.h"
#include "video/vc1_sequence.h"
#include "video/video_kind.h"
#include "video/vp8.h"
#include "video/vp9.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

namespace {

using namespace zat;
using namespace zat::test;

using Line = char[line_size];

void require_line(const Line& line) {
    require(std::memchr(line, '\0', sizeof line) != nullptr, "a line has no terminator");
}

// Facts as the details would have them, and the line that is made from them.
void require_facts(const ZatStream& stream) {
    static ZatDetails details;
    details.stream_count = 0; // the rest is as it was: nothing but the first slot is written
    add_stream(&details, stream);
    Line line;
    if (stream.kind == ZAT_STREAM_VIDEO) {
        format_video_line(details.streams[0], {}, line);
    } else {
        format_audio_line(details.streams[0], {}, line);
    }
    require_line(line);
    require_sound(details.streams[0]);
}

ZatStream video() {
    return new_stream(ZAT_STREAM_VIDEO);
}

ZatStream audio() {
    return new_stream(ZAT_STREAM_AUDIO);
}

// Video.

void avc_sps(Bytes bytes) {
    for (const AvcRules rules : {AvcRules::legacy, AvcRules::standard}) {
        AvcSequenceInfo info;
        AvcParseState state;
        ParseAvcSequenceParameterSet(
            bytes.data(), static_cast<uint32_t>(bytes.size()), &info, &state, rules);
        if (rules == AvcRules::standard && state.error == 0) {
            ZatStream stream = video();
            avc_facts(info, &stream);
            char text[video_codec_size];
            avc_codec_text(info, text);
            require_facts(stream);
        }
    }
}

void avc_stream(Bytes bytes) {
    AvcSequenceInfo info;
    ZatStream stream = video();
    if (find_avc_sps(bytes, &info) == 0) {
        avc_facts(info, &stream);
    }
    set_message_encoder(bytes, &stream);
    require_facts(stream);
}

void avc_config(Bytes bytes) {
    AvcConfig config;
    if (read_avc_config(bytes, &config)) {
        avc_sps(config.first_sps);
    }
}

void hevc(Bytes bytes) {
    for (const auto parse : {parse_hevc_sps, parse_hevc_config, find_hevc_sps}) {
        HevcSequence sequence;
        parse(bytes, &sequence);
        ZatStream stream = video();
        set_hevc_facts(&stream, sequence);
        char text[hevc_text_size];
        hevc_codec_text(sequence, text);
        require_facts(stream);
    }
}

void mpeg4_stream(Bytes bytes) {
    Mpeg4Headers headers;
    ZatStream stream = video();
    if (find_mpeg4_headers(bytes, &headers) == 0) {
        mpeg4_facts(headers, &stream);
        char text[video_codec_size];
        mpeg4_codec_text(headers, text);
    }
    char name[mpeg4_encoder_size] = "";
    name_mpeg4_encode(bytes, bytes, reinterpret_cast<const uint8_t*>("DIVX"), name, &stream);
    require_facts(stream);
    DivxProbe probe;
    find_divx_strings(bytes, &probe);
    FindDivxVolAspect(bytes, &probe);
    Mpeg4AspectName(&probe);
    ComposeDivxCodecName(&probe);
}

void mpeg_video(Bytes bytes) {
    MpegVideoHeaders headers;
    if (find_mpeg_video_headers(bytes, &headers) == 0) {
        ZatStream stream = video();
        mpeg_video_facts(headers, &stream);
        require_facts(stream);
        for (const MpegVideoVersion version : {MpegVideoVersion::mpeg1, MpegVideoVersion::mpeg2}) {
            Line line;
            mpeg_video_line(&headers.header, &headers.extension, version, line);
            named_video_line(
                &headers.header, &headers.extension, version, VariableRate::as_word, line);
            require_line(line);
        }
    }
    Line line;
    mpeg2_video_line(bytes, line);
    require_line(line);
}

void vc1(Bytes bytes) {
    Vc1Sequence sequence;
    if (find_vc1_sequence(bytes, &sequence) != 0) {
        read_vc1_struct_c(&sequence, bytes);
    }
    ZatStream stream = video();
    vc1_facts(sequence, &stream);
    char text[video_codec_size];
    vc1_codec_text(sequence, text);
    require_facts(stream);
}

void video_kind(Bytes bytes) {
    (void)guess_video_kind(bytes);
    ZatStream stream = video();
    set_dolby_vision(&stream, bytes);
    require_facts(stream);
}

void vp8(Bytes bytes) {
    Vp8Frame frame;
    if (parse_vp8_frame(bytes, &frame)) {
        ZatStream stream = video();
        set_vp8_facts(&stream, frame);
        require_facts(stream);
    }
}

void vp9(Bytes bytes) {
    for (int form = 0; form < 3; ++form) {
        Vp9Sequence sequence;
        if (form == 0) {
            parse_vp9_frame(bytes, &sequence);
        } else if (form == 1) {
            parse_vp9_config(bytes, &sequence);
        } else {
            parse_vp9_features(bytes, &sequence);
        }
        char text[vp9_text_size];
        vp9_codec_text(sequence, text);
        ZatStream stream = video();
        set_vp9_facts(&stream, sequence);
        require_facts(stream);
    }
}

void av1(Bytes bytes) {
    for (const auto parse : {parse_av1_units, parse_av1_config}) {
        Av1Sequence sequence;
        parse(bytes, &sequence);
        char text[av1_text_size];
        av1_codec_text(sequence, text);
        ZatStream stream = video();
        set_av1_facts(&stream, sequence);
        require_facts(stream);
    }
}

void theora(Bytes bytes) {
    TheoraHead head;
    if (read_theora_head(bytes, &head)) {
        Line text;
        theora_codec_text(head, text, sizeof text);
        ZatStream stream = video();
        set_theora_facts(head, &stream);
        require_facts(stream);
        for (const int64_t granule : {INT64_MIN, int64_t{-1}, int64_t{12345}, INT64_MAX}) {
            (void)theora_frames(head, granule);
        }
    }
}

void mjpeg(Bytes bytes) {
    MjpegInfo info;
    read_mjpeg_info(bytes, &info);
}

void dv(Bytes bytes) {
    DvInfo info;
    if (read_dv_info(bytes, &info)) {
        ZatStream pictures = video();
        set_dv_facts(info, &pictures);
        require_facts(pictures);
        ZatStream sound = audio();
        set_dv_audio_facts(info, &sound);
        require_facts(sound);
    }
}

void bitmap(Bytes bytes) {
    BitmapInfo info;
    if (read_bitmap_info(bytes, &info)) {
        (void)video_family(info.compression);
        (void)raw_pixel_bits(info);
        Line name;
        video_code_name(info.compression, name, sizeof name);
        require_line(name);
    }
}

// Audio.

template <class Info>
using LineWriter = void (*)(const Info* info, Line& line);

// The facts of a codec's headers, and the line that its own files have.
template <class Info>
void require_codec(
    const Info& info, void (*set_facts)(const Info&, ZatStream*), LineWriter<Info> write_line) {
    ZatStream stream = audio();
    set_facts(info, &stream);
    require_facts(stream);
    Line line;
    write_line(&info, line);
    require_line(line);
}

void name_aac(const AudioSpecificConfig* config, Line& line) {
    aac_stream_name(*config, line);
}

void audio_specific_config(Bytes bytes) {
    AudioSpecificConfig config;
    if (read_audio_specific_config(bytes, &config)) {
        require_codec(config, aac_facts, name_aac);
    }
}

void latm(Bytes bytes) {
    const int64_t at = find_loas_sync(bytes);
    LatmInfo info;
    if (latm_info(bytes.subspan(at < 0 ? 0 : static_cast<size_t>(at)), &info)) {
        require_codec(info, latm_facts, latm_line);
    }
}

// What the frames of several codecs share: facts and a line by the stream's start.
void first_frames(Bytes bytes) {
    for (const FrameDescriber describe : {describe_mpeg_audio_frame, describe_ac3_frame,
             describe_eac3_frame, describe_dts_frame, describe_adts_frame, describe_loas_frame}) {
        ZatStream stream = audio();
        Line line = "";
        if (describe(bytes, &stream, line)) {
            require_facts(stream);
            require_line(line);
        }
    }
}

void ac3(Bytes bytes) {
    Ac3Info info;
    if (ac3_info(bytes, &info) == 0) {
        require_codec(info, ac3_facts, ac3_line);
        require_codec(info, ac3_facts, truehd_line);
    }
}

void eac3(Bytes bytes) {
    Eac3Info info;
    if (eac3_info(bytes, &info)) {
        require_codec(info, eac3_facts, eac3_line);
    }
}

void ac3_configs(Bytes bytes) {
    for (const auto read : {read_ac3_config, read_eac3_config}) {
        Ac3Config config;
        read(bytes, &config);
        (void)ac3_config_mask(config);
    }
}

void dts(Bytes bytes) {
    DtsInfo info;
    if (dts_info(bytes, &info) == 0) {
        require_codec(info, dts_facts, dts_line);
    }
}

void dts_hd(Bytes bytes) {
    DtsHdInfo info;
    dts_hd_info(bytes, &info);
    ZatStream stream = audio();
    dts_hd_facts(info, &stream);
    require_facts(stream);
}

void truehd(Bytes bytes) {
    TrueHdInfo info;
    if (truehd_info(bytes, &info) == 0) {
        ZatStream stream = audio();
        truehd_facts(info, &stream);
        require_facts(stream);
        Line line;
        named_truehd_line(info, "TrueHD", line);
        require_line(line);
    }
    MlpInfo mlp;
    if (mlp_info(bytes, &mlp)) {
        ZatStream stream = audio();
        mlp_facts(mlp, &stream);
        require_facts(stream);
    }
}

void lpcm(Bytes bytes) {
    LpcmInfo dvd;
    dvd_lpcm_info(byte_at(bytes, 0), &dvd);
    LpcmInfo bd;
    bd_lpcm_info(bytes, &bd);
    ZatStream stream = audio();
    dvd_lpcm_facts(dvd, &stream);
    require_facts(stream);
    stream = audio();
    bd_lpcm_facts(bd, &stream);
    require_facts(stream);
    Line line;
    dvd_lpcm_line(&dvd, line);
    bd_lpcm_line(&bd, line);
    require_line(line);
}

void vorbis(Bytes bytes) {
    VorbisInfo info;
    vorbis_info(bytes, &info);
    ZatStream stream = audio();
    vorbis_facts(info, &stream);
    require_facts(stream);
    Line line;
    FormatVorbisLine(&info, vorbis_bitrate(&info), line);
    require_line(line);
}

void opus(Bytes bytes) {
    OpusHead head;
    if (read_opus_head(bytes, &head)) {
        ZatStream stream = audio();
        set_opus_facts(head.channels, head.mapping_family, &stream);
        require_facts(stream);
    }
    read_opus_record(bytes, &head);
    (void)opus_packet_samples(bytes);
}

void speex(Bytes bytes) {
    SpeexHead head;
    if (read_speex_head(bytes, &head)) {
        Line text;
        speex_codec_text(head, text, sizeof text);
        require_line(text);
        ZatStream stream = audio();
        set_speex_facts(head, &stream);
        require_facts(stream);
    }
}

void lossless_configs(Bytes bytes) {
    FlacStreamInfo info;
    read_flac_streaminfo(bytes, &info);
    read_flac_streaminfo(flac_streaminfo_of_blocks(bytes), &info);
    FlacFrame frame;
    read_flac_frame(bytes, &frame);
    AlacConfig alac;
    read_alac_config(bytes, &alac);
}

void es_descriptor(Bytes bytes) {
    EsDescriptor descriptor;
    if (read_es_descriptor(bytes, &descriptor)) {
        audio_specific_config(descriptor.specific_info);
    }
}

void wave_format(Bytes bytes) {
    const WaveFormat format = read_wave_format(bytes);
    (void)sample_block_size(format);
    ZatStream stream = audio();
    wave_facts(format, &stream);
    complete_by_bytes(1'000'000, &stream);
    require_facts(stream);
}

// What reads a file: the bytes are the file.

struct OpenFile {
    FileRecord file;
    Reader reader;

    explicit OpenFile(Bytes bytes) {
        memory_files = {};
        memory_files.media = bytes;
        FileOpen(&file, "input");
        reader_open(&reader, &file);
    }
};

void midi_track(Bytes bytes) {
    OpenFile open(bytes);
    static MidiTempoMap tempos;
    tempos = {};
    MidiTrack track;
    walk_midi_track(&open.reader, whole_file(&open.reader), &tempos, &track);
    const double seconds = midi_seconds(tempos, track.ticks, 96);
    require(std::isfinite(seconds) && seconds >= 0, "the time of a track");
}

void require_tag_texts(const TagTexts& texts) {
    static InfoRecord record;
    static ZatDetails details;
    record = {};
    mark_host_areas(&record);
    details = {};
    details.size = sizeof details;
    write_artist_and_title(texts, {&record, &details});
    require_sound(record);
    require_sound(details);
}

void tag_texts(Bytes bytes) {
    OpenFile open(bytes);
    const Span all = whole_file(&open.reader);
    for (const auto read : {read_id3v2_texts, read_ape_texts, read_id3v1_texts}) {
        TagTexts texts;
        if (read != read_id3v1_texts || bytes.size() == 128) {
            read(&open.reader, all, &texts);
        }
        require_tag_texts(texts);
    }
}

void comments_and_info_list(Bytes bytes) {
    OpenFile open(bytes);
    for (const bool in_memory : {true, false}) {
        VorbisComments comments;
        if (in_memory) {
            open_comments(&comments, bytes);
        } else {
            open_comments(&comments, &open.reader, whole_file(&open.reader));
        }
        TagTexts texts;
        read_comment_texts(&comments, &texts);
        require_tag_texts(texts);
    }
    TagTexts texts;
    TagText writer = "";
    read_info_list(&open.reader, whole_file(&open.reader), &texts, writer);
    require_tag_texts(texts);
}

void pictures(Bytes bytes) {
    static ZatDetails details;
    static InfoRecord record;
    for (const auto analyse : {AnalyzeJpegFile, AnalyzeGifFile, AnalyzeBmpFile}) {
        OpenFile open(bytes);
        record = {};
        mark_host_areas(&record);
        record.file_size = bytes.size();
        details = {};
        details.size = sizeof details;
        analyse(&open.file, {&record, &details});
        require_sound(record);
        require_sound(details);
    }
}

void catalogue(Bytes bytes) {
    memory_files = {};
    memory_files.catalogue = bytes;
    static constexpr std::string_view sections[] = {
        "[AVI-Audio]", "[WAV-EXT]", "[QT-BRAND]", "[QT-VIDEO]", "[AVI-Video]"};
    static constexpr std::string_view codes[] = {"0055", "isom", "avc1", "XVID", ""};
    for (size_t i = 0; i < std::size(sections); ++i) {
        CodecQuery query{};
        copy_text(query.file_path, "codec.ini");
        copy_text(query.section, sections[i]);
        copy_text(query.key, codes[i]);
        CodecLookup(&query);
        require(std::memchr(query.result, '\0', sizeof query.result) != nullptr, "a name");
        Line name;
        codec_name(sections[i], codes[i], codes[i], name, sizeof name);
        require_line(name);
    }
    CodecKey keys[2] = {{"0x0011", false, ""}, {"0x1F", false, ""}};
    codec_names("[MPEG2-TS-PID]", keys);
    for (const CodecKey& key : keys) {
        require(std::memchr(key.name, '\0', sizeof key.name) != nullptr, "a name");
    }
    require(memory_files.open_files == 0, "the catalogue was left open");
}

// Texts: the first byte says how many bytes the buffer has.

struct TextCase {
    Bytes text;
    size_t room; // 1 to 256
};

TextCase text_case(Bytes bytes) {
    return bytes.empty() ? TextCase{bytes, 256}
                         : TextCase{bytes.subspan(1), bytes.front() + size_t{1}};
}

void broadcast_texts(Bytes bytes) {
    char out[256];
    const auto [text, room] = text_case(bytes);
    require_sound_text(out, arib_to_utf8(text, out, room), room, true);
    require_sound_text(out, arib_to_cp932(text, out, room), room, false);
    for (const auto table : {DvbDefault::iso6937, DvbDefault::iso8859_15}) {
        require_sound_text(out, dvb_to_utf8(text, table, out, room), room, true);
    }
    (void)looks_like_iso8859_15(text);
}

void text_codes(Bytes bytes) {
    char out[256];
    const auto [text, room] = text_case(bytes);
    for (const auto convert : {unknown_to_utf8, claimed_utf8_to_utf8, cp932_to_utf8}) {
        char line[256];
        const size_t length = convert(text_of(text), out, room);
        require_sound_text(out, length, room, true);
        require_sound_text(line, utf8_to_cp932({out, length}, line, room), room, false);
    }
    for (const auto convert : {utf16le_to_utf8, utf16be_to_utf8}) {
        require_sound_text(out, convert(text, out, room), room, true);
    }
}

// A record as a host may fill it.
void report(Bytes bytes) {
    static InfoRecord record;
    record = {};
    // Its beginning, and its end, where the counts and figures of the streams are.
    const size_t half = std::min(bytes.size() / 2, sizeof record / 2);
    auto* fields = reinterpret_cast<uint8_t*>(&record);
    std::copy_n(bytes.begin(), half, fields + offsetof(InfoRecord, type_code));
    std::copy_n(bytes.begin() + static_cast<ptrdiff_t>(half), half, fields + sizeof record - half);
    require_sound_report(record);
    require_sound_short_report(record);
}

constexpr void (*parts[])(Bytes) = {
    avc_sps,
    avc_stream,
    avc_config,
    hevc,
    mpeg4_stream,
    mpeg_video,
    vc1,
    video_kind,
    vp8,
    vp9,
    av1,
    theora,
    mjpeg,
    dv,
    bitmap,
    audio_specific_config,
    latm,
    first_frames,
    ac3,
    eac3,
    ac3_configs,
    dts,
    dts_hd,
    truehd,
    lpcm,
    vorbis,
    opus,
    speex,
    lossless_configs,
    es_descriptor,
    wave_format,
    midi_track,
    tag_texts,
    comments_and_info_list,
    pictures,
    catalogue,
    broadcast_texts,
    text_codes,
    report,
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    memory_files = {}; // no catalogue
    parts[data[0] % std::size(parts)]({data + 1, size - 1});
    return 0;
}
