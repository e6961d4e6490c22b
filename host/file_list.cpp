#include "file_list.h"

#include "description.h"
#include "encoding.h"
#include "glob.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>
#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#endif

namespace host {

namespace {

namespace fs = std::filesystem;

#ifdef _WIN32
fs::path native(const std::string& path) {
    return wide_of_utf8(path);
}
std::string name_of(const fs::path& path) {
    return utf8_of_wide(path.filename().wstring());
}
FILE* open_list(const std::string& path) {
    return _wfopen(wide_of_utf8(path).c_str(), L"rb");
}
constexpr bool lines_may_end_with_cr = true;
constexpr char separators[] = "/\\";
#else
fs::path native(const std::string& path) {
    return path;
}
std::string name_of(const fs::path& path) {
    return path.filename().string();
}
FILE* open_list(const std::string& path) {
    return std::fopen(path.c_str(), "rb");
}
constexpr bool lines_may_end_with_cr = false;
constexpr char separators[] = "/";
#endif

struct Entry {
    std::string name;
    bool is_directory;
};

bool is_hidden(const fs::path& path, const std::string& name) {
#ifdef _WIN32
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_HIDDEN) != 0) {
        return true;
    }
#else
    static_cast<void>(path);
#endif
    return name.starts_with('.');
}

bool is_wanted(const Options& options, const fs::path& path, const Entry& entry) {
    if (!options.hidden && is_hidden(path, entry.name)) {
        return false;
    }
    return !matches_any(options.exclude, entry.name) &&
           (entry.is_directory || options.only.empty() || matches_any(options.only, entry.name));
}

// The wanted files and folders of a directory by name; links to directories are none.
std::vector<Entry> entries_of(
    const Options& options, const std::string& directory, std::error_code* error) {
    std::vector<Entry> entries;
    fs::directory_iterator iterator(native(directory), *error);
    for (; !*error && iterator != fs::directory_iterator(); iterator.increment(*error)) {
        std::error_code ignored;
        const bool is_directory =
            iterator->symlink_status(ignored).type() == fs::file_type::directory;
        const bool is_linked_directory = !is_directory && iterator->is_directory(ignored);
        const Entry entry{name_of(iterator->path()), is_directory};
        if (!is_linked_directory && is_wanted(options, iterator->path(), entry)) {
            entries.push_back(entry);
        }
    }
    std::sort(entries.begin(), entries.end(),
        [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return entries;
}

bool walk_directory(const Options& options, const std::string& directory, unsigned depth,
    const FileVisitor& visit) {
    std::error_code error;
    const std::vector<Entry> entries = entries_of(options, directory, &error);
    if (error && !visit({directory, true, error.message(), reason::of_error(error)})) {
        return false;
    }
    const bool separated = std::strchr(separators, directory.back()) != nullptr;
    for (const Entry& entry : entries) {
        const std::string path = directory + (separated ? "" : "/") + entry.name;
        if (!entry.is_directory) {
            if (!visit({path, true})) {
                return false;
            }
        } else if (depth != options.max_depth && !walk_directory(options, path, depth + 1, visit)) {
            return false;
        }
    }
    return true;
}

bool visit_path(const Options& options, const std::string& path, const FileVisitor& visit) {
    if (names_directory(path)) {
        return walk_directory(options, path, 1, visit);
    }
    return visit({path});
}

const char* reason_of(int error) {
    return reason::of_error({error, std::generic_category()});
}

// Visits the paths of an open list; `error` is why it could not be read to its end, else 0. A byte
// order mark before lines belongs to no name.
bool visit_paths(FILE* list, const Options& options, const FileVisitor& visit, int* error) {
    const bool null_separated = options.null_separated;
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    const int end = null_separated ? 0 : static_cast<unsigned char>('\n');
    std::string path;
    bool is_first = !null_separated;
    for (int c = 0; c != EOF;) {
        c = std::fgetc(list);
        if (c != end && c != EOF) {
            path += static_cast<char>(c);
            continue;
        }
        *error = c == EOF && std::ferror(list) != 0 ? errno : 0;
        if (std::exchange(is_first, false) && path.starts_with(byte_order_mark)) {
            path.erase(0, byte_order_mark.size());
        }
        if (lines_may_end_with_cr && !null_separated && path.ends_with('\r')) {
            path.pop_back();
        }
        if (!path.empty() && !visit_path(options, path, visit)) {
            return false;
        }
        path.clear();
    }
    return true;
}

void visit_list(const Options& options, const FileVisitor& visit) {
    const bool standard_input = options.files_from == "-";
    const std::string name = standard_input ? "standard input" : options.files_from;
    const std::unique_ptr<FILE, int (*)(FILE*)> list(
        standard_input ? stdin : open_list(options.files_from),
        [](FILE* file) { return file == stdin ? 0 : std::fclose(file); });
    if (list == nullptr) {
        visit({name, false, std::strerror(errno), reason_of(errno)});
        return;
    }
    int error = 0;
    if (visit_paths(list.get(), options, visit, &error) && error != 0 &&
        error != EINTR) { // an interrupt ends the program in good order
        visit({name, false, std::strerror(error), reason_of(error)});
    }
}

} // namespace

bool names_directory(const std::string& path) {
    std::error_code ignored;
    return fs::is_directory(native(path), ignored);
}

bool file_exists(const std::string& path) {
    std::error_code ignored;
    return fs::exists(native(path), ignored);
}

void for_each_file(const Options& options, const FileVisitor& visit) {
    for (const std::string& path : options.paths) {
        if (!path.empty() ? !visit_path(options, path, visit)
                          : !visit({path, false, "the name is empty", reason_of(ENOENT)})) {
            return;
        }
    }
    if (!options.files_from.empty()) {
        visit_list(options, visit);
    }
}

} // namespace host
