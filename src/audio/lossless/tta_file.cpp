#include "audio/lossless/tta_file.h"

#include "audio/lossless/lossless_file.h"
#include "common/bytes/bytes.h"
#include "common/bytes/crc.h"
#include "common/text/text.h"

#include <algorithm>

namespace zat {

namespace {

constexpr LosslessKind tta_kind = {"[TTA]", "TTA", "TTA"};

constexpr uint32_t tta_header_look = 36; // bytes of the largest header
constexpr uint32_t tta1_size = 22;
constexpr uint64_t largest_table = 8U << 20; // bytes: weeks of sound

enum Format : uint16_t { format_pcm = 1, format_encrypted = 2, format_float = 3 };

struct TtaFile {
    LosslessFile lossless;
    uint8_t header[tta_header_look];
};

bool crc_fits(const TtaFile& tta, uint32_t size) {
    return crc32({tta.header, size}) == ReadLE32(tta.header + size);
}

void set_form(TtaFile* tta, uint32_t format, uint32_t channels, uint32_t bits, uint32_t rate) {
    LosslessFile* lossless = &tta->lossless;
    set_channels(lossless, channels);
    set_sample_rate(lossless, rate);
    lossless->facts.bit_depth = bits <= 32 ? bits : 0;
    lossless->damaged =
        lossless->damaged || bits == 0 || bits > 32 || format < format_pcm || format > format_float;
    if (format == format_encrypted) {
        add_name_word(lossless, "encrypted");
        lossless->facts.flags |= ZAT_FLAG_ENCRYPTED;
    } else if (format == format_float) {
        add_name_word(lossless, "float");
    }
}

// The bytes of all frames by the seek table, which has one entry for each and a checksum behind
// them; `not_declared` when the checksum is wrong.
int64_t sum_of_seek_table(TtaFile* tta, uint64_t frames) {
    LosslessFile* lossless = &tta->lossless;
    if (frames == 0 || frames * 4 > largest_table) {
        return not_declared;
    }
    constexpr uint32_t step = 2048;
    const auto size = static_cast<int64_t>(frames * 4);
    const Span table = sub_span(lossless->tags.stream, tta1_size, size + 4);
    uint32_t crc = 0;
    int64_t sum = 0;
    for (int64_t at = 0; at < size;) {
        const Bytes entries = read_view(&lossless->reader, table, at,
            static_cast<uint32_t>(std::min<int64_t>(step, size - at)));
        if (entries.size() < 4) {
            return not_declared;
        }
        const Bytes whole = entries.first(entries.size() / 4 * 4);
        for (size_t i = 0; i < whole.size(); i += 4) {
            sum += ReadLE32(&whole[i]);
        }
        crc = crc32(whole, crc);
        at += static_cast<int64_t>(whole.size());
    }
    return crc == read_le32(&lossless->reader, table, size, ~crc) ? sum : not_declared;
}

// "TTA1", format, channels, bits, rate, samples, checksum.
void describe_version_1(TtaFile* tta) {
    LosslessFile* lossless = &tta->lossless;
    const uint8_t* header = tta->header;
    copy_text(lossless->name, "TTA1");
    lossless->damaged = !crc_fits(*tta, tta1_size - 4);
    set_form(tta, ReadLE16(header + 4), ReadLE16(header + 6), ReadLE16(header + 8),
        ReadLE32(header + 10));
    const uint64_t samples = ReadLE32(header + 14);
    set_samples(lossless, samples);

    const uint64_t per_frame = uint64_t{lossless->facts.sample_rate} * 256 / 245;
    const uint64_t frames = per_frame == 0 ? 0 : (samples + per_frame - 1) / per_frame;
    const auto data = static_cast<int64_t>(tta1_size + frames * 4 + 4);
    const int64_t rest = std::max<int64_t>(size_of(lossless->tags.stream) - data, 0);
    lossless->truncated = data > size_of(lossless->tags.stream);
    lossless->declared_payload = sum_of_seek_table(tta, frames);
    lossless->payload = lossless->declared_payload == not_declared
                            ? rest
                            : std::min(rest, lossless->declared_payload);
}

void set_version_2_length(TtaFile* tta, uint64_t samples, uint32_t header_size, int64_t declared) {
    LosslessFile* lossless = &tta->lossless;
    set_samples(lossless, samples);
    lossless->payload = std::max<int64_t>(size_of(lossless->tags.stream) - header_size, 0);
    if (declared > 0) {
        lossless->declared_payload = declared;
        lossless->payload = std::min(lossless->payload, declared);
    }
}

// "TTA2" has three headers, which only their checksums tell apart: with and without a channel mask,
// and that of the first encoder.
void describe_version_2(TtaFile* tta) {
    LosslessFile* lossless = &tta->lossless;
    const uint8_t* header = tta->header;
    copy_text(lossless->name, "TTA2");
    if (crc_fits(*tta, 32)) {
        set_form(tta, format_pcm, ReadLE16(header + 4), ReadLE16(header + 6), ReadLE32(header + 8));
        if (const uint32_t mask = ReadLE32(header + 12); mask != 0) {
            set_channel_mask(lossless, mask);
        }
        set_version_2_length(
            tta, static_cast<uint64_t>(ReadLE64(header + 16)), 36, ReadLE64(header + 24));
    } else if (crc_fits(*tta, 28)) {
        set_form(tta, format_pcm, ReadLE16(header + 4), ReadLE16(header + 6), ReadLE32(header + 8));
        set_version_2_length(
            tta, static_cast<uint64_t>(ReadLE64(header + 12)), 32, ReadLE64(header + 20));
    } else {
        set_form(tta, ReadLE16(header + 6), ReadLE16(header + 8), ReadLE16(header + 10),
            ReadLE32(header + 12));
        set_version_2_length(tta, ReadLE32(header + 16), 20, not_declared);
    }
}

// The encoder's demonstration: its level in place of the version's digit.
void describe_demonstration(TtaFile* tta) {
    const uint8_t* header = tta->header;
    copy_text(tta->lossless.name, "TTA");
    set_form(tta, format_pcm, ReadLE16(header + 4), ReadLE16(header + 6), ReadLE32(header + 8));
    set_version_2_length(tta, ReadLE32(header + 12), 16, not_declared);
}

void describe_stream(TtaFile* tta) {
    LosslessFile* lossless = &tta->lossless;
    std::fill(std::begin(tta->header), std::end(tta->header), uint8_t{0});
    const uint32_t length =
        find_stream_start(lossless, "TTA")
            ? read_some(&lossless->reader, lossless->tags.stream, 0, tta->header, tta_header_look)
            : 0;
    const uint8_t version = tta->header[3];
    if (version == '1' && length >= tta1_size) {
        describe_version_1(tta);
    } else if (version == '2' && length >= 20) {
        describe_version_2(tta);
    } else if (version >= 1 && version <= 3 && length >= 16) {
        describe_demonstration(tta);
    } else {
        lossless->damaged = true;
    }
}

} // namespace

int AnalyzeTtaFile(FileRecord* file, const Output& out) {
    TtaFile tta;
    open_lossless_file(&tta.lossless, file);
    tta.lossless.facts.flags |= ZAT_FLAG_LOSSLESS;
    describe_stream(&tta);
    write_lossless_file(&tta.lossless, tta_kind, out);
    return 0;
}

} // namespace zat
