#include "audio/lossless/wsd_file.h"

#include "audio/lossless/lossless_file.h"
#include "common/bytes/bytes.h"
#include "common/record/channel_layout.h"
#include "common/text/text_codes.h"

#include <algorithm>

namespace zat {

namespace {

constexpr LosslessKind wsd_kind = {"[WSD]", "WSD", "DSD"};

constexpr uint32_t wsd_header_size = 0x80;
constexpr uint32_t old_text_at = 0x80; // before version 1.0
constexpr uint32_t old_data_at = 0x800;

// Speakers of the mask's bits, as bits of a WAVE channel mask.
struct WsdSpeaker {
    uint32_t bit;
    uint32_t mask;
};

constexpr WsdSpeaker wsd_speakers[] = {
    {30, 0x1},
    {29, 0x40},
    {28, 0x4},
    {27, 0x80},
    {26, 0x2},
    {24, 0x8},
    {6, 0x10},
    {5, speaker_back_left_of_center},
    {4, 0x100},
    {3, speaker_back_right_of_center},
    {2, 0x20},
};

constexpr uint32_t mask_is_unset = 1;

// The text area: fields of fixed sizes, filled up with blanks.
constexpr int64_t text_size = 128;
constexpr int64_t title_at = 0;
constexpr int64_t artist_at = 3 * text_size;
constexpr int64_t album_at = 4 * text_size;

void take_text(LosslessFile* wsd, int64_t at, TagText& field) {
    TagText value;
    unknown_to_utf8(
        text_of(read_view(&wsd->reader, wsd->tags.stream, at, static_cast<uint32_t>(text_size))),
        value);
    add_tag_value(field, value);
}

void take_speakers(LosslessFile* wsd, uint32_t told) {
    uint32_t mask = 0;
    for (const WsdSpeaker& speaker : wsd_speakers) {
        mask |= (told >> speaker.bit & 1) != 0 ? speaker.mask : 0;
    }
    if ((told & mask_is_unset) == 0 && mask != 0) {
        set_channel_mask(wsd, mask);
    }
}

void describe_wsd(LosslessFile* wsd) {
    constexpr uint32_t version_1 = 0x10;
    wsd->is_dsd = true;
    wsd->constant_rate = true;
    uint8_t header[wsd_header_size];
    wsd->damaged = !find_stream_start(wsd, "1bit") ||
                   !read_all(&wsd->reader, wsd->tags.stream, 0, header, sizeof header);
    if (wsd->damaged) {
        return;
    }
    const bool is_old = header[8] < version_1;
    const uint32_t text_at = is_old ? old_text_at : ReadBE32(header + 20);
    const uint32_t data_at = is_old ? old_data_at : ReadBE32(header + 24);
    set_sample_rate(wsd, ReadBE32(header + 36));
    set_channels(wsd, header[44] & 0xFU);
    take_speakers(wsd, ReadBE32(header + 48));
    wsd->facts.bit_depth = 1;
    char name[16];
    dsd_name(wsd->facts.sample_rate, name);
    add_name_word(wsd, name);
    if (text_at >= wsd_header_size) {
        take_text(wsd, text_at + title_at, wsd->own_texts.title);
        take_text(wsd, text_at + artist_at, wsd->own_texts.artist);
        take_text(wsd, text_at + album_at, wsd->own_texts.album);
    }
    if (data_at < wsd_header_size) {
        wsd->damaged = true;
        return;
    }
    wsd->payload = std::max<int64_t>(size_of(wsd->tags.stream) - data_at, 0);
    if (wsd->facts.channels != 0) {
        set_samples(wsd, static_cast<uint64_t>(wsd->payload) * 8 / wsd->facts.channels);
    }
}

} // namespace

int AnalyzeWsdFile(FileRecord* file, const Output& out) {
    LosslessFile wsd;
    open_lossless_file(&wsd, file);
    wsd.facts.flags |= ZAT_FLAG_LOSSLESS;
    describe_wsd(&wsd);
    write_lossless_file(&wsd, wsd_kind, out);
    return 0;
}

} // namespace zat
