// Decoder configurations that tell a sound's numbers better than the sample entry's fixed fields.
#pragma once

#include "container/mp4/sample_entry.h"

namespace zat::mp4 {

// Corrects channels, sample rate and sample size by what the entry's ALAC, FLAC, E-AC-3 or rate
// atom says. Returns the bit rate in bit/s that it tells, 0 when the samples' bytes tell it better:
// that of E-AC-3 counts only for samples of `one_size`, whose bytes are not known.
uint32_t apply_audio_config(Reader* reader, bool one_size, SampleEntry* entry);

} // namespace zat::mp4
