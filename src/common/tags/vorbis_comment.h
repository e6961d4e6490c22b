// Vorbis comments (Vorbis I, 5.2.1): the writer's name, then items
// "NAME=value" in UTF-8. Used by FLAC, Vorbis, Opus, Speex and Theora.
#pragma once

#include "common/file/reader.h"

#include <cstdint>
#include <string_view>

namespace zat {

struct VorbisComment {
    std::string_view name;  // of any case; empty when the item has no "="
    std::string_view value; // cut, where the item is longer than what is read of it
};

// A walk over the items. Whatever their lengths claim, it stays inside the block; it ends with the
// first item that does not lie wholly in it, and after 1,024 of them.
struct VorbisComments {
    // In memory, or in a file.
    Bytes bytes;
    Reader* reader = nullptr;
    Span span;

    int64_t at = 0; // the next item
    uint32_t left = 0;
    uint32_t read = 0;     // items so far
    char writer[256] = {}; // UTF-8: "reference libFLAC 1.3.2 20170101"
};

// Starts behind the framing that the container has, and reads the writer.
void open_comments(VorbisComments* comments, Bytes block);
void open_comments(VorbisComments* comments, Reader* reader, Span block);

// Reads one item, valid until the next one. False at the end.
bool next_comment(VorbisComments* comments, VorbisComment* comment);

} // namespace zat
