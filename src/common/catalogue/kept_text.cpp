#include "common/catalogue/kept_text.h"

#include "common/file/file_access.h"

#include <atomic>

namespace zat {

namespace {

enum class State { empty, filling, full };

// Written once, since other calls may be reading it: a file that changes takes another place.
struct Place {
    std::atomic<State> state = State::empty;
    FileStamp stamp = {};
    char text[65536] = {};
};

constinit Place places[4];

bool read_whole(const char* path, Place* place) {
    FileRecord file;
    const auto size = static_cast<uint32_t>(place->stamp.size);
    FileStamp after;
    return FileOpen(&file, path) == 0 && FileRead(&file, place->text, size) == size &&
           settled_stamp(path, &after) && after == place->stamp;
}

bool fill(const char* path, const FileStamp& stamp, Place* place) {
    State expected = State::empty;
    if (!place->state.compare_exchange_strong(expected, State::filling)) {
        return false;
    }
    place->stamp = stamp;
    const bool done = read_whole(path, place);
    place->state.store(done ? State::full : State::empty, std::memory_order_release);
    return done;
}

} // namespace

std::string_view kept_text(const char* path) {
    FileStamp stamp;
    if (!settled_stamp(path, &stamp) || stamp.size == 0 ||
        stamp.size > int64_t{sizeof Place::text}) {
        return {};
    }
    for (Place& place : places) {
        const State state = place.state.load(std::memory_order_acquire);
        const bool here = state == State::full ? place.stamp == stamp
                                               : state == State::empty && fill(path, stamp, &place);
        if (here) {
            return {place.text, static_cast<size_t>(stamp.size)};
        }
        if (state != State::full) {
            break;
        }
    }
    return {};
}

} // namespace zat
