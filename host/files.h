// Files and folders by paths as given on the command line: bytes on Linux, UTF-8 on Windows, where
// they may be of any length.
#pragma once

#include "options.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <system_error>
#include <vector>

namespace host {

struct FolderEntry {
    std::string name;
    bool is_directory;
    bool is_hidden;
};

// Adds the files and folders in a folder, in any order. Links to folders are left out, and on
// Windows junctions.
std::error_code read_folder(const std::string& folder, std::vector<FolderEntry>* entries);

// Which folder it is, whatever path leads there.
struct FolderId {
    uint64_t volume = 0;
    uint64_t index = 0;
    bool operator==(const FolderId&) const = default;
};

// False when the system does not tell.
bool find_folder_id(const std::string& folder, FolderId* id);

// The path of what has that name in the folder.
std::string path_in(const std::string& folder, const std::string& name);

bool names_directory(const std::string& path);
bool file_exists(const std::string& path);

struct FileFacts {
    uint64_t size = 0;    // bytes
    int64_t modified = 0; // in units and from a start of the system's own
};

// False when there are none to be had.
bool find_facts(const std::string& path, FileFacts* facts);

// For reading; null, and `errno`, when that fails.
FILE* open_file(const std::string& path);

// The path that a list's bytes mean.
std::string listed_path(const std::string& bytes, ListEncoding encoding);

#ifdef _WIN32
// As Windows' functions take it: whole and behind "\\?\" when it is longer than they allow else.
std::wstring native_path(const std::string& path);
#endif

} // namespace host
