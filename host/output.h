// A file's description in the form that --format asks for.
//
// The whole output is the head, then the descriptions with the separator between those that are not
// empty, then the tail.
#pragma once

#include "description.h"
#include "options.h"

namespace host {

// What the output needs to know of each file.
Query query_of(const Options& options);

// Whether a file of unknown type that nobody named has its place in the output.
bool shows_unknown_files(const Options& options);

std::string output_head(const Options& options);
std::string output_separator(const Options& options);
std::string output_tail(const Options& options);

// With `several`, the text form names the file above its report.
std::string output_of(
    const Library& library, const Options& options, const Description& description, bool several);

} // namespace host
