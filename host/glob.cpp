#include "glob.h"

#include "common/text/utf8.h"

#include <algorithm>

namespace host {

namespace {

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

bool matches(std::string_view pattern, std::string_view name) {
    // What to go on with when a mismatch shows that the last star stands for more.
    std::string_view pattern_behind_star;
    std::string_view name_behind_star;
    bool has_star = false;
    while (!name.empty() || !pattern.empty()) {
        if (pattern.starts_with('*')) {
            pattern.remove_prefix(1);
            has_star = true;
            pattern_behind_star = pattern;
            name_behind_star = name;
        } else if (pattern.starts_with('?') && !name.empty()) {
            pattern.remove_prefix(1);
            zat::take_utf8(&name);
        } else if (!pattern.empty() && !name.empty() && lower(pattern[0]) == lower(name[0])) {
            pattern.remove_prefix(1);
            name.remove_prefix(1);
        } else if (has_star && !name_behind_star.empty()) {
            zat::take_utf8(&name_behind_star);
            pattern = pattern_behind_star;
            name = name_behind_star;
        } else {
            return false;
        }
    }
    return true;
}

bool matches_any(const std::vector<std::string>& patterns, std::string_view name) {
    return std::any_of(patterns.begin(), patterns.end(),
        [&](const std::string& pattern) { return matches(pattern, name); });
}

} // namespace host
