// The typed details of RealMedia files.
#pragma once

#include "common/bytes/bytes.h"
#include "zat/details.h"

#include <cstddef>

namespace zat {

// Where the parts of a media properties chunk stand that have no fixed place.
struct RealMediaStreamHead {
    Bytes chunk;    // from its id on, with zeros behind its end
    size_t name_at; // a counted text
    size_t mime_at; // a counted text
    size_t data_at; // the type-specific data with its length
};

// Adds a video, audio or other stream; a logical stream, which only tells of the file, is none.
void describe_realmedia_stream(const RealMediaStreamHead& head, ZatDetails* details);

// Takes title and author from a content description chunk.
void describe_realmedia_content(Bytes chunk, ZatDetails* details);

} // namespace zat
