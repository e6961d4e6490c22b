// Standard MIDI files, bare or in a RIFF file (MIDI Manufacturers Association, "Standard MIDI Files
// 1.0" and RP-029, "Bundling SMF and DLS data in an RMID file").
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes the file in one audio line; the play time is that of the longest track by the changes
// of tempo. Returns 0, or 1 when there is no header.
int AnalyzeMidiFile(FileRecord* file, const Output& out);

} // namespace zat
