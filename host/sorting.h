// The files of a command line in the order that --sort asks for.
#pragma once

#include "file_list.h"
#include "library.h"
#include "options.h"

namespace host {

// As for_each_file when no order is asked for. Else all files are found first; of each its path is
// kept. For their durations they are examined by that many threads, unless `is_cancelled`.
void for_each_sorted_file(const Library& library, const Options& options, unsigned threads,
    bool (*is_cancelled)(), const FileVisitor& visit);

} // namespace host
