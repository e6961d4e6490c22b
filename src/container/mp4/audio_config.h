// Decoder configurations that tell a sound's numbers better than the sample entry's fixed fields.
#pragma once

#include "container/mp4/sample_entry.h"

namespace zat::mp4 {

// Corrects channels, sample rate and sample size by what the entry's ALAC, FLAC, E-AC-3 or rate
// atom says. Returns the average bit rate in bit/s, 0 when none is told.
uint32_t apply_audio_config(AtomReader* reader, SampleEntry* entry);

} // namespace zat::mp4
