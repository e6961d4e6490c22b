// A file's description as rows of a table (RFC 4180).
#pragma once

#include "description.h"

#include <string>

namespace host {

std::string csv_head();

// What is not known of a file that was not examined, or is of no known type, stays empty.
//
// A row for each line of the record, those of streams with their typed details, and one for each
// stream without a line.
std::string csv_of(const Description& description);

// One row for the file: its own details, then those of the first stream of each kind and how many
// there are.
std::string csv_file_head();
std::string csv_file_row(const Description& description);

} // namespace host
