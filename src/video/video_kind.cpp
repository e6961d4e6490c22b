#include "video/video_kind.h"

#include "common/bytes/start_code.h"
#include "video/avc_sps.h"
#include "video/hevc_sps.h"
#include "video/mpeg4_vol.h"
#include "video/mpeg4_vop.h"
#include "video/mpeg_video_headers.h"
#include "video/vc1_sequence.h"

namespace zat {

namespace {

// Whether `second` stands behind `first` as the very next start code.
bool has_sequence(Bytes stream, uint8_t first, uint8_t second) {
    bool after_first = false;
    for (int64_t at = find_start_code(stream, 0); at >= 0;
         at = find_start_code(stream, static_cast<size_t>(at) + 3)) {
        const uint8_t code = stream[static_cast<size_t>(at) + 3];
        if (after_first && code == second) {
            return true;
        }
        after_first = code == first;
    }
    return false;
}

// Whether a picture parameter set of H.264 stands behind a sequence's, with nothing between but the
// latter's extensions.
bool has_avc_sets(Bytes stream) {
    enum Type : uint8_t { sequence = 7, picture = 8, extension = 13, subset = 15 };
    bool after_sequence = false;
    for (int64_t at = find_start_code(stream, 0); at >= 0;
         at = find_start_code(stream, static_cast<size_t>(at) + 3)) {
        const uint8_t type = stream[static_cast<size_t>(at) + 3] & 0x9F;
        if (after_sequence && type == picture) {
            return true;
        }
        after_sequence =
            type == sequence || (after_sequence && (type == extension || type == subset));
    }
    return false;
}

} // namespace

VideoKind video_kind_of_type(uint8_t stream_type) {
    switch (stream_type) {
    case 0x01:
    case 0x02:
        return VideoKind::mpeg;
    case 0x10:
        return VideoKind::mpeg4;
    case 0x1B:
        return VideoKind::avc;
    case 0x24:
        return VideoKind::hevc;
    case 0xEA:
        return VideoKind::vc1;
    default:
        return VideoKind::unknown;
    }
}

VideoKind guess_video_kind(Bytes stream) {
    // MPEG-1 and MPEG-2 number their slices 01 to AF, which looks like anything: their own headers
    // come first.
    MpegVideoHeaders mpeg;
    if (find_mpeg_video_headers(stream, &mpeg) == 0) {
        return VideoKind::mpeg;
    }
    AvcSequenceInfo avc;
    if (has_avc_sets(stream) && find_avc_sps(stream, &avc) == 0) {
        return VideoKind::avc;
    }
    HevcSequence hevc;
    if (has_sequence(stream, 0x40, 0x42) && find_hevc_sps(stream, &hevc)) {
        return VideoKind::hevc; // the sequence's behind the video parameter set
    }
    constexpr uint8_t visual_object_sequence = 0xB0;
    Mpeg4Headers mpeg4;
    if ((find_start_code_of(stream, 0, visual_object_sequence) >= 0 ||
            find_start_code_of(stream, 0, vop_start_code) >= 0) &&
        find_mpeg4_headers(stream, &mpeg4) == 0) {
        return VideoKind::mpeg4;
    }
    Vc1Sequence vc1;
    if (has_sequence(stream, 0x0F, 0x0E) && find_vc1_sequence(stream, &vc1) == 0) {
        return VideoKind::vc1; // an entry point header behind the sequence's
    }
    return VideoKind::unknown;
}

VideoKindName video_kind_name(VideoKind kind, bool mpeg2) {
    switch (kind) {
    case VideoKind::avc:
        return {"[AVC/H264]", "H.264"};
    case VideoKind::hevc:
        return {"[HEVC/H265]", "HEVC"};
    case VideoKind::mpeg4:
        return {"[MPEG4]", "MPEG-4 Visual"};
    case VideoKind::vc1:
        return {"[VC-1]", "VC-1"};
    default:
        return mpeg2 ? VideoKindName{"MPEG2", "MPEG-2 Video"}
                     : VideoKindName{"MPEG1", "MPEG-1 Video"};
    }
}

} // namespace zat
