#include "audio/sound/aiff_file.h"

#include "audio/apple_layout.h"
#include "audio/sound/sound_file.h"
#include "common/bytes/tables.h"
#include "common/file/riff.h"
#include "common/record/record_lines.h"
#include "common/tags/outer_tags.h"
#include "common/text/text.h"
#include "common/text/text_codes.h"

#include <algorithm>
#include <bit>

namespace zat {

namespace {

constexpr uint32_t text_limit = 1024;     // bytes that are read of a text chunk
constexpr uint32_t text_chunk_limit = 16; // chunks of texts that are read

// "COMM": channels, sample frames, bits, rate; in AIFF-C the compression and its name behind.
constexpr uint32_t common_size = 18;
constexpr uint32_t common_with_type_size = 22;

// "SSND": where the sound begins behind these two fields, and the size of its blocks.
constexpr uint32_t sound_head_size = 8;

struct CompressionRow {
    uint32_t type;
    SampleForm form;
};

constexpr SampleForm packed(uint16_t tag, uint32_t bits, uint32_t block_bytes, uint32_t samples) {
    return {.tag = tag, .bits = bits, .block_bytes = block_bytes, .block_samples = samples};
}

// Types without a row are QuickTime's, whose blocks differ.
constexpr CompressionRow compressions[] = {
    {fourcc("NONE"), pcm_form(PcmKind::signed_integer, 0)},
    {fourcc("twos"), pcm_form(PcmKind::signed_integer, 0)},
    {fourcc("sowt"), pcm_form(PcmKind::signed_integer, 0, std::endian::little)},
    {fourcc("raw "), pcm_form(PcmKind::unsigned_integer, 0)},
    {fourcc("in24"), pcm_form(PcmKind::signed_integer, 24)},
    {fourcc("in32"), pcm_form(PcmKind::signed_integer, 32)},
    {fourcc("42ni"), pcm_form(PcmKind::signed_integer, 24, std::endian::little)},
    {fourcc("23ni"), pcm_form(PcmKind::signed_integer, 32, std::endian::little)},
    {fourcc("fl32"), pcm_form(PcmKind::floating, 32)},
    {fourcc("FL32"), pcm_form(PcmKind::floating, 32)},
    {fourcc("fl64"), pcm_form(PcmKind::floating, 64)},
    {fourcc("FL64"), pcm_form(PcmKind::floating, 64)},
    {fourcc("alaw"), packed(0x0006, 8, 1, 1)},
    {fourcc("ALAW"), packed(0x0006, 8, 1, 1)},
    {fourcc("ulaw"), packed(0x0007, 8, 1, 1)},
    {fourcc("ULAW"), packed(0x0007, 8, 1, 1)},
    {fourcc("ima4"), {.fourcc = fourcc("ima4"), .bits = 4, .block_bytes = 34, .block_samples = 64}},
    {fourcc("MAC3"), {.fourcc = fourcc("MAC3"), .block_bytes = 2, .block_samples = 6}},
    {fourcc("MAC6"), {.fourcc = fourcc("MAC6"), .block_bytes = 1, .block_samples = 6}},
};

struct AiffFile {
    Reader reader;
    Span form; // the file behind ID3v2 tags
    SoundFile sound;
    bool is_compressed = false; // AIFF-C
    uint32_t text_chunks = 0;
    Span common;
    Span id3v2;
};

// IEEE 754's extended format of 80 bits, to the nearest integer; 0 for what does not fit 32 bits.
uint32_t read_extended(const uint8_t* bytes) {
    constexpr int bias = 16383;
    constexpr int mantissa_bits = 63; // behind the point
    const int exponent = ReadBE16(bytes) - bias;
    if (exponent < 0 || exponent > 31) {
        return 0;
    }
    const auto mantissa = static_cast<uint64_t>(ReadBE64(bytes + 2));
    const int shift = mantissa_bits - exponent;
    const uint64_t value = (mantissa >> (shift - 1)) + 1;
    return static_cast<uint32_t>(std::min<uint64_t>(value >> 1, UINT32_MAX));
}

void take_common(const Chunk& chunk, AiffFile* aiff) {
    aiff->common = chunk.payload;
    aiff->sound.header_size = chunk.size;
}

void take_sound(const Chunk& chunk, AiffFile* aiff) {
    const int64_t skipped = int64_t{sound_head_size} + read_be32(&aiff->reader, chunk.payload, 0);
    aiff->sound.announced = std::max<int64_t>(chunk.size - skipped, 0);
    aiff->sound.available = size_of(sub_span(chunk.payload, skipped));
}

void take_layout(const Chunk& chunk, AiffFile* aiff) {
    const Bytes layout = read_view(&aiff->reader, chunk.payload, 0, apple_layout_size);
    aiff->sound.tells_layout = apple_layout_is_told(layout);
    aiff->sound.channel_mask = apple_layout_mask(layout);
}

void take_id3v2(const Chunk& chunk, AiffFile* aiff) {
    aiff->id3v2 = chunk.payload;
}

// Empty behind the last chunk that is read.
std::string_view chunk_text(const Chunk& chunk, AiffFile* aiff) {
    return aiff->text_chunks++ < text_chunk_limit
               ? text_of(read_view(&aiff->reader, chunk.payload, 0, text_limit))
               : std::string_view{};
}

void take_text(const Chunk& chunk, AiffFile* aiff, TagText& field) {
    TagText text;
    if (unknown_to_utf8(chunk_text(chunk, aiff), text) != 0) {
        add_tag_value(field, bounded_text(text));
    }
}

void take_name(const Chunk& chunk, AiffFile* aiff) {
    take_text(chunk, aiff, aiff->sound.texts.title);
}

void take_author(const Chunk& chunk, AiffFile* aiff) {
    take_text(chunk, aiff, aiff->sound.texts.artist);
}

void take_note(const Chunk& chunk, AiffFile* aiff) {
    take_annotation(chunk_text(chunk, aiff), &aiff->sound);
}

// Comments (AIFF 1.3, 8.0): their count; of each a time stamp of 32 bits, a marker of 16, the size
// of the text and the text, padded to an even size.
void take_comments(const Chunk& chunk, AiffFile* aiff) {
    constexpr int64_t head_size = 8;
    const uint32_t count = read_be32(&aiff->reader, chunk.payload, 0) >> 16;
    int64_t at = 2;
    for (uint32_t i = 0; i < count && aiff->text_chunks < text_chunk_limit; ++i) {
        const uint32_t size = read_be32(&aiff->reader, chunk.payload, at + 4) & 0xFFFF;
        Chunk comment = chunk;
        comment.payload = sub_span(chunk.payload, at + head_size, size);
        take_note(comment, aiff);
        at += head_size + size + size % 2;
    }
}

struct AiffHandler {
    uint32_t id;
    void (*take)(const Chunk& chunk, AiffFile* aiff);
};

constexpr AiffHandler aiff_handlers[] = {
    {fourcc("COMM"), take_common},
    {fourcc("SSND"), take_sound},
    {fourcc("CHAN"), take_layout},
    {fourcc("NAME"), take_name},
    {fourcc("AUTH"), take_author},
    {fourcc("ANNO"), take_note},
    {fourcc("COMT"), take_comments},
    {fourcc("ID3 "), take_id3v2},
    {fourcc("id3 "), take_id3v2},
};

void walk_chunks(AiffFile* aiff) {
    Span rest = sub_span(aiff->form, riff_header_size);
    int64_t zeros = 0;
    Chunk chunk;
    while (read_chunk(&aiff->reader, rest, &chunk, std::endian::big)) {
        add_to_chain(&aiff->sound.chain, {.id = chunk.id, .follows_zeros = zeros != 0});
        for (const AiffHandler& handler : aiff_handlers) {
            if (handler.id == chunk.id) {
                handler.take(chunk, aiff);
            }
        }
        // Some writers leave the pad byte out.
        rest = {chunk.payload.end, rest.end};
        zeros = count_zeros(&aiff->reader, rest, 0);
        if (zeros < 0) {
            return;
        }
        rest.start += zeros;
    }
}

SampleForm find_form(uint32_t type) {
    const CompressionRow* row = find_row(compressions, &CompressionRow::type, type);
    return row != nullptr ? row->form : SampleForm{.fourcc = type};
}

void read_common(AiffFile* aiff) {
    uint8_t fields[common_with_type_size] = {};
    if (read_some(&aiff->reader, aiff->common, 0, fields, sizeof fields) < common_size) {
        return;
    }
    SoundFile* sound = &aiff->sound;
    sound->facts.channels = ReadBE16(fields);
    sound->facts.sample_rate = read_extended(fields + 8);
    const uint32_t type = aiff->is_compressed ? ReadBE32(fields + common_size) : fourcc("NONE");
    set_sample_form(sound, find_form(type), ReadBE16(fields + 6));
    if (aiff->is_compressed) {
        char text[fourcc_text_size];
        printable_fourcc_text(type, text);
        copy_utf8(sound->facts.codec_id, text);
    } else {
        sound->facts.codec_id[0] = '\0';
    }
    // Of blocks the number of those is told.
    const uint64_t blocks = ReadBE32(fields + 2);
    const bool counts_blocks = sound->form.block_samples > 1;
    sound->facts.samples = blocks * (counts_blocks ? sound->form.block_samples : 1);
}

} // namespace

int AnalyzeAiffFile(FileRecord* file, const Output& out) {
    AiffFile aiff;
    reader_open(&aiff.reader, file);
    open_sound_file(&aiff.sound);
    aiff.sound.header_name = "COMM";
    aiff.form = span_behind_id3v2(&aiff.reader);
    const Bytes head = read_view(&aiff.reader, aiff.form, 0, riff_header_size);
    aiff.is_compressed = has_at(head, 8, "AIFC");
    walk_chunks(&aiff);
    reader_allow(&aiff.reader, walk_allowance);
    read_common(&aiff);
    TagTexts tag;
    read_id3v2_texts(&aiff.reader, aiff.id3v2, &tag);
    complete_texts(&tag, aiff.sound.texts);
    aiff.sound.texts = tag;
    set_label(out.record, "%s", aiff.is_compressed ? "[AIFF-C]" : "[AIFF]");
    if (out.details != nullptr) {
        copy_utf8(out.details->format_profile, aiff.is_compressed ? "AIFF-C" : "");
    }
    write_sound_file(&aiff.sound, out);
    note_work_limit(out, aiff.reader);
    return 0;
}

} // namespace zat
