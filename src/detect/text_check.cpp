#include "detect/text_check.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

constexpr int64_t checked_bytes = 1048576;

} // namespace

int TextFileCheck(FileWindow* window, int64_t size) {
    const auto wanted = static_cast<uint32_t>(std::min(size, checked_bytes));
    // Nearly every media file has a zero byte in its first kilobytes.
    const uint32_t steps[] = {1, FileWindow::first_size + 1, wanted};
    uint32_t checked = 0;
    for (const uint32_t step : steps) {
        const uint32_t loaded = std::min(window_load(window, std::min(step, wanted)), wanted);
        if (std::memchr(window->bytes + checked, 0, loaded - checked) != nullptr) {
            return -1;
        }
        checked = loaded;
    }
    return checked < wanted ? -1 : 0;
}

} // namespace zat
