// From the command line to the output: files examined by several threads, shown in order.
#pragma once

#include "library.h"
#include "options.h"

namespace host {

// Returns the exit status.
int run(const Library& library, const Options& options);

} // namespace host
