// Titles, artists, programs and pictures in the user data and metadata atoms of a movie.
#pragma once

#include "container/mp4/atom_reader.h"
#include "zat/details.h"

namespace zat::mp4 {

// Reads a "meta" atom: the item list of iTunes, or QuickTime's with keys. What stands already in
// the details stays.
void read_metadata(Reader* reader, Span meta, ZatDetails* details);

// Reads a movie's "udta" atom with the metadata in it, and QuickTime's and 3GPP's own texts
// (QuickTime File Format, "User Data Atoms"; 3GPP TS 26.244, 8).
void read_user_data(Reader* reader, Span user_data, ZatDetails* details);

constexpr uint32_t metadata_text_size = 1024; // bytes of a text that are read

// A text behind its length and language, as in QuickTime's user data, to UTF-8.
void read_international_text(Reader* reader, Span payload, char* out, size_t size);

} // namespace zat::mp4
