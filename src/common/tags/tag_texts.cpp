#include "common/tags/tag_texts.h"

#include "common/record/details.h"
#include "common/text/text.h"
#include "common/text/text_codes.h"
#include "common/text/utf8.h"

#include <algorithm>
#include <cmath>

namespace zat {

namespace {

constexpr uint32_t item_limit = 1024;
constexpr size_t shown_size = 121; // bytes of artist and title in a line, terminator included

// APE tag items (APEv2): size of the value, flags, key with its terminator, value.
constexpr int64_t ape_item_header_size = 8;
constexpr uint32_t ape_key_limit = 256;
constexpr uint32_t ape_value_limit = 1024; // bytes read of one value
constexpr uint32_t ape_type_mask = 6;      // 0 is text

constexpr uint32_t id3v1_title = 3;
constexpr uint32_t id3v1_artist = 33;
constexpr uint32_t id3v1_album = 63;
constexpr uint32_t id3v1_field_size = 30;

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos
               ? std::string_view{}
               : text_from(text.substr(0, text.find_last_not_of(blanks) + 1), first);
}

// True when the value is one of those that the field joins.
bool has_value(std::string_view field, std::string_view value) {
    constexpr std::string_view separator = ", ";
    for (size_t at = field.find(value); at != std::string_view::npos;
         at = field.find(value, at + 1)) {
        const bool starts = at == 0 || field.substr(0, at).ends_with(separator);
        const std::string_view rest = text_from(field, at + value.size());
        if (starts && (rest.empty() || rest.starts_with(separator))) {
            return true;
        }
    }
    return false;
}

// The field that an item of Vorbis comments or APE tags fills, null for others.
TagText* field_of(std::string_view name, TagTexts* texts) {
    if (same_letters(name, "artist")) {
        return &texts->artist;
    }
    if (same_letters(name, "title")) {
        return &texts->title;
    }
    return same_letters(name, "album") ? &texts->album : nullptr;
}

// An item whose name tells what it is in every kind of tag.
void take_common_item(std::string_view name, std::string_view value, TagTexts* texts) {
    if (same_letters(name, "cuesheet")) {
        texts->cuesheet = true;
    }
    take_gain(name, value, texts);
}

// Values are set apart by zero bytes.
void add_values(std::string_view bytes, TagText& field) {
    for (;;) {
        TagText value;
        unknown_to_utf8(bytes, value);
        add_tag_value(field, bounded_text(value));
        const size_t zero = bytes.find('\0');
        if (zero == std::string_view::npos) {
            return;
        }
        bytes.remove_prefix(zero + 1);
    }
}

void take_ape_item(std::string_view key, std::string_view value, uint32_t flags, TagTexts* texts) {
    if (key.size() >= 9 && same_letters(key.substr(0, 9), "cover art")) {
        ++texts->pictures;
        return;
    }
    if ((flags & ape_type_mask) != 0) {
        return;
    }
    take_common_item(key, value, texts);
    if (TagText* field = field_of(key, texts)) {
        add_values(value, *field);
    }
}

void complete_text(TagText& text, const TagText& further) {
    if (text[0] == '\0') {
        copy_utf8(text, bounded_text(further));
    }
}

std::string_view title_of(const TagTexts& texts) {
    return bounded_text(texts.title[0] != '\0' ? texts.title : texts.album);
}

void add_id3v1_field(Bytes tag, uint32_t offset, TagText& field) {
    TagText value;
    unknown_to_utf8(text_of(tag.subspan(offset, id3v1_field_size)), value);
    add_tag_value(field, bounded_text(value));
}

} // namespace

void add_tag_value(TagText& field, std::string_view value) {
    value = trimmed(value);
    const std::string_view present = bounded_text(field);
    if (value.empty() || has_value(present, value)) {
        return;
    }
    const size_t used = present.size();
    if (used == 0) {
        copy_utf8(field, value);
    } else if (used + 2 < tag_text_size) {
        copy_utf8(field + used, tag_text_size - used, ", ");
        copy_utf8(field + used + 2, tag_text_size - used - 2, value);
    }
}

