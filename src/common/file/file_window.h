// A zero-padded view of a stretch of a file that is read in steps, on demand: whoever looks at the
// first bytes pays for the first bytes only, and sees what reading the whole stretch would show.
#pragma once

#include "common/file/file_access.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace zat {

// Gives its memory back with itself.
struct FileWindow {
    // Enough for every look at a file's start that is not a search.
    static constexpr uint32_t first_size = 8192;
    // Behind what is loaded, so that a field may be looked at across the end.
    static constexpr uint32_t padding = 16;

    FileRecord* file = nullptr;
    int64_t start = 0;        // file position of the view's first byte
    uint32_t capacity = 0;    // bytes the view may span
    uint32_t loaded = 0;      // bytes read so far
    bool complete = false;    // nothing more can be loaded
    bool no_memory = false;   // the view is cut short for want of memory; stays set
    uint8_t* bytes = nullptr; // readable up to `loaded` and, as zeros, `padding` behind it
    uint8_t* reserved = nullptr;
    uint8_t first[first_size + padding]; // the view, until more is asked for

    FileWindow() = default;
    FileWindow(const FileWindow&) = delete;
    FileWindow& operator=(const FileWindow&) = delete;
    ~FileWindow();
};

// Starts a view of up to `capacity` bytes at `start` of an open file. Reads nothing yet.
void window_open(FileWindow* window, FileRecord* file, int64_t start, uint32_t capacity);

// Starts the view anew at another place of the same file.
void window_move(FileWindow* window, int64_t start);

// Loads at least the first `wanted` bytes, as far as the file and the capacity have them. Returns
// the bytes loaded, which may be more or fewer.
uint32_t window_load(FileWindow* window, uint32_t wanted);

// Loads all that the capacity allows.
inline uint32_t window_load_all(FileWindow* window) {
    return window_load(window, window->capacity);
}

// A pointer to `length` (at most 8) bytes at `offset` of the view, zeros where the file or the
// capacity ended.
const uint8_t* window_at(FileWindow* window, uint32_t offset, uint32_t length);

inline std::span<const uint8_t> window_bytes(const FileWindow* window) {
    return {window->bytes, window->loaded};
}

// The `length` (at most the capacity) bytes at a position of the file, fewer where it ends. Moves
// the view there when it does not span them: a walk over small structures costs few reads.
std::span<const uint8_t> window_view(FileWindow* window, int64_t position, uint32_t length);

void window_close(FileWindow* window);

} // namespace zat
