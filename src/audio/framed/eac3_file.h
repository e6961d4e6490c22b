// Raw Enhanced AC-3 files.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Returns 0, or 1 with nothing written when no frame stands near the file's start.
int eac3_file(FileRecord* file, const Output& out);

// Sets the stream to what its frames tell, a core of AC-3 included; nothing else is written. False
// without E-AC-3 near the file's start.
bool set_eac3_file_facts(FileRecord* file, const Output& out, ZatStream* stream);

} // namespace zat
