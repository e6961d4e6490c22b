// From a type code to the one analyser for it.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Runs the analyser for the record's type code on the open file, if there is one.
void DispatchAnalyser(FileRecord* file, const Output& out);

} // namespace zat
