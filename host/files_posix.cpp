#include "files.h"

#include <cerrno>
#include <dirent.h>
#include <memory>
#include <sys/stat.h>

namespace host {

namespace {

enum class Kind { file, directory, linked_directory };

Kind kind_of(const std::string& folder, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN && entry.d_type != DT_LNK) {
        return entry.d_type == DT_DIR ? Kind::directory : Kind::file;
    }
    struct stat status {};
    const std::string path = path_in(folder, entry.d_name);
    if (stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        return Kind::file;
    }
    return lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode) ? Kind::linked_directory
                                                                        : Kind::directory;
}

} // namespace

std::error_code read_folder(const std::string& folder, std::vector<FolderEntry>* entries) {
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(folder.c_str()), closedir);
    errno = directory == nullptr ? errno : 0;
    while (directory != nullptr) {
        const dirent* entry = readdir(directory.get());
        if (entry == nullptr) {
            break;
        }
        const std::string name = entry->d_name;
        const Kind kind =
            name == "." || name == ".." ? Kind::linked_directory : kind_of(folder, *entry);
        if (kind != Kind::linked_directory) {
            entries->push_back({name, kind == Kind::directory, name.starts_with('.')});
        }
        errno = 0;
    }
    return {errno, std::generic_category()};
}

bool find_folder_id(const std::string& folder, FolderId* id) {
    struct stat status {};
    if (stat(folder.c_str(), &status) != 0) {
        return false;
    }
    *id = {status.st_dev, status.st_ino};
    return true;
}

std::string path_in(const std::string& folder, const std::string& name) {
    return folder + (folder.ends_with('/') ? "" : "/") + name;
}

bool names_directory(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool file_exists(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0;
}

bool find_facts(const std::string& path, FileFacts* facts) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return false;
    }
    facts->size = static_cast<uint64_t>(status.st_size);
    constexpr int64_t nanoseconds = 1'000'000'000;
    // Times beyond what a 64-bit count holds are those of damaged file systems.
    const bool is_sane = status.st_mtim.tv_sec > INT64_MIN / nanoseconds &&
                         status.st_mtim.tv_sec < INT64_MAX / nanoseconds;
    facts->modified = is_sane ? status.st_mtim.tv_sec * nanoseconds + status.st_mtim.tv_nsec : 0;
    return true;
}

FILE* open_file(const std::string& path) {
    return std::fopen(path.c_str(), "rb");
}

std::string listed_path(const std::string& bytes, ListEncoding /*encoding*/) {
    return bytes;
}

} // namespace host
