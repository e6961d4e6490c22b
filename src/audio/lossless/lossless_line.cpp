// Records of files with one stream of lossless audio: the line, the tags, the notes.
#include "audio/lossless/lossless_file.h"
#include "common/bytes/numbers.h"
#include "common/record/details.h"
#include "common/record/extra_lines.h"
#include "common/record/record_lines.h"
#include "common/record/stream_lines.h"
#include "common/tags/tag_lines.h"
#include "common/text/text.h"
#include "common/text/text_codes.h"

#include <algorithm>
#include <cmath>

namespace zat {

namespace {

constexpr double smallest_shown = 0.005; // less would be shown as 0.00

// What the average rate and the ratio are taken from: the bytes that the whole file would have.
int64_t whole_payload(const LosslessFile& lossless) {
    return lossless.declared_payload != not_declared ? lossless.declared_payload : lossless.payload;
}

// In bit/s, 0 when it is not known.
double bit_rate_of(const LosslessFile& lossless) {
    const ZatStream& facts = lossless.facts;
    if (lossless.constant_rate) {
        return static_cast<double>(facts.sample_rate) * static_cast<double>(facts.channels);
    }
    if (lossless.truncated || !(facts.duration > 0)) {
        return 0;
    }
    const double rate = static_cast<double>(whole_payload(lossless)) * 8 / facts.duration;
    return rate < static_cast<double>(bit_rate_limit) ? rate : 0;
}

// Percent of the uncompressed samples, 0 when it is not known.
double ratio_of(const LosslessFile& lossless) {
    const ZatStream& facts = lossless.facts;
    if (lossless.truncated || lossless.constant_rate || !lossless.shows_ratio ||
        !(facts.duration > 0)) {
        return 0;
    }
    const double bits = lossless.is_dsd ? 1 : (facts.bit_depth + 7) / 8 * 8;
    const double samples = static_cast<double>(facts.samples) * static_cast<double>(facts.channels);
    const double whole = samples * bits / 8;
    return whole > 0 ? static_cast<double>(whole_payload(lossless)) * 100 / whole : 0;
}

void add_line(LosslessFile* lossless, const Output& out) {
    ZatStream* facts = &lossless->facts;
    if (facts->sample_rate == 0 && facts->channels == 0) {
        return;
    }
    const double rate = bit_rate_of(*lossless);
    facts->bit_rate = clamp_to_integer<uint64_t>(rate + 0.5);
    facts->bit_rate_mode = lossless->constant_rate ? ZAT_BIT_RATE_CONSTANT : 0;
    ZatStream shown = *facts; // rates have two decimals here, and their place before the bits
    shown.bit_rate = 0;
    const LineText text = {.codec = lossless->name,
        .channel_mask = lossless->channel_mask,
        .sample_rate_limit = lossless->is_dsd ? dsd_rate_limit : lossless_rate_limit};
    char line[line_size];
    format_audio_line(shown, text, line);
    const char* mark = (facts->estimated & ZAT_ESTIMATED_BIT_RATE) != 0 ? "~" : "";
    if (rate * 0.001 >= smallest_shown) {
        append_format(line, "%s%.2fkbps", mark, rate * 0.001);
    }
    if (facts->bit_depth != 0) {
        append_format(line, "%dBit", static_cast<int32_t>(facts->bit_depth));
    }
    if (const double ratio = ratio_of(*lossless); ratio >= smallest_shown) {
        append_format(line, "%s%.2f%%", mark, ratio);
    }
    add_audio_line(out.record, "%s", line); // the name has all remarks
    if ((facts->flags & ZAT_FLAG_LOSSLESS) == 0) {
        facts->bit_depth = 0; // what is decoded has as many bits as the decoder gives it
    }
    add_stream(out.details, *facts);
}

// " track +1.25dB"; nothing for a gain that is not known.
void append_gain(const char* name, double gain, char (&line)[line_size]) {
    if (!std::isnan(gain)) {
        char piece[64];
        format_text(piece, sizeof piece, "%s %s%.2fdB", name, std::signbit(gain) ? "-" : "+",
            std::fabs(gain));
        append_word(line, piece);
    }
}

void add_facts(const LosslessFile& lossless, const TagTexts& texts, ExtraLines* extra) {
    if (lossless.shows_encoder && lossless.facts.encoder[0] != '\0') {
        char encoder[line_size];
        if (utf8_to_cp932(bounded_text(lossless.facts.encoder), encoder) != 0) {
            add_fact(extra, "encoder %s", encoder);
        }
    }
    if (lossless.correction_file) {
        add_fact(extra, "correction file");
    }
    if (lossless.gapless) {
        add_fact(extra, "gapless");
    }
    char gains[line_size] = "ReplayGain";
    const size_t empty = bounded_text(gains).size();
    append_gain("track", texts.track_gain, gains);
    append_gain("album", texts.album_gain, gains);
    if (gains[empty] != '\0') {
        add_fact(extra, "%s", gains);
    }
}

void add_notes(const LosslessFile& lossless, const Output& out, ExtraLines* extra) {
    if (lossless.damaged) {
        add_note(out, extra, "damaged header");
    } else if (lossless.declared_payload > lossless.payload) {
        add_truncated_note(
            out, extra, static_cast<uint64_t>(lossless.declared_payload - lossless.payload));
    } else if (lossless.truncated) {
        add_note(out, extra, "truncated");
        if (out.details != nullptr) {
            out.details->bit_rate = no_bit_rate;
        }
    }
    if (lossless.note[0] != '\0') {
        add_note(out, extra, "%s", lossless.note);
    }
}

// Of all tags, by their rank.
void read_texts(LosslessFile* lossless, TagTexts* texts) {
    *texts = lossless->comment_texts;
    if (!std::isnan(lossless->own_texts.track_gain) ||
        !std::isnan(lossless->own_texts.album_gain)) {
        texts->track_gain = lossless->own_texts.track_gain;
        texts->album_gain = lossless->own_texts.album_gain;
    }
    complete_by_tags(
        &lossless->reader, lossless->tags, lossless->id3v2, lossless->own_texts, texts);
    texts->pictures += lossless->pictures;
    lossless->cuesheet = lossless->cuesheet || texts->cuesheet;
}

} // namespace

void write_lossless_file(LosslessFile* lossless, const LosslessKind& kind, const Output& out) {
    set_label(out.record, "%s", kind.label);
    TagTexts texts;
    read_texts(lossless, &texts);
    write_artist_and_title(texts, out);

    ZatStream* facts = &lossless->facts;
    copy_utf8(facts->codec, kind.codec);
    facts->bytes = static_cast<uint64_t>(std::max<int64_t>(lossless->payload, 0));
    out.record->play_time = facts->duration;
    out.record->data_size = facts->bytes;
    if (out.details != nullptr) {
        copy_utf8(out.details->format, kind.format);
        copy_utf8(out.details->format_profile, lossless->format_profile);
    }
    add_line(lossless, out);

    ExtraLines extra;
    add_tag_fact(&extra, {.outer = lossless->tags,
                             .inner_id3v2 = size_of(lossless->id3v2),
                             .comments = lossless->comments,
                             .pictures = lossless->pictures,
                             .cuesheet = lossless->cuesheet,
                             .junk = lossless->junk});
    add_facts(*lossless, texts, &extra);
    add_notes(*lossless, out, &extra);
    write_extra_lines(extra, out.record);
    note_work_limit(out, lossless->reader);
}

} // namespace zat
