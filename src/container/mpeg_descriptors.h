// Descriptors of programs and their streams (ISO/IEC 13818-1, 2.6), as maps of transport and of
// program streams have them.
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

struct Descriptor {
    uint8_t tag = 0;
    Bytes data;
};

// Takes the first descriptor off `rest`. False when none is left or it does not fit.
bool next_descriptor(Bytes* rest, Descriptor* descriptor);

// Appends a language of three letters behind "/", unless it stands there already.
void add_language(char (&languages)[32], Bytes code);

// ISO_639_language_descriptor (2.6.18): the languages, unless an earlier one told some, and as
// ZatStreamFlag what audio_type says.
constexpr uint8_t tag_language = 0x0A;
void read_languages(Bytes data, char (&languages)[32], uint32_t* flags);

} // namespace zat
