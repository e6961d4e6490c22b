#include "audio/sound/au_file.h"

#include "audio/sound/sound_file.h"
#include "common/bytes/tables.h"
#include "common/record/record_lines.h"
#include "common/tags/outer_tags.h"
#include "common/text/text.h"
#include "common/text/text_codes.h"

namespace zat {

namespace {

// ".snd", the offset of the sound, its size, encoding, rate, channels; the annotation behind.
constexpr uint32_t au_header_size = 24;
constexpr uint32_t unknown_size = 0xFFFFFFFF;
constexpr uint32_t annotation_limit = 2048; // bytes that are read

struct EncodingRow {
    uint32_t encoding;
    SampleForm form;
};

constexpr EncodingRow encodings[] = {
    {1, {.tag = 0x0007, .bits = 8, .block_bytes = 1, .block_samples = 1}}, // mu-law
    {2, pcm_form(PcmKind::signed_integer, 8)}, {3, pcm_form(PcmKind::signed_integer, 16)},
    {4, pcm_form(PcmKind::signed_integer, 24)}, {5, pcm_form(PcmKind::signed_integer, 32)},
    {6, pcm_form(PcmKind::floating, 32)}, {7, pcm_form(PcmKind::floating, 64)},
    {23, {.tag = 0x0045, .bits = 4, .block_bytes = 1, .block_samples = 2}}, // G.721, now G.726
    {24, {.tag = 0x028F, .bits = 4, .block_bytes = 1, .block_samples = 2}}, // G.722
    {25, {.tag = 0x0045, .bits = 3, .block_bytes = 3, .block_samples = 8}}, // G.723, now G.726
    {26, {.tag = 0x0045, .bits = 5, .block_bytes = 5, .block_samples = 8}},
    {27, {.tag = 0x0006, .bits = 8, .block_bytes = 1, .block_samples = 1}}, // A-law
};

// Free text is what its writer calls the sound.
void read_annotation(Reader* reader, Span annotation, SoundFile* sound) {
    const std::string_view text = text_of(read_view(reader, annotation, 0, annotation_limit));
    if (!take_annotation(text, sound)) {
        unknown_to_utf8(text, sound->texts.title);
    }
}

void read_header(Reader* reader, SoundFile* sound) {
    const Span file = span_behind_id3v2(reader);
    uint8_t fields[au_header_size];
    if (!read_all(reader, file, 0, fields, sizeof fields)) {
        return;
    }
    const uint32_t offset = ReadBE32(fields + 4);
    const uint32_t size = ReadBE32(fields + 8);
    const uint32_t encoding = ReadBE32(fields + 12);
    const Span rest = sub_span(file, offset);
    sound->announced = size == unknown_size ? 0 : size;
    sound->available = size_of(sub_span(rest, 0, size == unknown_size ? size_of(rest) : size));
    sound->facts.sample_rate = ReadBE32(fields + 16);
    sound->facts.channels = ReadBE32(fields + 20);
    const EncodingRow* row = find_row(encodings, &EncodingRow::encoding, encoding);
    if (row != nullptr) {
        set_sample_form(sound, row->form, 0);
        format_text(sound->facts.codec_id, sizeof sound->facts.codec_id, "%u", encoding);
    }
    if (offset > au_header_size) {
        read_annotation(reader, sub_span(file, au_header_size, offset - au_header_size), sound);
    }
}

} // namespace

int AnalyzeAuFile(FileRecord* file, const Output& out) {
    Reader reader;
    SoundFile sound;
    reader_open(&reader, file);
    open_sound_file(&sound);
    read_header(&reader, &sound);
    set_label(out.record, "%s", "[AU]");
    write_sound_file(&sound, out);
    return 0;
}

} // namespace zat
