// Reading atoms, the boxes of ISO/IEC 14496-12, 4.2.
#pragma once

#include "common/file/reader.h"
#include "common/text/fourcc.h"

#include <cstdint>

namespace zat::mp4 {

struct Atom {
    int64_t offset = 0;  // of the size field
    uint32_t type = 0;   // four characters, the first one in the top byte
    uint32_t size = 0;   // the 32-bit field as it stands: 1 tells that 64 bits follow the type
    Span payload;        // behind the header, cut at the end of the surrounding atom
    int64_t missing = 0; // bytes that the surrounding atom, or the file, ended too early
};

// Reads the header at the start of `space`. False when the header is cut off or the size is less
// than its own header, 0 included: nothing that follows can be told apart then. `atom->size` is set
// as soon as the first 8 bytes are there.
bool read_atom(Reader* reader, Span space, Atom* atom);

// Moves `space` behind the atom at its start: a loop over the atoms in a payload. False at its end.
bool next_child(Reader* reader, Span* space, Atom* atom);

// The start of a payload, as much of it as the buffer holds.
template <size_t N>
Bytes read_box(Reader* reader, Span payload, uint8_t (&buffer)[N]) {
    return {buffer, read_some(reader, payload, 0, buffer, N)};
}

} // namespace zat::mp4
