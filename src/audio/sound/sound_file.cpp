#include "audio/sound/sound_file.h"

#include "audio/stream_facts.h"
#include "audio/wave_format.h"
#include "common/catalogue/codec_catalogue.h"
#include "common/record/channel_layout.h"
#include "common/record/extra_info.h"
#include "common/record/extra_lines.h"
#include "common/record/stream_lines.h"
#include "common/text/text.h"
#include "common/text/text_codes.h"

#include <algorithm>

namespace zat {

namespace {

// What stands before a value in an annotation, and where the value goes.
struct AnnotationRow {
    std::string_view key;
    void (*take)(std::string_view value, SoundFile* sound);
};

void take_text(std::string_view value, TagText& field) {
    TagText text;
    unknown_to_utf8(value, text);
    add_tag_value(field, bounded_text(text));
}

constexpr AnnotationRow annotation_rows[] = {
    {"title=", [](auto value, SoundFile* sound) { take_text(value, sound->texts.title); }},
    {"artist=", [](auto value, SoundFile* sound) { take_text(value, sound->texts.artist); }},
    {"album=", [](auto value, SoundFile* sound) { take_text(value, sound->texts.album); }},
    {"program: ", [](auto value, SoundFile* sound) { take_text(value, sound->writer); }},
    {"Processed by ", [](auto value, SoundFile* sound) { take_text(value, sound->writer); }},
};

bool take_annotation_line(std::string_view line, SoundFile* sound) {
    for (const AnnotationRow& row : annotation_rows) {
        if (same_letters(line.substr(0, row.key.size()), row.key)) {
            row.take(text_from(line, row.key.size()), sound);
            return true;
        }
    }
    return false;
}

// Bytes of one block of every channel; 0 without blocks or channels.
uint64_t block_size(const SoundFile& sound) {
    return uint64_t{sound.form.block_bytes} * sound.facts.channels;
}

void find_codec_name(const SampleForm& form, char (&out)[codec_name_size]) {
    if (form.tag != 0) {
        wave_tag_name(form.tag, out);
    } else {
        fourcc_codec_name("[QT-AUDIO]", form.fourcc, out, sizeof out);
    }
}

// The form of WAVE lines, without what is not known.
void format_sound_line(const SoundFile& sound, char (&line)[line_size]) {
    const ZatStream& facts = sound.facts;
    char name[codec_name_size];
    find_codec_name(sound.form, name);
    format_text(line, sizeof line, "[%s]", name);
    if (facts.sample_rate != 0) {
        append_format(line, "%dHz", static_cast<int32_t>(facts.sample_rate));
    }
    if (facts.channels != 0) {
        char layout[layout_size];
        const uint32_t usual = sound.tells_layout ? 0 : default_channel_mask(facts.channels);
        line_layout(sound.channel_mask != 0 ? sound.channel_mask : usual, facts.channels, layout);
        append_format(line, layout[0] != '\0' ? "%dch(%s)" : "%dch",
            static_cast<int32_t>(facts.channels), layout);
    }
    if (facts.bit_rate != 0) {
        append_format(line, "%.2fkbps", static_cast<double>(facts.bit_rate) * 0.001);
    }
    if (sound.bits != 0) {
        append_format(line, "%dBit", static_cast<int32_t>(sound.bits));
    }
    if (sound.header_size != 0) {
        append_format(
            line, "[%s:%dByte]", sound.header_name, static_cast<int32_t>(sound.header_size));
    }
}

// The number of samples where the header has none, and what follows from it.
void complete_facts(SoundFile* sound) {
    ZatStream* facts = &sound->facts;
    if (facts->samples == 0) {
        facts->samples =
            samples_of_bytes(*sound, sound->announced != 0 ? sound->announced : sound->available);
    }
    if (facts->sample_rate != 0) {
        facts->duration = static_cast<double>(facts->samples) / facts->sample_rate;
    }
    set_layout(sound->channel_mask == 0 && facts->channels <= 2
                   ? default_channel_mask(facts->channels)
                   : sound->channel_mask,
        facts);
    if (sound->available > 0) {
        facts->bytes = static_cast<uint64_t>(sound->available);
    }
}

void write_extra(const SoundFile& sound, const Output& out) {
    ExtraLines extra;
    for (const char* line : {sound.chain.text, sound.fact}) {
        if (line[0] != '\0') {
            add_fact(&extra, "%s", line);
        }
    }
    if (sound.announced > sound.available) {
        add_truncated_note(out, &extra, static_cast<uint64_t>(sound.announced - sound.available));
    }
    write_extra_lines(extra, out.record);
}

} // namespace

void open_sound_file(SoundFile* sound) {
    sound->facts = new_stream(ZAT_STREAM_AUDIO);
}

void set_sample_form(SoundFile* sound, const SampleForm& form, uint32_t bits) {
    constexpr uint32_t most_bits = 64;
    ZatStream* facts = &sound->facts;
    drop_nonsense(facts);
    sound->form = form;
    const uint32_t told = form.bits != 0 ? form.bits : bits;
    sound->bits = told <= most_bits ? told : 0;
    if (form.is_pcm) {
        set_pcm(facts, form.kind, sound->bits, form.order);
        sound->form.block_bytes = (sound->bits + 7) / 8;
        sound->form.block_samples = 1;
    } else if (form.tag != 0) {
        set_format_tag_codec(facts, form.tag, 0);
    } else {
        set_fourcc_codec(facts, form.fourcc);
    }
    if (sound->form.block_samples != 0) {
        const uint64_t rate =
            block_size(*sound) * 8 * facts->sample_rate / sound->form.block_samples;
        facts->bit_rate = rate < bit_rate_limit ? rate : 0;
        facts->bit_rate_mode = facts->bit_rate != 0 ? uint32_t{ZAT_BIT_RATE_CONSTANT} : 0;
    }
}

uint64_t samples_of_bytes(const SoundFile& sound, int64_t bytes) {
    const uint64_t block = block_size(sound);
    return block == 0 || bytes <= 0
               ? 0
               : static_cast<uint64_t>(bytes) / block * sound.form.block_samples;
}

bool take_annotation(std::string_view text, SoundFile* sound) {
    static constexpr std::string_view ends("\n\r\0", 3);
    bool is_known = false;
    while (!text.empty()) {
        const size_t end = std::min(text.find_first_of(ends), text.size());
        is_known = take_annotation_line(text.substr(0, end), sound) || is_known;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return is_known;
}

void write_sound_file(SoundFile* sound, const Output& out) {
    complete_facts(sound);
    if (sound->form.is_pcm || sound->form.tag != 0 || sound->form.fourcc != 0) {
        char line[line_size];
        format_sound_line(*sound, line);
        add_stream_line(out, sound->facts, bounded_text(line));
    }
    out.record->play_time = sound->facts.duration;
    write_extra(*sound, out);
    write_artist_and_title(sound->texts, out);
    append_writer(out, bounded_text(sound->writer));
    if (out.details != nullptr) {
        out.details->duration = sound->facts.duration;
    }
}

} // namespace zat
