// What holds of every result, whatever the bytes: aborts where it does not, so that a fuzzer sees
// more than memory errors.
#pragma once

#include "zat/details.h"

#include <cstddef>

namespace zat::test {

void require(bool condition, const char* what);

// Makes the areas of a cleared record that belong to the host recognisable.
void mark_host_areas(InfoRecord* record);

// Counts, terminators, and the host's areas as they were marked.
void require_sound(const InfoRecord& record);

// Counts, well-formed texts, figures that a stream or a file can have, reserved fields left alone.
void require_sound(const ZatStream& stream);
void require_sound(const ZatDetails& details);

// A written text of `length` bytes in a buffer of `size`.
void require_sound_text(const char* text, size_t length, size_t size, bool utf8);

// The lines have the streams of the details.
void require_agreement(const InfoRecord& record, const ZatDetails& details);

// The record's report, and the one that is cut to a host's small buffer.
void require_sound_report(const InfoRecord& record);
void require_sound_short_report(const InfoRecord& record);

} // namespace zat::test
