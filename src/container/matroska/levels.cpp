#include "container/matroska/levels.h"

#include "container/matroska/ids.h"

#include <algorithm>
#include <iterator>

namespace zat::matroska {

namespace {

constexpr int64_t most_junk = 1 << 20; // bytes searched

// Moves to the next identifier of the level, from the cursor on.
bool find_level1(Reader* reader, ElementCursor* cursor) {
    constexpr uint32_t id_size = 4;
    const int64_t limit = std::min(cursor->parent.end, cursor->position + most_junk);
    while (cursor->position + id_size <= limit) {
        const Bytes bytes = read_view(reader, cursor->parent,
            cursor->position - cursor->parent.start, BlockReader::jump_size);
        for (size_t i = 0; i + id_size <= bytes.size(); ++i) {
            if (is_level1(ReadBE32(bytes.data() + i))) {
                cursor->position += static_cast<int64_t>(i);
                return true;
            }
        }
        if (bytes.size() < id_size) {
            return false;
        }
        cursor->position += static_cast<int64_t>(bytes.size() - id_size + 1);
    }
    return false;
}

// Whether the level goes on at the cursor, or ends there.
bool goes_on(Reader* reader, const ElementCursor& cursor) {
    ElementCursor ahead = cursor;
    Element element;
    return cursor.position == cursor.parent.end ||
           (next_element(reader, &ahead, &element) && is_level1(element.id));
}

} // namespace

bool is_level1(uint32_t id) {
    static constexpr uint32_t ids[] = {id_seek_head, id_info, id_tracks, id_cluster, id_cues,
        id_attachments, id_chapters, id_tags};
    return std::find(std::begin(ids), std::end(ids), id) != std::end(ids);
}

bool next_level1(Reader* reader, ElementCursor* cursor, Element* element) {
    while (cursor->position < cursor->parent.end && !reader->limited) {
        const int64_t start = cursor->position;
        const bool found = next_element(reader, cursor, element);
        if (found && is_level1(element->id)) {
            return true;
        }
        // Of unknown size are clusters and segments only.
        if (!found || element->unknown_size || !goes_on(reader, *cursor)) {
            cursor->position = start + 1;
            cursor->damaged = true;
            if (!find_level1(reader, cursor)) {
                return false;
            }
        }
    }
    return false;
}

} // namespace zat::matroska
