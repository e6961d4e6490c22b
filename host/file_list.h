// The files that a command line means, one after the other.
#pragma once

#include "options.h"

#include <functional>
#include <string>

namespace host {

struct ListedFile {
    std::string path;
    bool is_found = false; // below a directory, rather than named
    std::string error{};   // why the path leads to no file; mostly empty
    std::string reason{};  // the same for programs, see description.h
};

// Called with each file. False ends the walk.
using FileVisitor = std::function<bool(const ListedFile& file)>;

// Visits the named files, those of the lists, and those below directories: in the order given,
// within a directory by name.
void for_each_file(const Options& options, const FileVisitor& visit);

} // namespace host
