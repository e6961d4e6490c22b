#include "sorting.h"

#include "files.h"
#include "ordered_work.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

namespace host {

namespace {

constexpr int64_t not_known = -1; // behind all that are

struct SortedFile {
    ListedFile file;
    int64_t key;
};

std::string_view name_of(std::string_view path) {
#ifdef _WIN32
    return path.substr(path.find_last_of("/\\:") + 1);
#else
    return path.substr(path.rfind('/') + 1);
#endif
}

// By letters of either case, then by all.
bool is_name_before(const SortedFile& a, const SortedFile& b) {
    const std::string_view first = name_of(a.file.path);
    const std::string_view second = name_of(b.file.path);
    const auto is_before = [](char left, char right) {
        const auto upper = [](char c) {
            return static_cast<unsigned char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
        };
        return upper(left) < upper(right);
    };
    if (std::lexicographical_compare(
            first.begin(), first.end(), second.begin(), second.end(), is_before)) {
        return true;
    }
    return !std::lexicographical_compare(
               second.begin(), second.end(), first.begin(), first.end(), is_before) &&
           first < second;
}

int64_t key_of(const ListedFile& file, SortKey sort) {
    FileFacts facts;
    if (sort == SortKey::name || !file.error.empty() || !find_facts(file.path, &facts)) {
        return not_known;
    }
    return sort == SortKey::size ? static_cast<int64_t>(facts.size) : facts.modified;
}

Result find_duration(const Library& library, const ListedFile& file, Description* description) {
    clear(description);
    description->path = file.path;
    if (file.error.empty()) {
        describe(library, Query::details, description);
    }
    Result result;
    if (description->details != nullptr && std::isfinite(description->details->duration)) {
        constexpr double limit = 9e12; // seconds whose microseconds can be counted
        const double seconds = std::clamp(description->details->duration, 0.0, limit);
        result.duration = static_cast<int64_t>(seconds * 1e6);
    }
    return result;
}

std::vector<SortedFile> files_with_durations(
    const Library& library, const Options& options, unsigned threads, bool (*is_cancelled)()) {
    std::vector<SortedFile> files;
    work_in_order({[&](const FileVisitor& visit) { for_each_file(options, visit); },
                      [&](const ListedFile& file, Description* description) {
                          return find_duration(library, file, description);
                      },
                      [&](std::span<const Examined> ready) {
                          for (const Examined& examined : ready) {
                              files.push_back({examined.file, examined.result.duration});
                          }
                          return true;
                      },
                      is_cancelled},
        threads);
    return files;
}

} // namespace

void for_each_sorted_file(const Library& library, const Options& options, unsigned threads,
    bool (*is_cancelled)(), const FileVisitor& visit) {
    if (options.sort == SortKey::none) {
        for_each_file(options, visit);
        return;
    }
    std::vector<SortedFile> files;
    if (options.sort == SortKey::duration) {
        files = files_with_durations(library, options, threads, is_cancelled);
    } else {
        for_each_file(options, [&](const ListedFile& file) {
            files.push_back({file, key_of(file, options.sort)});
            return !is_cancelled();
        });
    }
    if (options.sort == SortKey::name) {
        std::stable_sort(files.begin(), files.end(), is_name_before);
    } else {
        std::stable_sort(files.begin(), files.end(),
            [](const SortedFile& a, const SortedFile& b) { return a.key > b.key; });
    }
    for (const SortedFile& sorted : files) {
        if (!visit(sorted.file)) {
            return;
        }
    }
}

} // namespace host
