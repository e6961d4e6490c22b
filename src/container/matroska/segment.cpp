#include "container/matroska/segment.h"

#include "common/text/text.h"
#include "container/matroska/ebml.h"
#include "container/matroska/ids.h"
#include "container/matroska/levels.h"
#include "container/matroska/tags.h"
#include "container/matroska/tracks.h"

#include <algorithm>
#include <cmath>

namespace zat::matroska {

namespace {

// The places that seek heads name.
struct Seeks {
    static constexpr uint32_t most = 16;

    struct Row {
        uint64_t id;
        uint64_t position; // from the segment's data
    };
    Row rows[most];
    uint32_t count = 0;
};

// Each kind counts once, wherever it stands, but tags, and tracks, whose entries do.
bool is_first(Segment* segment, uint32_t id) {
    static constexpr uint32_t once[] = {id_info, id_chapters, id_attachments};
    const auto* kind = std::find(std::begin(once), std::end(once), id);
    const uint32_t bit = kind == std::end(once) ? 0 : 1U << (kind - std::begin(once));
    const bool first = (segment->parts_read & bit) == 0;
    segment->parts_read |= bit;
    return first;
}

// A segment may have several; seek heads may name one twice.
void add_tags(Span data, Segment* segment) {
    for (uint32_t i = 0; i < segment->tags_count; ++i) {
        if (segment->tags[i].start == data.start) {
            return;
        }
    }
    if (segment->tags_count < most_tags) {
        segment->tags[segment->tags_count++] = data;
    }
}

void read_seek_head(Reader* reader, Span data, Segment* segment, Seeks* seeks) {
    const Span span = segment->span;
    ElementCursor cursor = children_of(data);
    Element seek;
    while (seeks->count < Seeks::most && next_element(reader, &cursor, &seek)) {
        if (seek.id != id_seek) {
            continue;
        }
        Seeks::Row row = {0, UINT64_MAX};
        ElementCursor inner = children_of(seek.data);
        Element element;
        while (next_element(reader, &inner, &element)) {
            if (element.id == id_seek_id) {
                row.id = read_uint(reader, element, 0);
            } else if (element.id == id_seek_position) {
                row.position = read_uint(reader, element, UINT64_MAX);
            }
        }
        if (row.id == id_cues && row.position < static_cast<uint64_t>(size_of(span))) {
            segment->cues = span.start + static_cast<int64_t>(row.position);
        } else if (row.id != id_cluster) {
            seeks->rows[seeks->count++] = row;
        }
    }
}

void read_info(Reader* reader, Span data, Segment* segment) {
    ElementCursor cursor = children_of(data);
    Element element;
    while (next_element(reader, &cursor, &element)) {
        switch (element.id) {
        case id_timestamp_scale:
            segment->timestamp_scale = read_uint(reader, element, 0);
            break;
        case id_duration:
            segment->duration = read_float(reader, element, 0);
            segment->duration_told = segment->duration > 0;
            break;
        case id_date:
            segment->date_told = size_of(element.data) == 8;
            segment->date = static_cast<int64_t>(read_uint(reader, element, 0));
            break;
        case id_title:
            segment->title = element.data;
            break;
        case id_muxing_app:
            segment->muxing_app = element.data;
            break;
        case id_writing_app:
            segment->writing_app = element.data;
            break;
        default:
            break;
        }
    }
    if (segment->timestamp_scale == 0) {
        segment->timestamp_scale = default_timestamp_scale;
    }
}

// Everything in front of the first cluster.
void walk_head(Reader* reader, Segment* segment, Seeks* seeks) {
    ElementCursor cursor = children_of(segment->span);
    Element element;
    while (next_level1(reader, &cursor, &element)) {
        if (element.id == id_cluster) {
            segment->first_cluster = element.start;
            return;
        }
        if (element.id == id_seek_head) {
            read_seek_head(reader, element.data, segment, seeks);
        }
        read_part(reader, element, segment);
    }
}

// What seek heads name behind it. A second seek head adds rows on the way.
void follow_seeks(Reader* reader, Segment* segment, Seeks* seeks) {
    const Span span = segment->span;
    for (uint32_t i = 0; i < seeks->count; ++i) {
        const Seeks::Row row = seeks->rows[i];
        if (row.position >= static_cast<uint64_t>(size_of(span))) {
            continue;
        }
        ElementCursor cursor = {span, span.start + static_cast<int64_t>(row.position)};
        Element element;
        const bool was_walked =
            segment->first_cluster < 0 || cursor.position < segment->first_cluster;
        if (was_walked || !next_element(reader, &cursor, &element) || element.id != row.id) {
            continue;
        }
        if (element.id == id_seek_head) {
            read_seek_head(reader, element.data, segment, seeks);
        }
        read_part(reader, element, segment);
    }
}

// The EBML head and whatever stands before the segment.
bool find_segment(Reader* reader, Segment* segment) {
    ElementCursor cursor = children_of(whole_file(reader));
    Element element;
    while (next_element(reader, &cursor, &element)) {
        if (element.id == id_ebml) {
            ElementCursor head = children_of(element.data);
            while (next_element(reader, &head, &element)) {
                char type[16] = "";
                if (element.id == id_doc_type) {
                    read_text(reader, element, type);
                    segment->is_webm = bounded_text(type) == "webm";
                }
            }
        } else if (element.id == id_segment) {
            segment->span = element.data;
            segment->said_end = element.said_end;
            segment->unknown_size = element.unknown_size;
            if (element.said_end == element.data.start) { // never filled in: was broken off
                segment->span.end = cursor.parent.end;
                segment->said_end = cursor.parent.end;
                segment->unknown_size = true;
            }
            return true;
        }
    }
    return false;
}

} // namespace

void read_part(Reader* reader, const Element& element, Segment* segment) {
    if (!is_first(segment, element.id)) {
        return;
    }
    switch (element.id) {
    case id_info:
        read_info(reader, element.data, segment);
        break;
    case id_tracks:
        read_tracks(reader, element.data, segment);
        break;
    case id_chapters:
        read_chapters(reader, element.data, segment);
        break;
    case id_attachments:
        read_attachments(reader, element.data, segment);
        if (segment->first_cluster >= 0 && element.start > segment->first_cluster) {
            segment->bytes_behind_clusters += element.data.end - element.start;
        }
        break;
    case id_tags:
        add_tags(element.data, segment);
        break;
    default:
        break;
    }
}

bool read_segment(Reader* reader, Segment* segment) {
    if (!find_segment(reader, segment)) {
        return false;
    }
    Seeks seeks;
    walk_head(reader, segment, &seeks);
    follow_seeks(reader, segment, &seeks);
    return true;
}

} // namespace zat::matroska
