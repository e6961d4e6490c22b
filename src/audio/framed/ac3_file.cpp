#include "audio/framed/ac3_file.h"

#include "audio/eac3.h"
#include "audio/first_frame.h"
#include "audio/frame_search.h"
#include "audio/framed/eac3_file.h"
#include "audio/framed/mlp_file.h"
#include "audio/stream_facts.h"
#include "common/bytes/bytes.h"
#include "common/record/stream_lines.h"

#include <algorithm>

namespace zat {

namespace {

constexpr uint32_t search_size = 2048; // bytes in which the first sync word is looked for
// Only so much of the frame is looked at. The fields of the alternate syntax lie behind it and read
// as zero, so no raw file is marked as Surround EX.
constexpr uint32_t read_size = 8;

// The first frame's start, or the bytes behind the searched ones when no sync word is among them.
Bytes find_frame(Bytes file_start) {
    const Bytes searched = file_start.first(std::min<size_t>(file_start.size(), search_size));
    const int64_t sync = find_byte_pair(searched, 0, 0x0B, 0x77);
    const Bytes frame = file_start.subspan(sync >= 0 ? static_cast<size_t>(sync) : searched.size());
    return frame.first(std::min<size_t>(frame.size(), read_size));
}

// On Blu-ray discs dependent substreams of E-AC-3 follow the frames of an AC-3 core: what such a
// stream is. False for AC-3 alone.
bool set_extended_facts(
    FileRecord* file, int64_t frame_at, uint32_t frame_size, const Output& out, ZatStream* stream) {
    constexpr uint32_t extension_header_size = 12; // bytes
    uint8_t header[extension_header_size];
    const size_t length = read_at(file, frame_at + frame_size, header, sizeof header);
    Eac3Frame extension;
    return read_eac3_frame({header, length}, &extension) && extension.dependent &&
           set_eac3_file_facts(file, out, stream);
}

// Of AC-3 itself the frame's own rate tells the play time of the whole file, padding before the
// stream included.
bool analyze_ac3(FileRecord* file, Bytes start, const Output& out) {
    ZatStream stream = new_stream(ZAT_STREAM_AUDIO);
    char line[line_size];
    const Bytes frame = find_frame(start);
    if (!describe_ac3_frame(frame, &stream, line)) {
        return false;
    }
    const uint64_t byte_rate = stream.bit_rate / 8; // the lowest is 32 kbit/s
    const int64_t size = file->origin + file->size;
    out.record->play_time = static_cast<double>(size) / static_cast<double>(byte_rate);
    if (out.details != nullptr) {
        if (set_extended_facts(file, frame.data() - start.data(),
                audio_frame_size(FrameKind::ac3, frame), out, &stream)) {
            out.details->duration = stream.duration;
        } else {
            complete_by_bytes(file->size, &stream);
        }
        copy_utf8(out.details->format, "AC-3");
    }
    set_stream_line(out, stream, line);
    return true;
}

} // namespace

int ac3_file(FileRecord* file, const Output& out) {
    uint8_t buffer[search_size + read_size];
    const Bytes start = {buffer, read_at(file, 0, buffer, sizeof buffer)};
    // What begins with a sync word is no MLP; data of MLP may hold one.
    if (!has_at(start, 0, "\x0B\x77")) {
        if (const int result = mlp_file(file, out); result >= 0) {
            return result;
        }
    }
    return analyze_ac3(file, start, out) ? 0 : eac3_file(file, out);
}

} // namespace zat
