#include "file_list.h"

#include "description.h"
#include "files.h"
#include "glob.h"
#include "messages.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace host {

namespace {

#ifdef _WIN32
constexpr bool lines_may_end_with_cr = true;
#else
constexpr bool lines_may_end_with_cr = false;
#endif

bool is_wanted(const Options& options, const FolderEntry& entry) {
    return (options.hidden || !entry.is_hidden) && !matches_any(options.exclude, entry.name) &&
           (entry.is_directory || options.only.empty() || matches_any(options.only, entry.name));
}

ListedFile failed(const std::string& path, bool is_found, const std::error_code& error) {
    return {path, is_found, error_text(error), reason::of_error(error)};
}

struct Walk {
    const Options& options;
    const FileVisitor& visit;
    std::vector<FolderId> above; // the folders on the way down
};

// False for a folder in itself, which links that are not told from folders lead to: on Windows
// those of network drives.
bool enter(Walk* walk, const std::string& folder) {
    FolderId id;
    if (find_folder_id(folder, &id) &&
        std::find(walk->above.begin(), walk->above.end(), id) != walk->above.end()) {
        return false;
    }
    walk->above.push_back(id);
    return true;
}

bool walk_folder(Walk* walk, const std::string& folder) {
    if (!enter(walk, folder)) {
        return true;
    }
    std::vector<FolderEntry> entries;
    const std::error_code error = read_folder(folder, &entries);
    if (error && !walk->visit(failed(folder, true, error))) {
        return false;
    }
    std::sort(entries.begin(), entries.end(),
        [](const FolderEntry& a, const FolderEntry& b) { return a.name < b.name; });
    const bool goes_down = walk->above.size() != walk->options.max_depth;
    for (const FolderEntry& entry : entries) {
        if (!is_wanted(walk->options, entry) || (entry.is_directory && !goes_down)) {
            continue;
        }
        const std::string path = path_in(folder, entry.name);
        if (entry.is_directory ? !walk_folder(walk, path) : !walk->visit({path, true})) {
            return false;
        }
    }
    walk->above.pop_back();
    return true;
}

bool visit_path(const Options& options, const std::string& path, const FileVisitor& visit) {
    if (names_directory(path)) {
        Walk walk{options, visit, {}};
        return walk_folder(&walk, path);
    }
    return visit({path});
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
        if (!path.empty() &&
            !visit_path(options, listed_path(path, options.list_encoding), visit)) {
            return false;
        }
        path.clear();
    }
    return true;
}

void visit_list(const Options& options, const FileVisitor& visit) {
    const bool standard_input = options.files_from == "-";
    const std::string name = standard_input ? message(Message::standard_input) : options.files_from;
    const std::unique_ptr<FILE, int (*)(FILE*)> list(
        standard_input ? stdin : open_file(options.files_from),
        [](FILE* file) { return file == stdin ? 0 : std::fclose(file); });
    int error = list == nullptr ? errno : 0;
    if (list != nullptr && !visit_paths(list.get(), options, visit, &error)) {
        return;
    }
    if (error != 0 && error != EINTR) { // an interrupt ends the program in good order
        visit(failed(name, false, {error, std::generic_category()}));
    }
}

} // namespace

void for_each_file(const Options& options, const FileVisitor& visit) {
    for (const std::string& path : options.paths) {
        if (!path.empty()
                ? !visit_path(options, path, visit)
                : !visit({path, false, message(Message::empty_name), reason::not_found})) {
            return;
        }
    }
    if (!options.files_from.empty()) {
        visit_list(options, visit);
    }
}

} // namespace host
