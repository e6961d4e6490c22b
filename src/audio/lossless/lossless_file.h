// What the files of lossless audio have in common, and MusePack's and those of DSD, which look the
// same from outside: one stream between tags, and a record with one line for it.
#pragma once

#include "common/file/reader.h"
#include "common/record/details.h"
#include "common/tags/outer_tags.h"
#include "common/tags/tag_texts.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zat {

// How a kind of file is called.
struct LosslessKind {
    const char* label;       // of the record
    std::string_view format; // in the details
    std::string_view codec;
};

constexpr int64_t not_declared = -1;

// Hz: this and more is nonsense. DSD goes to 1024 times 48,000 Hz.
constexpr uint32_t lossless_rate_limit = 10'000'000;
constexpr uint32_t dsd_rate_limit = 50'000'000;
constexpr uint32_t most_lossless_channels = 254;

// What an analyser finds out; from it the record and the details are written.
struct LosslessFile {
    Reader reader;
    OuterTags tags; // tags.stream begins at the format's first byte

    ZatStream facts;
    char name[64] = {};           // in the brackets of the line
    char format_profile[16] = {}; // in the details
    uint32_t channel_mask = 0;    // as the file tells it
    bool is_dsd = false;          // samples of one bit; rates are higher
    bool constant_rate = false;   // rate times channels, whatever the payload
    bool shows_ratio = true;

    int64_t payload = 0; // bytes of it that the file holds
    int64_t declared_payload = not_declared;
    bool truncated = false; // without a declared payload
    bool damaged = false;   // an impossible field, or a wrong checksum of the header
    char note[96] = {};     // one more

    uint32_t comments = 0; // Vorbis comment items
    uint32_t pictures = 0; // blocks of the stream's own
    bool cuesheet = false;
    int64_t junk = 0; // bytes before the stream
    Span id3v2;       // a tag inside the stream
    bool shows_encoder = false;
    bool correction_file = false;
    bool gapless = false;

    TagTexts comment_texts; // Vorbis comments
    TagTexts own_texts;     // the format's own; its gains come before those of tags
};

// Starts on an open file and measures the tags around the stream.
void open_lossless_file(LosslessFile* lossless, FileRecord* file);

// Moves the stream's start to the first place in its first MiB where the bytes stand. False, and
// nothing is moved, when there is none.
bool find_stream_start(LosslessFile* lossless, std::string_view magic);

// Sets the length in samples per channel, and in seconds where the rate is known.
void set_samples(LosslessFile* lossless, uint64_t samples);

// The sound's form, each left unknown where it is impossible.
void set_sample_rate(LosslessFile* lossless, uint64_t rate);
void set_channels(LosslessFile* lossless, uint64_t channels);

// The layout, and what the details tell of it.
void set_channel_mask(LosslessFile* lossless, uint32_t mask);

// Appends a word to the name, behind a blank.
void add_name_word(LosslessFile* lossless, std::string_view word);

// "DSD64" for 64 times 44,100 or 48,000 Hz, "DSD" for a rate that is no such multiple.
void dsd_name(uint32_t rate, char (&out)[16]);

// Writes the record and the details.
void write_lossless_file(LosslessFile* lossless, const LosslessKind& kind, const Output& out);

} // namespace zat
