#include "audio/dts_file.h"

#include "audio/dts.h"
#include "common/file_access.h"

namespace zat {

int dts_file(FileRecord* file, const Output& out) {
    InfoRecord* record = out.record;
    uint8_t header[dts_packed_size] = {};
    const uint32_t length = read_at(file, 0, header, dts_header_size);
    if (length == 0) {
        return 1;
    }
    const DtsSyncType type = dts_sync_type(header);
    dts_to_16bit_be(header, type);
    DtsInfo info;
    if (dts_info(header, &info) != 0) {
        return 1;
    }
    info.sync_type = type;
    dts_line(&info, record->audio[0]);
    record->audio_count = 1;
    const int32_t byte_rate = info.bitrate / 8;
    if (byte_rate > 0) {
        record->play_time = static_cast<double>(file->size) / byte_rate;
    }
    return 0;
}

} // namespace zat
