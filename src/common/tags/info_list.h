// The texts of a RIFF file's INFO list (Multimedia Programming Interface and Data Specifications
// 1.0, "INFO List Chunk").
#pragma once

#include "common/file/riff.h"
#include "common/tags/tag_texts.h"

namespace zat {

// Reads artist, title and album, and the program that wrote the file, from the list's chunks.
void read_info_list(Reader* reader, Span list, TagTexts* texts, TagText& writer);

} // namespace zat
