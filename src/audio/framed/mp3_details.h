// The typed details of a bare MPEG audio file.
#pragma once

#include "audio/mpeg_audio.h"
#include "common/record/details.h"
#include "common/tags/outer_tags.h"

namespace zat {

// Artist, title and pictures of the tags around the stream.
void read_tag_details(Reader* reader, const OuterTags& tags, ZatDetails* details);

// The stream's facts, by its first frame (`start` and what a VBR header in it counts) and the bytes
// between the tags; what is missing of those that the header counts goes to the file's details.
void read_mp3_facts(
    Reader* reader, const OuterTags& tags, int64_t start, ZatStream* stream, ZatDetails* details);

} // namespace zat
