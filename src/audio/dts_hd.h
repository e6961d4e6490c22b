// The extension substream of a DTS stream, which stands behind its core or alone (ETSI TS 102 114,
// 7.4 and 7.5).
#pragma once

#include "common/bytes/bytes.h"
#include "common/record/details.h"

#include <cstdint>

namespace zat {

constexpr uint32_t dts_hd_sync = 0x64582025;

enum class DtsHdKind : uint8_t { unknown, high_resolution, master_audio, express };

struct DtsHdInfo {
    uint32_t size = 0; // bytes of the substream
    DtsHdKind kind = DtsHdKind::unknown;
    uint32_t sample_rate = 0;  // Hz, 0 when not told
    uint32_t channels = 0;     // the core's and LFE counted, 0 when not told
    uint32_t bits = 0;         // source resolution, 0 when not told
    uint32_t speaker_mask = 0; // nuSpkrActivityMask, 0 when not told
};

// Decodes the header of the substream, up to its first asset. False when none stands there or its
// header is cut; what was decoded before stands.
bool dts_hd_info(Bytes substream, DtsHdInfo* info);

// What lines show of it: "DTS-HD MA", "DTS-HD HRA", "DTS Express"; empty when unknown.
const char* dts_hd_name(DtsHdKind kind);

// Sets what the extension tells, over the facts of a core.
void dts_hd_facts(const DtsHdInfo& info, ZatStream* stream);

} // namespace zat
