#include "container/mp4/first_frame.h"

#include "audio/ac3.h"
#include "audio/dts.h"

#include <algorithm>
#include <cstring>

namespace zat::mp4 {

bool describe_ac3_frame(const uint8_t* start, uint32_t /*length*/, char* line) {
    static_assert(ac3_header_size <= frame_start_size);
    Ac3Info info;
    if (ac3_info(start, &info) != 0) {
        return false;
    }
    ac3_line(&info, line);
    return true;
}

bool describe_dts_frame(const uint8_t* start, uint32_t /*length*/, char* line) {
    static_assert(dts_packed_size <= frame_start_size && dts_header_size <= dts_packed_size);
    uint8_t header[dts_packed_size];
    std::memcpy(header, start, sizeof header);
    const DtsSyncType sync_type = dts_sync_type(header);
    dts_to_16bit_be(header, sync_type);
    DtsInfo info;
    if (dts_info(header, &info) != 0) {
        return false;
    }
    info.sync_type = sync_type;
    dts_line(&info, line);
    return true;
}

bool describe_mpeg_audio_frame(const uint8_t* start, uint32_t length, char* line) {
    uint8_t header[mpeg_audio_header_size];
    std::memcpy(header, start, sizeof header);
    MpegAudioInfo info;
    if (!IsMpegAudioSync(header) || DecodeMpegAudioHeader(header, &info) != 0) {
        return false;
    }
    // Without usable counts the line shows what was decoded all the same.
    ParseVbrHeader({start, std::min(length, info.frame_size)}, &info);
    FormatMpegAudioLine(&info, line);
    return true;
}

} // namespace zat::mp4
