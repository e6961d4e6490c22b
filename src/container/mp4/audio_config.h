// Decoder configurations that tell a sound's numbers better than the sample entry's fixed fields.
#pragma once

#include "container/mp4/sample_entry.h"

namespace zat::mp4 {

// Corrects channels, sample rate and sample size by what the entry's ALAC, FLAC, E-AC-3 or rate
// atom says. Returns the bit rate in bit/s that ALAC or E-AC-3 tells, else 0.
uint32_t apply_audio_config(Reader* reader, SampleEntry* entry);

} // namespace zat::mp4
