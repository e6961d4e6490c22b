#include "audio/ac3_file.h"

#include "audio/ac3.h"
#include "common/bytes.h"
#include "common/file_access.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

constexpr uint32_t search_size = 2048; // bytes in which the first sync word is looked for
// Only so much of the frame is looked at. The fields of the alternate syntax lie behind it and read
// as zero, so no raw file is marked as Surround EX.
constexpr uint32_t read_size = 8;

// Takes the first frame's header, or the bytes behind the searched ones when no sync word is among
// them. Returns 0, or 1 when nothing stands there.
int read_header(FileRecord* file, uint8_t* header) {
    uint8_t buffer[search_size + read_size];
    const uint32_t length = read_at(file, 0, buffer, sizeof buffer);
    const uint32_t searched = std::min(length, search_size);
    const int64_t sync = find_byte_pair(Bytes(buffer, searched), 0, 0x0B, 0x77);
    const uint32_t position = sync >= 0 ? static_cast<uint32_t>(sync) : searched;
    const uint32_t count = std::min(length - position, read_size);
    std::memcpy(header, buffer + position, count);
    return count == 0 ? 1 : 0;
}

} // namespace

int ac3_file(FileRecord* file, const Output& out) {
    InfoRecord* record = out.record;
    uint8_t header[ac3_header_size] = {};
    Ac3Info info;
    if (read_header(file, header) != 0 || ac3_info(header, &info) != 0) {
        return 1;
    }
    ac3_line(&info, record->audio[0]);
    record->audio_count = 1;
    const int byte_rate = info.bitrate / 8 * 1000; // not zero: the lowest rate is 32 kbit/s
    record->play_time = static_cast<double>(file->size) / byte_rate;
    return 0;
}

} // namespace zat
