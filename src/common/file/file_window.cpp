#include "common/file/file_window.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

// Each further step makes the view this many times as long: few calls, and little read in vain.
constexpr uint32_t window_growth = 2;

// Moves the view to memory for the whole capacity, the first `target` bytes of which are loaded
// next. False when there is none.
bool reserve(FileWindow* window, uint32_t target) {
    const int64_t rest = window->file->size - window->start;
    uint8_t* memory = reserve_memory(size_t{window->capacity} + FileWindow::padding,
        static_cast<size_t>(std::clamp<int64_t>(rest, 0, target)));
    if (memory == nullptr) {
        return false;
    }
    std::memcpy(memory, window->first, window->loaded);
    window->reserved = memory;
    window->bytes = memory;
    return true;
}

} // namespace

FileWindow::~FileWindow() {
    window_close(this);
}

void window_open(FileWindow* window, FileRecord* file, int64_t start, uint32_t capacity) {
    window->file = file;
    window->capacity = capacity;
    window->reserved = nullptr;
    window->bytes = window->first;
    window->start = start;
    window->loaded = 0;
    window->complete = false;
#ifndef NDEBUG
    std::memset(window->first, 0xA5, sizeof window->first); // nobody may rely on more zeros
#endif
    std::memset(window->first, 0, FileWindow::padding);
}

void window_move(FileWindow* window, int64_t start) {
    window_close(window);
    window_open(window, window->file, start, window->capacity);
}

uint32_t window_load(FileWindow* window, uint32_t wanted) {
    wanted = std::min(wanted, window->capacity);
    while (window->loaded < wanted && !window->complete) {
        uint32_t target = std::min(FileWindow::first_size, window->capacity);
        if (window->loaded >= FileWindow::first_size) {
            target = window->loaded < window->capacity / window_growth
                         ? window->loaded * window_growth
                         : window->capacity;
            target = std::max(target, wanted);
            if (window->reserved == nullptr && !reserve(window, target)) {
                window->complete = true;
                window->no_memory = true;
                break;
            }
        }
        const uint32_t missing = target - window->loaded;
        const uint32_t got = read_at(
            window->file, window->start + window->loaded, window->bytes + window->loaded, missing);
        window->loaded += got;
        if (window->reserved == nullptr) {
            std::memset(window->first + window->loaded, 0, FileWindow::padding);
        }
        window->complete = got < missing || window->loaded == window->capacity;
    }
    return window->loaded;
}

const uint8_t* window_at(FileWindow* window, uint32_t offset, uint32_t length) {
    static constexpr uint8_t zeros[8] = {};
    const uint64_t end = uint64_t{offset} + length;
    window_load(window, static_cast<uint32_t>(std::min<uint64_t>(end, window->capacity)));
    return offset < window->loaded ? window->bytes + offset : zeros;
}

std::span<const uint8_t> window_view(FileWindow* window, int64_t position, uint32_t length) {
    length = std::min(length, window->capacity);
    if (position < window->start || position - window->start > window->capacity - length) {
        window_move(window, position);
    }
    const auto offset = static_cast<uint32_t>(position - window->start);
    const uint32_t loaded = window_load(window, offset + length);
    return offset < loaded ? window_bytes(window).subspan(offset, std::min(length, loaded - offset))
                           : std::span<const uint8_t>{};
}

void window_close(FileWindow* window) {
    release_memory(window->reserved, size_t{window->capacity} + FileWindow::padding);
    window->reserved = nullptr;
    window->bytes = window->first;
    window->loaded = 0;
    window->complete = true;
}

} // namespace zat
