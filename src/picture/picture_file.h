// What the files of pictures have in common: one line without sound, between tags or alone.
#pragma once

#include "common/file/reader.h"
#include "common/record/details.h"

#include <cstdint>

namespace zat {

// What an analyser finds out; from it the record and the details are written.
struct PictureFile {
    Reader reader;
    Span span; // behind ID3v2 tags and zeros, should there be any

    ZatStream facts;
    char name[48] = {};           // in the brackets of the line
    char format_profile[16] = {}; // in the details
    uint32_t bits = 0;            // of the line
    bool shows_chroma = false;

    bool truncated = false;
    bool damaged = false;       // a header that cannot be
    uint64_t missing_bytes = 0; // of declared picture data
};

// Starts on an open file.
void open_picture_file(PictureFile* picture, FileRecord* file);

// Appends a word to the name, behind a blank.
void add_picture_word(PictureFile* picture, std::string_view word);

// Writes the record and the details.
void write_picture_file(PictureFile* picture, const char* label, const Output& out);

} // namespace zat
