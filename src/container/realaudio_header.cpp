#include "container/realaudio_header.h"

#include "common/bytes/tables.h"
#include "common/catalogue/codec_catalogue.h"
#include "common/catalogue/codec_names.h"
#include "common/text/fourcc.h"
#include "common/text/text.h"

#include <iterator>

namespace zat {

namespace {

constexpr size_t version_at = 4;

// Version 3 has neither rate nor codec, as there is only one.
constexpr size_t old_header_size_at = 6;
constexpr uint32_t old_header_start = 8; // what its size counts from
constexpr size_t old_minute_at = 16;
constexpr size_t old_data_size_at = 18;
constexpr uint32_t old_texts_at = 22;
constexpr size_t old_size = 22;

// Versions 4 and 5.
constexpr size_t header_size_at = 18;
constexpr uint32_t header_start = 16;
constexpr size_t whole_data_size_at = 12; // with a part of the header
constexpr size_t data_size_at = 28;
constexpr size_t minute_at = 32;

struct Layout {
    uint16_t version;
    size_t rate_at;
    size_t bits_at;
    size_t channels_at;
    size_t codec_at;
    uint32_t texts_at;
};

// Of version 4 the codec stands behind the interleaver, both counted texts of four bytes.
constexpr Layout layouts[] = {{4, 46, 50, 54, 62, 69}, {5, 48, 56, 60, 66, 73}};

void read_old_header(Bytes bytes, RealAudioHeader* header) {
    header->sample_rate = 8000;
    header->bits = 16;
    header->channels = 1;
    header->codec = fourcc("14_4");
    header->header_size = old_header_start + ReadBE16(bytes.data() + old_header_size_at);
    header->data_size = ReadBE32(bytes.data() + old_data_size_at);
    header->bytes_per_minute = ReadBE16(bytes.data() + old_minute_at);
    header->texts_at = old_texts_at;
}

} // namespace

bool read_realaudio_header(Bytes bytes, RealAudioHeader* header) {
    *header = {};
    if (bytes.size() < old_size || !has_at(bytes, 0, ".ra\xFD")) {
        return false;
    }
    header->version = ReadBE16(bytes.data() + version_at);
    if (header->version == 3) {
        read_old_header(bytes, header);
        return true;
    }
    const Layout* layout = find_row(layouts, &Layout::version, header->version);
    if (layout == nullptr || bytes.size() < realaudio_header_size) {
        return false;
    }
    const uint8_t* fields = bytes.data();
    const uint32_t data_size = ReadBE32(fields + data_size_at);
    header->sample_rate = ReadBE32(fields + layout->rate_at);
    header->bits = ReadBE32(fields + layout->bits_at);
    header->channels = ReadBE16(fields + layout->channels_at);
    header->codec = ReadBE32(fields + layout->codec_at);
    header->header_size = header_start + ReadBE32(fields + header_size_at);
    header->data_size = data_size != 0 ? data_size : ReadBE32(fields + whole_data_size_at);
    header->bytes_per_minute = ReadBE32(fields + minute_at);
    header->texts_at = layout->texts_at;
    return true;
}

void realaudio_facts(const RealAudioHeader& header, ZatStream* stream) {
    stream->sample_rate = header.sample_rate;
    stream->channels = header.channels;
    set_fourcc_codec(stream, header.codec);
    if ((stream->flags & ZAT_FLAG_LOSSLESS) != 0) {
        stream->bit_depth = header.bits;
    }
}

void real_codec_name(uint32_t id, char* out) {
    char shown[5] = "";
    char key[5] = "";
    size_t length = 0;
    for (int i = 0; i < 4; ++i) {
        const char c = static_cast<char>(id >> (24 - 8 * i));
        if (IsNotPrintable(c) == 0) {
            shown[length] = c;
            key[length] = ascii_upper(c);
            ++length;
        }
    }
    codec_name("[REAL]", key, shown, out, 256);
}

} // namespace zat
