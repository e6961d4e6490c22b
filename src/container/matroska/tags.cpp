#include "container/matroska/tags.h"

#include "common/text/text.h"
#include "container/matroska/ebml.h"
#include "container/matroska/ids.h"

#include <algorithm>
#include <iterator>

namespace zat::matroska {

namespace {

// What a tag is about.
struct Targets {
    static constexpr uint64_t whole_file = 50; // TargetTypeValue: an album, film or episode

    uint64_t level = whole_file;
    uint64_t track_uid = 0;
    bool is_part = false; // of something with an identifier of its own
};

Targets read_targets(Reader* reader, Span data) {
    Targets targets;
    ElementCursor cursor = children_of(data);
    Element element;
    while (next_element(reader, &cursor, &element)) {
        const uint64_t value = read_uint(reader, element, 0);
        switch (element.id) {
        case id_target_type_value:
            targets.level = value != 0 ? value : targets.level;
            break;
        case id_tag_track_uid:
            targets.track_uid = targets.track_uid == 0 ? value : targets.track_uid;
            targets.is_part |= value != 0;
            break;
        case id_tag_edition_uid:
        case id_tag_chapter_uid:
        case id_tag_attachment_uid:
            targets.is_part |= value != 0;
            break;
        default:
            break;
        }
    }
    return targets;
}

// Digits up to the first other character; 0 when it overflows.
uint64_t parse_number(std::string_view text) {
    uint64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') {
            break;
        }
        if (value > (UINT64_MAX - 9) / 10) {
            return 0;
        }
        value = value * 10 + static_cast<uint64_t>(c - '0');
    }
    return value;
}

// "hh:mm:ss.nnnnnnnnn" in seconds.
double parse_duration(std::string_view text) {
    double seconds = 0;
    for (int field = 0; field < 3; ++field) {
        seconds = seconds * 60 + static_cast<double>(parse_number(text));
        const size_t end = text.find_first_not_of("0123456789");
        if (end == std::string_view::npos || (field < 2 && text[end] != ':')) {
            return field == 2 ? seconds : 0;
        }
        text.remove_prefix(end + 1);
    }
    constexpr size_t most_decimals = 9;
    double unit = 1;
    const std::string_view decimals = text.substr(0, most_decimals);
    for (size_t i = 0; i < decimals.size() && decimals[i] >= '0' && decimals[i] <= '9'; ++i) {
        unit *= 10;
    }
    return seconds + static_cast<double>(parse_number(decimals)) / unit;
}

struct SimpleTag {
    char name[32] = "";
    Span value;
};

SimpleTag read_simple_tag(Reader* reader, Span data) {
    SimpleTag tag;
    ElementCursor cursor = children_of(data);
    Element element;
    while (next_element(reader, &cursor, &element)) {
        if (element.id == id_tag_name) {
            read_text(reader, element, tag.name);
        } else if (element.id == id_tag_string) {
            tag.value = element.data;
        }
    }
    return tag;
}

void set_track_tag(Reader* reader, std::string_view name, Span value, Track* track) {
    if (name == "ENCODER") {
        track->encoder = value;
        return;
    }
    const Bytes bytes = read_view(reader, value, 0, 32);
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (name == "BPS") {
        track->statistics.bit_rate = parse_number(text);
    } else if (name == "NUMBER_OF_FRAMES") {
        track->statistics.frames = parse_number(text);
    } else if (name == "NUMBER_OF_BYTES") {
        track->statistics.bytes = parse_number(text);
    } else if (name == "DURATION") {
        track->statistics.duration = parse_duration(text);
    }
}

void set_file_tag(std::string_view name, const Targets& targets, Span value, Segment* segment) {
    const bool is_title = name == "TITLE" && targets.level == Targets::whole_file;
    if (is_title && size_of(segment->tag_title) == 0) {
        segment->tag_title = value;
    } else if (name == "ARTIST" && size_of(segment->tag_artist) == 0) {
        segment->tag_artist = value;
    }
}

void read_tag(Reader* reader, Span data, Segment* segment) {
    Targets targets;
    ElementCursor cursor = children_of(data);
    Element element;
    while (next_element(reader, &cursor, &element)) {
        if (element.id == id_targets) {
            targets = read_targets(reader, element.data);
        }
    }
    Track* end = segment->tracks + kept_tracks(*segment);
    Track* track = std::find_if(segment->tracks, end,
        [&](const Track& each) { return targets.track_uid != 0 && each.uid == targets.track_uid; });
    if (targets.is_part && track == end) {
        return;
    }
    cursor = children_of(data);
    while (next_element(reader, &cursor, &element)) {
        if (element.id != id_simple_tag) {
            continue;
        }
        const SimpleTag tag = read_simple_tag(reader, element.data);
        if (track != end) {
            set_track_tag(reader, bounded_text(tag.name), tag.value, track);
        } else {
            set_file_tag(bounded_text(tag.name), targets, tag.value, segment);
        }
    }
}

} // namespace

void read_tags(Reader* reader, Span data, Segment* segment) {
    ElementCursor cursor = children_of(data);
    Element element;
    while (next_element(reader, &cursor, &element)) {
        if (element.id == id_tag) {
            read_tag(reader, element.data, segment);
        }
    }
}

void read_chapters(Reader* reader, Span data, Segment* segment) {
    bool default_found = false;
    bool any_found = false;
    ElementCursor editions = children_of(data);
    Element edition;
    while (!default_found && next_element(reader, &editions, &edition)) {
        if (edition.id != id_edition_entry) {
            continue;
        }
        uint32_t atoms = 0;
        ElementCursor cursor = children_of(edition.data);
        Element element;
        while (next_element(reader, &cursor, &element)) {
            if (element.id == id_edition_flag_default) {
                default_found = read_uint(reader, element, 0) != 0;
            }
            atoms += element.id == id_chapter_atom ? 1 : 0;
        }
        if (default_found || !any_found) {
            segment->chapters = atoms;
        }
        any_found = true;
    }
}

void read_attachments(Reader* reader, Span data, Segment* segment) {
    ElementCursor files = children_of(data);
    Element file;
    while (next_element(reader, &files, &file)) {
        if (file.id != id_attached_file) {
            continue;
        }
        ++segment->attachments;
        ElementCursor cursor = children_of(file.data);
        Element element;
        while (next_element(reader, &cursor, &element)) {
            char type[32] = "";
            if (element.id == id_file_media_type) {
                read_text(reader, element, type);
                segment->pictures += bounded_text(type).starts_with("image/") ? 1 : 0;
            }
        }
    }
}

} // namespace zat::matroska
