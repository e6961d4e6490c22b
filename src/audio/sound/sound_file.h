// What files of plain sound have in common, AIFF, AU and CD audio tracks: one stream whose form a
// header tells, shown as WAVE files are.
#pragma once

#include "audio/sound/chunk_chain.h"
#include "common/catalogue/codec_names.h"
#include "common/record/details.h"
#include "common/tags/tag_texts.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace zat {

// How samples are stored, and what the catalogue calls it.
struct SampleForm {
    uint16_t tag = 0; // key of "[AVI-Audio]"; 0: `fourcc` is one of "[QT-AUDIO]"
    uint32_t fourcc = 0;
    bool is_pcm = false;
    PcmKind kind = PcmKind::signed_integer;
    std::endian order = std::endian::big;
    uint32_t bits = 0; // per sample; 0: as the header tells
    // Of formats that have blocks of a channel's samples.
    uint32_t block_bytes = 0;
    uint32_t block_samples = 0;
};

constexpr SampleForm pcm_form(PcmKind kind, uint32_t bits, std::endian order = std::endian::big) {
    return {.tag = static_cast<uint16_t>(kind == PcmKind::floating ? 0x0003 : 0x0001),
        .is_pcm = true,
        .kind = kind,
        .order = order,
        .bits = bits};
}

struct SoundFile {
    ZatStream facts;
    uint32_t bits = 0; // per sample, in the line
    SampleForm form = {};
    const char* header_name = nullptr; // of the chunk that tells the form, and its size
    uint32_t header_size = 0;
    bool tells_layout = false; // of the speakers, in whatever way
    uint32_t channel_mask = 0; // 0: not told, or without a name
    ChunkChain chain;
    int64_t announced = 0; // bytes of sound by the header, 0 when it does not tell
    int64_t available = 0; // of which the file holds
    TagTexts texts;
    TagText writer = {};
    char fact[64] = {}; // one more extra line
};

// Starts on a record of which nothing is set.
void open_sound_file(SoundFile* sound);

// Sets the codec, its name and what follows from form, channels and rate: bits and bit rate.
// `bits` are those that the header tells.
void set_sample_form(SoundFile* sound, const SampleForm& form, uint32_t bits);

// The samples per channel that a number of bytes holds; 0 for a form without such blocks.
uint64_t samples_of_bytes(const SoundFile& sound, int64_t bytes);

// Takes what programs write as annotation: "title=..." and the like in lines of their own,
// "program: ..." behind a zero byte, "Processed by ...". False when it is none of that.
bool take_annotation(std::string_view text, SoundFile* sound);

// Writes line, chain, note of what is missing, texts and play time, and the details.
void write_sound_file(SoundFile* sound, const Output& out);

} // namespace zat
