#include "audio/dts_file.h"

#include "audio/first_frame.h"
#include "common/stream_lines.h"

namespace zat {

int dts_file(FileRecord* file, const Output& out) {
    constexpr uint32_t read_size = 15; // bytes of a core header
    uint8_t start[read_size];
    const uint32_t length = read_at(file, 0, start, sizeof start);
    ZatStream stream = new_stream(ZAT_STREAM_AUDIO);
    char line[line_size];
    if (!describe_dts_frame({start, length}, &stream, line)) {
        return 1;
    }
    const uint64_t byte_rate = stream.bit_rate / 8;
    if (byte_rate > 0) {
        out.record->play_time = static_cast<double>(file->size) / static_cast<double>(byte_rate);
    }
    add_stream_line(out, stream, line);
    return 0;
}

} // namespace zat