// "-7.89 dB", with a point or a comma.
void take_gain(std::string_view name, std::string_view value, TagTexts* texts) {
    constexpr double gain_limit = 100;
    double* gain = same_letters(name, "replaygain_track_gain")   ? &texts->track_gain
                   : same_letters(name, "replaygain_album_gain") ? &texts->album_gain
                                                                 : nullptr;
    if (gain == nullptr || !std::isnan(*gain)) {
        return;
    }
    value = trimmed(value);
    const bool negative = value.starts_with('-');
    value.remove_prefix(negative || value.starts_with('+') ? 1 : 0);
    int64_t digits = 0; // with the decimals
    int64_t scale = 0;  // of the decimals; 0 before the point
    size_t count = 0;
    for (const char c : value) {
        if ((c == '.' || c == ',') && scale == 0) {
            scale = 1;
        } else if (c >= '0' && c <= '9' && ++count <= 9) {
            digits = digits * 10 + c - '0';
            scale *= 10;
        } else {
            break;
        }
    }
    const double decibels =
        static_cast<double>(digits) / static_cast<double>(std::max<int64_t>(scale, 1));
    if (count != 0 && decibels < gain_limit) {
        *gain = negative ? -decibels : decibels;
    }
}

void take_comment_text(const VorbisComment& comment, TagTexts* texts) {
    if (same_letters(comment.name, "metadata_block_picture")) {
        ++texts->pictures;
        return;
    }
    take_common_item(comment.name, comment.value, texts);
    if (TagText* field = field_of(comment.name, texts)) {
        TagText value;
        claimed_utf8_to_utf8(comment.value, value, sizeof value);
        add_tag_value(*field, bounded_text(value));
    }
}

void read_comment_texts(VorbisComments* comments, TagTexts* texts) {
    VorbisComment comment;
    while (next_comment(comments, &comment)) {
        take_comment_text(comment, texts);
    }
}

void read_ape_texts(Reader* reader, Span items, TagTexts* texts) {
    int64_t at = 0;
    for (uint32_t i = 0; i < item_limit; ++i) {
        const Bytes head = read_view(reader, items, at, ape_item_header_size + ape_key_limit);
        if (head.size() <= ape_item_header_size) {
            return;
        }
        const uint32_t size = ReadLE32(head.data());
        const uint32_t flags = ReadLE32(head.data() + 4);
        const std::string_view name = text_of(head.subspan(ape_item_header_size));
        const size_t key_length = name.find('\0');
        if (key_length == std::string_view::npos) {
            return;
        }
        char key[ape_key_limit];
        copy_text(key, name.substr(0, key_length));
        at += ape_item_header_size + static_cast<int64_t>(key_length) + 1;
        if (size > size_of(items) - at) {
            return;
        }
        std::string_view value =
            text_of(read_view(reader, items, at, std::min(size, ape_value_limit)));
        if (size > ape_value_limit) {
            value = without_cut_character(value);
        }
        take_ape_item(bounded_text(key), value, flags, texts);
        at += size;
    }
}

void read_id3v1_texts(Reader* reader, Span tag, TagTexts* texts) {
    uint8_t bytes[id3v1_album + id3v1_field_size];
    if (read_all(reader, tag, 0, bytes, sizeof bytes)) {
        add_id3v1_field(bytes, id3v1_title, texts->title);
        add_id3v1_field(bytes, id3v1_artist, texts->artist);
        add_id3v1_field(bytes, id3v1_album, texts->album);
    }
}

void complete_texts(TagTexts* texts, const TagTexts& further) {
    complete_text(texts->artist, further.artist);
    complete_text(texts->title, further.title);
    complete_text(texts->album, further.album);
    if (std::isnan(texts->track_gain) && std::isnan(texts->album_gain)) {
        texts->track_gain = further.track_gain;
        texts->album_gain = further.album_gain;
    }
    texts->pictures += further.pictures;
    texts->cuesheet = texts->cuesheet || further.cuesheet;
}

void tag_details(const TagTexts& texts, ZatDetails* details) {
    if (details != nullptr) {
        copy_utf8(details->artist, bounded_text(texts.artist));
        copy_utf8(details->title, title_of(texts));
        details->pictures += texts.pictures;
    }
}

void write_artist_and_title(const TagTexts& texts, const Output& out) {
    const std::string_view artist = bounded_text(texts.artist);
    const std::string_view title = title_of(texts);
    char shown_artist[shown_size];
    char shown_title[shown_size];
    utf8_to_cp932(artist, shown_artist);
    utf8_to_cp932(title, shown_title);
    const bool both = shown_artist[0] != '\0' && shown_title[0] != '\0';
    format_text(out.record->extra_info, sizeof out.record->extra_info, "%s%s%s", shown_artist,
        both ? " - " : "", shown_title);
    tag_details(texts, out.details);
}

} // namespace zat
