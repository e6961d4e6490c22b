#include "container/mpeg_ts/stream_types.h"

#include "common/bytes/tables.h"
#include "common/text/fourcc.h"
#include "common/text/text.h"
#include "container/mpeg_descriptors.h"

#include <iterator>

namespace zat::ts {

namespace {

constexpr uint32_t hdmv = fourcc("HDMV");

struct TypeRow {
    uint8_t type;
    Codec codec;
    uint32_t flags = 0;
};

// stream_type (ISO/IEC 13818-1, table 2-34), and those above 7F in common use: ATSC A/53, SCTE 54,
// AVS (GB/T 20090), sample encryption of HTTP Live Streaming.
constexpr TypeRow types[] = {
    {0x01, Codec::mpeg1_video},
    {0x02, Codec::mpeg2_video},
    {0x03, Codec::mpeg_audio},
    {0x04, Codec::mpeg_audio},
    {0x05, Codec::private_sections},
    {0x06, Codec::private_data},
    {0x07, Codec::mheg},
    {0x08, Codec::dsm_cc},
    {0x09, Codec::h222_1},
    {0x0A, Codec::dsm_cc_a},
    {0x0B, Codec::dsm_cc_b},
    {0x0C, Codec::dsm_cc_c},
    {0x0D, Codec::dsm_cc_d},
    {0x0E, Codec::auxiliary},
    {0x0F, Codec::aac},
    {0x10, Codec::mpeg4_visual},
    {0x11, Codec::aac},
    {0x12, Codec::sl_packets},
    {0x13, Codec::sl_packets},
    {0x14, Codec::download},
    {0x15, Codec::metadata},
    {0x16, Codec::metadata},
    {0x17, Codec::metadata},
    {0x18, Codec::metadata},
    {0x19, Codec::metadata},
    {0x1A, Codec::ipmp},
    {0x1B, Codec::avc},
    {0x1C, Codec::aac_raw},
    {0x1D, Codec::timed_text},
    {0x1E, Codec::unknown_video},
    {0x1F, Codec::avc_layers},
    {0x20, Codec::avc_layers},
    {0x21, Codec::jpeg2000},
    {0x22, Codec::mpeg2_video},
    {0x23, Codec::avc},
    {0x24, Codec::hevc},
    {0x25, Codec::hevc_layers},
    {0x2D, Codec::mpegh},
    {0x2E, Codec::mpegh},
    {0x32, Codec::jpeg_xs},
    {0x33, Codec::vvc},
    {0x35, Codec::evc},
    {0x42, Codec::avs},
    {0x80, Codec::mpeg2_video},
    {0x81, Codec::ac3},
    {0x82, Codec::dts},
    {0x83, Codec::truehd},
    {0x84, Codec::eac3},
    {0x85, Codec::dts},
    {0x86, Codec::scte35},
    {0x87, Codec::eac3},
    {0x88, Codec::dts},
    {0x8A, Codec::dts},
    {0x90, Codec::pgs},
    {0x91, Codec::igs},
    {0x92, Codec::hdmv_text},
    {0x95, Codec::data},
    {0xA1, Codec::eac3},
    {0xA2, Codec::dts_express},
    {0xC1, Codec::ac3, ZAT_FLAG_ENCRYPTED},
    {0xC2, Codec::eac3, ZAT_FLAG_ENCRYPTED},
    {0xCF, Codec::aac, ZAT_FLAG_ENCRYPTED},
    {0xD1, Codec::dirac},
    {0xD2, Codec::avs2},
    {0xD4, Codec::avs3},
    {0xDB, Codec::avc, ZAT_FLAG_ENCRYPTED},
    {0xEA, Codec::vc1},
};

// Under a registration of HDMV (Blu-ray Disc).
constexpr TypeRow hdmv_types[] = {
    {0x80, Codec::lpcm},
    {0x81, Codec::ac3},
    {0x82, Codec::dts},
    {0x83, Codec::truehd},
    {0x84, Codec::eac3},
    {0x85, Codec::dts_hd_hra},
    {0x86, Codec::dts_hd_ma},
    {0x90, Codec::pgs},
    {0x91, Codec::igs},
    {0x92, Codec::hdmv_text},
    {0xA1, Codec::eac3},
    {0xA2, Codec::dts_express},
};

struct RegistrationRow {
    uint32_t format_identifier;
    Codec codec;
};

constexpr RegistrationRow registrations[] = {
    {fourcc("AC-3"), Codec::ac3},
    {fourcc("EAC3"), Codec::eac3},
    {fourcc("AC-4"), Codec::ac4},
    {fourcc("DTS1"), Codec::dts},
    {fourcc("DTS2"), Codec::dts},
    {fourcc("DTS3"), Codec::dts},
    {fourcc("VC-1"), Codec::vc1},
    {fourcc("HEVC"), Codec::hevc},
    {fourcc("Opus"), Codec::opus},
    {fourcc("BSSD"), Codec::s302m},
    {fourcc("AV01"), Codec::av1},
    {fourcc("drac"), Codec::dirac},
    {fourcc("KLVA"), Codec::klv},
    {fourcc("ID3 "), Codec::timed_id3},
    {fourcc("ID3_"), Codec::timed_id3},
    {fourcc("CUEI"), Codec::scte35},
};

bool find_registration(uint32_t format_identifier, Codec* codec) {
    const RegistrationRow* row =
        find_row(registrations, &RegistrationRow::format_identifier, format_identifier);
    if (row == nullptr) {
        return false;
    }
    *codec = row->codec;
    return true;
}

// Types that leave the codec to a registration or a descriptor.
bool is_open_type(uint8_t type) {
    return type == 0x06 || (type >= 0x15 && type <= 0x19) || type >= 0x80;
}

// Takes what a descriptor tells about a stream that may be of any codec.
void set_private(Stream* stream, Codec codec) {
    if (stream->type == 0x06 || find_row(types, &TypeRow::type, stream->type) == nullptr) {
        stream->codec = codec;
    }
}

void add_teletext_page(Stream* stream, Bytes entry) {
    const uint32_t magazine = (entry[3] & 7) != 0 ? entry[3] & 7U : 8U;
    char language[32] = "";
    add_language(language, entry.first(3));
    char page[32];
    format_text(
        page, sizeof page, "%sp.%u%02x", language[0] != '\0' ? " " : "", magazine, entry[4]);
    AppendWithSeparator(stream->pages, language, separator_space);
    append_text(stream->pages, page);
    add_language(stream->language, entry.first(3));
}

// teletext_descriptor (ETSI EN 300 468, 6.2.43): the pages of subtitles, else the first one.
void read_teletext(Stream* stream, Bytes data) {
    constexpr size_t entry_size = 5;
    constexpr uint32_t subtitle = 2;
    constexpr uint32_t hearing_impaired = 5;
    set_private(stream, Codec::teletext);
    stream->language[0] = '\0';
    stream->pages[0] = '\0';
    for (Bytes rest = data; rest.size() >= entry_size; rest = rest.subspan(entry_size)) {
        const uint32_t kind = rest[3] >> 3U; // teletext_type
        if (kind == subtitle || kind == hearing_impaired) {
            add_teletext_page(stream, rest);
        }
        if (kind == hearing_impaired) {
            stream->flags |= ZAT_FLAG_HEARING_IMPAIRED;
        }
    }
    if (stream->pages[0] == '\0' && data.size() >= entry_size) {
        add_teletext_page(stream, data);
    }
}

// subtitling_descriptor (ETSI EN 300 468, 6.2.41).
void read_subtitling(Stream* stream, Bytes data) {
    constexpr size_t entry_size = 8;
    set_private(stream, Codec::dvb_subtitle);
    stream->language[0] = '\0';
    for (; data.size() >= entry_size; data = data.subspan(entry_size)) {
        add_language(stream->language, data.first(3));
        if (data[3] >= 0x20 && data[3] <= 0x25) { // for the hard of hearing
            stream->flags |= ZAT_FLAG_HEARING_IMPAIRED;
        }
    }
}

// Of a channel_config_code; 0 for one that tells no number.
uint8_t opus_channels(Bytes code) {
    constexpr uint8_t dual_mono = 0;
    if (code.empty() || code[0] > 8) {
        return 0;
    }
    return code[0] == dual_mono ? uint8_t{2} : code[0];
}

// extension_descriptor (ETSI EN 300 468, 6.2.16).
void read_extension(Stream* stream, Bytes data) {
    switch (byte_at(data, 0)) {
    case 0x0E:
        set_private(stream, Codec::dts);
        stream->dts_hd = true;
        break;
    case 0x15:
        set_private(stream, Codec::ac4);
        break;
    case 0x20:
        set_private(stream, Codec::ttml);
        break;
    case 0x80: // Opus: channel_config_code
        set_private(stream, Codec::opus);
        stream->opus_channels = opus_channels(data.subspan(1));
        break;
    default:
        break;
    }
}

// metadata_descriptor (2.6.60): the format's own identifier.
void read_metadata(Stream* stream, Bytes data) {
    if (data.size() < 3) {
        return;
    }
    const size_t at = ReadBE16(data.data()) == 0xFFFF ? 6 : 2; // behind the application format
    if (byte_at(data, at) == 0xFF && at + 5 <= data.size()) {
        find_registration(ReadBE32(&data[at + 1]), &stream->codec);
    }
}

// audio_component_descriptor (ARIB STD-B10, part 2, 6.2.26).
void read_audio_component(Stream* stream, Bytes data) {
    constexpr size_t size = 9;
    constexpr uint8_t dual_mono = 2;
    if (data.size() < size) {
        return;
    }
    stream->dual_mono = data[1] == dual_mono;
    stream->language[0] = '\0';
    add_language(stream->language, data.subspan(6, 3));
    if ((data[5] & 0x80) != 0 && data.size() >= size + 3) { // ES_multi_lingual_flag
        add_language(stream->language, data.subspan(9, 3));
    }
}

// What carries the codec of private data, when nothing more has to be read.
struct DescriptorRow {
    uint8_t tag;
    Codec codec;
};

constexpr DescriptorRow codec_descriptors[] = {
    {0x6A, Codec::ac3}, // ETSI EN 300 468, annexes D, G and H
    {0x7A, Codec::eac3},
    {0x7B, Codec::dts},
    {0x7C, Codec::aac},
    {0x81, Codec::ac3}, // ATSC A/52, annex A
    {0xCC, Codec::eac3},
};

void read_descriptor(Stream* stream, const Descriptor& descriptor) {
    const Bytes data = descriptor.data;
    switch (descriptor.tag) {
    case tag_language:
        read_languages(data, stream->language, &stream->flags);
        return;
    case 0x26:
        read_metadata(stream, data);
        return;
    case 0x52: // stream_identifier_descriptor
        stream->has_component_tag = !data.empty();
        stream->component_tag = byte_at(data, 0);
        return;
    case 0x56:
        read_teletext(stream, data);
        return;
    case 0x59:
        read_subtitling(stream, data);
        return;
    case 0x6F: // application_signalling_descriptor
        if (stream->type == 0x05) {
            stream->codec = Codec::ait;
        }
        return;
    case 0x7F:
        read_extension(stream, data);
        return;
    case 0xC4:
        read_audio_component(stream, data);
        return;
    case 0xFD: // data_component_descriptor
        stream->data_component = data.size() >= 2 ? ReadBE16(data.data()) + 1U : 0;
        return;
    default:
        break;
    }
    for (const DescriptorRow& row : codec_descriptors) {
        if (row.tag == descriptor.tag) {
            set_private(stream, row.codec);
        }
    }
}

// data_component_id (ARIB STD-B10, part 2, annex J) with the component tags of ARIB TR-B14.
void read_data_component(Stream* stream) {
    constexpr uint32_t caption = 0x0008;
    constexpr uint32_t bml = 0x000C;
    constexpr uint32_t one_seg_caption = 0x0012;
    const uint8_t tag = stream->component_tag;
    switch (stream->data_component) {
    case caption + 1:
        stream->codec = stream->has_component_tag && tag >= 0x38 && tag <= 0x3F
                            ? Codec::arib_superimpose
                            : Codec::arib_caption;
        break;
    case one_seg_caption + 1:
        stream->codec = stream->has_component_tag && tag == 0x88 ? Codec::arib_superimpose
                                                                 : Codec::arib_caption;
        break;
    case bml + 1:
        stream->codec = Codec::data_broadcasting;
        break;
    default:
        break;
    }
}

} // namespace

uint32_t registration_of(Bytes descriptors) {
    Descriptor descriptor;
    while (next_descriptor(&descriptors, &descriptor)) {
        if (descriptor.tag == 0x05 && descriptor.data.size() >= 4) {
            return ReadBE32(descriptor.data.data());
        }
    }
    return 0;
}

void describe_stream_type(Stream* stream, Bytes descriptors, uint32_t program_registration) {
    stream->registration = registration_of(descriptors);
    const bool is_hdmv = program_registration == hdmv || stream->registration == hdmv;
    const TypeRow* row = is_hdmv ? find_row(hdmv_types, &TypeRow::type, stream->type) : nullptr;
    row = row != nullptr ? row : find_row(types, &TypeRow::type, stream->type);
    if (row != nullptr) {
        stream->codec = row->codec;
        stream->flags |= row->flags;
    } else {
        stream->codec = stream->type < 0x80 ? Codec::data : Codec::private_data;
    }
    Descriptor descriptor;
    while (next_descriptor(&descriptors, &descriptor)) {
        read_descriptor(stream, descriptor);
    }
    if (is_open_type(stream->type)) { // what a registration names holds against descriptors
        find_registration(stream->registration, &stream->codec);
    }
    read_data_component(stream);
}

} // namespace zat::ts
