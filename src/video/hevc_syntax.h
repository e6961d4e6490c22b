// The syntax of an HEVC sequence parameter set, field by field (ITU-T H.265, 7.3.2.2, 7.3.3, 7.3.4,
// 7.3.7 and E.2.1).
#pragma once

#include "video/hevc_sps.h"

namespace zat {

// Reads seq_parameter_set_rbsp(). False when it ends before the bit depth.
bool parse_hevc_sps_fields(Bytes rbsp, HevcSequence* sequence);

} // namespace zat
