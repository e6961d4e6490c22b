#include "detect/text_check.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

constexpr int64_t checked_bytes = 1048576;

} // namespace

int TextFileCheck(FileWindow* window, int64_t size) {
    const auto wanted = static_cast<uint32_t>(std::min(size, checked_bytes));
    // Nearly every media file has a zero byte in its first kilobytes, so a step loads no more than
    // the window does by itself.
    uint32_t checked = 0;
    while (checked < wanted) {
        const uint32_t loaded = std::min(window_load(window, checked + 1), wanted);
        if (std::memchr(window->bytes + checked, 0, loaded - checked) != nullptr) {
            return -1;
        }
        if (loaded == checked) {
            break;
        }
        checked = loaded;
    }
    return checked < wanted ? -1 : 0;
}

} // namespace zat
