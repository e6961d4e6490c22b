// What lines and details show of tags: artist, title, pictures and gains, from ID3v2 (id3.org,
// ID3v2.4.0 structure and frames, and versions 2.2 and 2.3), APE versions 1 and 2, ID3v1 and Vorbis
// comments.
#pragma once

#include "common/file/reader.h"
#include "common/record/output.h"
#include "common/tags/vorbis_comment.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

namespace zat {

// Bytes: enough for 120 characters of any kind, which is what a line shows.
constexpr size_t tag_text_size = 512;
using TagText = char[tag_text_size];

// One source's fields, UTF-8. The different values of one field are joined with ", ".
struct TagTexts {
    TagText artist = {};
    TagText title = {};
    TagText album = {};
    double track_gain = std::numeric_limits<double>::quiet_NaN(); // dB
    double album_gain = std::numeric_limits<double>::quiet_NaN();
    uint32_t pictures = 0;
    bool cuesheet = false;
};

// The ID3v2 tags that stand one behind the other in the span.
void read_id3v2_texts(Reader* reader, Span tags, TagTexts* texts);

// The items of an APE tag, without header and footer.
void read_ape_texts(Reader* reader, Span items, TagTexts* texts);

// The 128 bytes of an ID3v1 tag.
void read_id3v1_texts(Reader* reader, Span tag, TagTexts* texts);

// All items of an opened Vorbis comment.
void read_comment_texts(VorbisComments* comments, TagTexts* texts);

// One item of it.
void take_comment_text(const VorbisComment& comment, TagTexts* texts);

// A ReplayGain value, by its name in all kinds of tags.
void take_gain(std::string_view name, std::string_view value, TagTexts* texts);

// Fills what is still empty from a source of lower rank; pictures add up. The ranks: Vorbis
// comments, APE, ID3v2, the container's own, ID3v1.
void complete_texts(TagTexts* texts, const TagTexts& further);

// Adds a value, UTF-8, to a field unless it is empty or stands there already.
void add_tag_value(TagText& field, std::string_view value);

// Artist, title and pictures into the details, if any; the album where there is no title.
void tag_details(const TagTexts& texts, ZatDetails* details);

// "artist - title" into the record's extra-info text, each cut at 120 bytes, one alone without the
// other, the album where there is no title; both into the details.
void write_artist_and_title(const TagTexts& texts, const Output& out);

} // namespace zat
