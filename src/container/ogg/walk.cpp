#include "container/ogg/walk.h"

#include "container/ogg/codings.h"

#include <algorithm>

namespace zat::ogg {

namespace {

// The first page is looked for in so much of the file, behind tags.
constexpr int64_t start_reach = 1048576;

// Of a large file, the data's first pages are looked for in so much of its start, ...
constexpr int64_t head_reach = 1048576;
// ... and the last page of each stream in so much of its end.
constexpr int64_t tail_reach = 1048576;
constexpr int64_t tail_step = 65536;

// A page header behind a page, little else.
constexpr uint32_t page_look = 512;

LogicalStream* find_stream(Link* link, uint32_t serial) {
    for (int32_t i = 0; i < link->count; ++i) {
        if (link->streams[i].serial == serial) {
            return &link->streams[i];
        }
    }
    return nullptr;
}

Link* current_link(Walk* walk) {
    return walk->links > 1 ? &walk->later : &walk->first;
}

void close_later_link(Walk* walk) {
    if (walk->links > 1) {
        walk->later_seconds += link_seconds(walk->later);
    }
}

// A first page. One behind data begins the next link. False for one of a known serial: a fault.
bool open_logical(Walk* walk, const Page& page) {
    Link* link = current_link(walk);
    if (link->has_data) {
        close_later_link(walk);
        ++walk->links;
        link = &walk->later;
        link->count = 0;
        link->has_data = false;
    }
    if (find_stream(link, page.serial) != nullptr) {
        return false;
    }
    if (link->count < max_streams) {
        open_stream(&walk->reader, page, &link->streams[link->count++]);
    }
    return true;
}

void take(Walk* walk, const Page& page) {
    if ((page.flags & flag_first) != 0 && !open_logical(walk, page)) {
        return;
    }
    Link* link = current_link(walk);
    LogicalStream* stream = find_stream(link, page.serial);
    if (stream != nullptr) {
        take_page(&walk->reader, page, stream);
        link->has_data |= stream->packets > stream->header_packets || page.granule > 0;
    }
}

// What is left of the file at the position where a page should stand, and does not.
void note_rest(Walk* walk, int64_t position) {
    const Span rest = {position, walk->reader.block.file->size};
    walk->cut_header = has_at(read_view(&walk->reader, rest, 0, 4), 0, "OggS");
    walk->trailing = walk->cut_header ? 0 : static_cast<uint64_t>(size_of(rest));
}

// How much a stream's packets held before its first granule is not known then.
void note_lost_pages(Walk* walk) {
    Link* link = current_link(walk);
    for (int32_t i = 0; i < link->count; ++i) {
        link->streams[i].pages_lost |= link->streams[i].first_granule == 0;
    }
}

// Reads pages up to `end`; `done` tells when enough is known. Returns where it stopped. At the end
// of the file what is missing or left over is noted.
template <class Taker, class Done>
int64_t walk_pages(Walk* walk, int64_t position, int64_t end, Taker taker, Done done) {
    FileRecord* file = walk->reader.block.file;
    while (position < end && !done()) {
        Page page;
        if (!read_page(&walk->reader, position, &page)) {
            const int64_t next = walk->reader.limited
                                     ? -1
                                     : find_page(file, position + 1, std::min(end, file->size));
            if (next < 0) {
                if (end == file->size && !walk->reader.limited) {
                    note_rest(walk, position);
                }
                return end;
            }
            note_lost_pages(walk);
            position = next;
            continue;
        }
        if (end_of(page) > file->size) {
            walk->missing = static_cast<uint64_t>(end_of(page) - file->size);
            return end;
        }
        taker(page);
        position = end_of(page);
    }
    return position;
}

bool data_began(const Link& link) {
    return link.count != 0 &&
           std::all_of(link.streams, link.streams + link.count, [](const LogicalStream& stream) {
               const ZatStreamKind kind = kind_of(stream.coding);
               return stream.first_granule != 0 ||
                      (kind != ZAT_STREAM_AUDIO && kind != ZAT_STREAM_VIDEO);
           });
}

// Which streams of the first link have their last page in what was read of the tail.
struct Tail {
    bool seen[max_streams] = {};
    bool foreign = false; // a page of no known stream
};

void take_tail_page(Walk* walk, const Page& page, Tail* tail) {
    LogicalStream* stream = find_stream(&walk->first, page.serial);
    if (stream == nullptr) {
        tail->foreign = true;
    } else if (page.granule > 0) {
        // Nothing before it is counted here: only its position matters.
        const uint64_t bytes = stream->bytes;
        take_page(&walk->reader, page, stream);
        stream->bytes = bytes;
        tail->seen[stream - walk->first.streams] = true;
    }
}

bool sees_all(const Link& link, const Tail& tail) {
    for (int32_t i = 0; i < link.count; ++i) {
        const ZatStreamKind kind = kind_of(link.streams[i].coding);
        if (!tail.seen[i] && (kind == ZAT_STREAM_AUDIO || kind == ZAT_STREAM_VIDEO)) {
            return false;
        }
    }
    return true;
}

// Where the pages of the first link end.
struct LinkEnd {
    int64_t about = 0; // no page of it begins behind
    int64_t last = 0;  // the end of the last page before that
};

// Finds about where the first link ends, and takes its last pages.
LinkEnd find_link_end(Walk* walk, int64_t low, int64_t high) {
    FileRecord* file = walk->reader.block.file;
    while (high - low > tail_step) {
        const int64_t middle = low + (high - low) / 2;
        const int64_t at = find_page(file, middle, std::min(middle + tail_step, high));
        Page page;
        const bool of_first = at >= 0 && read_page(&walk->reader, at, &page) &&
                              find_stream(&walk->first, page.serial) != nullptr;
        (of_first ? low : high) = middle;
    }
    Tail tail;
    LinkEnd link_end = {high, high};
    const int64_t from = find_page(file, std::max(low - tail_step, walk->start), high);
    if (from >= 0) {
        walk_pages(
            walk, from, high,
            [&](const Page& page) {
                take_tail_page(walk, page, &tail);
                link_end.last = end_of(page);
            },
            [] { return false; });
    }
    return link_end;
}

// The play time of a whole chain is what the first link's share of the file suggests.
void estimate_chain(Walk* walk, int64_t high) {
    const FileRecord* file = walk->reader.block.file;
    const double share = static_cast<double>(high - walk->start) / static_cast<double>(file->size);
    walk->later_seconds = share > 0 ? link_seconds(walk->first) * (1 / share - 1) : 0;
    walk->estimated = true;
    walk->links = 2;
}

void read_tail(Walk* walk, int64_t head_end) {
    FileRecord* file = walk->reader.block.file;
    Tail tail;
    int64_t end = file->size;
    int64_t from = file->size;
    while (from > head_end && file->size - from < tail_reach && !sees_all(walk->first, tail)) {
        from = std::max(from - tail_step, head_end);
        const int64_t page = find_page(file, from, end);
        if (page >= 0) {
            walk_pages(
                walk, page, end, [&](const Page& found) { take_tail_page(walk, found, &tail); },
                [] { return false; });
            end = page;
        }
    }
    if (end == file->size && from > head_end) { // a download fills a file that has its size already
        walk->trailing =
            static_cast<uint64_t>(file->size - find_link_end(walk, head_end, from).last);
    } else if (tail.foreign && !sees_all(walk->first, tail)) {
        estimate_chain(walk, find_link_end(walk, head_end, from).about);
    }
}

} // namespace

bool walk_file(FileRecord* file, bool thorough, Walk* walk) {
    reader_open(&walk->reader, file);
    walk->reader.block.jump = page_look;
    Page page;
    walk->start = read_page(&walk->reader, 0, &page)
                      ? 0
                      : find_page(file, 0, std::min(file->size, start_reach));
    if (walk->start < 0) {
        return false;
    }
    if (thorough) {
        reader_allow(&walk->reader, {INT64_MAX, INT64_MAX});
    }
    walk->counted = thorough || file->size <= counted_size;
    const auto taker = [walk](const Page& found) { take(walk, found); };
    if (walk->counted) {
        walk_pages(walk, walk->start, file->size, taker, [] { return false; });
        close_later_link(walk);
        walk->counted = !walk->reader.limited;
    } else {
        const int64_t head_end =
            walk_pages(walk, walk->start, std::min(walk->start + head_reach, file->size), taker,
                [walk] { return data_began(walk->first); });
        read_tail(walk, head_end);
    }
    return true;
}

double link_seconds(const Link& link) {
    double longest = 0;
    for (int32_t i = 0; i < link.count; ++i) {
        const ZatStreamKind kind = kind_of(link.streams[i].coding);
        if (kind == ZAT_STREAM_AUDIO || kind == ZAT_STREAM_VIDEO) {
            longest = std::max(longest, seconds_played(link.streams[i]));
        }
    }
    return longest;
}

} // namespace zat::ogg
