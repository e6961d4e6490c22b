#include "audio/dts_file.h"

#include "audio/dts.h"
#include "audio/dts_hd.h"
#include "audio/first_frame.h"
#include "audio/stream_facts.h"
#include "common/stream_lines.h"

namespace zat {

namespace {

// Frames over which the rate of a stream with extension substreams is averaged.
constexpr int frames_averaged = 128;

constexpr uint32_t extension_start_size = 1024; // bytes, more than a header has

// A core without an extension substream keeps its rate; with one, the mean of the frames at the
// file's start stands.
void add_extension_facts(Reader* reader, ZatStream* stream) {
    const Span file = whole_file(reader);
    int64_t position = 0;
    uint64_t samples = 0;
    uint32_t core_rate = 0;
    bool extended = false;
    for (int frame = 0; frame < frames_averaged; ++frame) {
        DtsInfo core;
        const Bytes start = read_view(reader, file, position, dts_frame_start_size);
        if (dts_info(start, &core) != 0 || core.sync_type != dts_16bit_be ||
            core.sample_rate <= 0) {
            break;
        }
        core_rate = static_cast<uint32_t>(core.sample_rate);
        int64_t end = position + core.frame_size;
        DtsHdInfo extension;
        if (dts_hd_info(read_view(reader, file, end, extension_start_size), &extension)) {
            if (!extended) {
                dts_hd_facts(extension, stream);
            }
            extended = true;
            end += extension.size;
        }
        if (end > file.end) {
            break;
        }
        position = end;
        samples += core.samples;
    }
    if (extended && samples != 0 && stream->bit_rate == 0) {
        stream->bit_rate = static_cast<uint64_t>(position) * 8 * core_rate / samples;
        stream->estimated |= position < file.end ? uint32_t{ZAT_ESTIMATED_BIT_RATE} : 0;
    }
}

} // namespace

int dts_file(FileRecord* file, const Output& out) {
    constexpr uint32_t read_size = 15; // bytes of a core header
    Reader reader;
    reader_open(&reader, file);
    const Bytes start = read_view(&reader, whole_file(&reader), 0, read_size);
    ZatStream stream = new_stream(ZAT_STREAM_AUDIO);
    char line[line_size];
    if (!describe_dts_frame(start, &stream, line)) {
        return 1;
    }
    const uint64_t byte_rate = stream.bit_rate / 8;
    if (byte_rate > 0) {
        out.record->play_time = static_cast<double>(file->size) / static_cast<double>(byte_rate);
    }
    if (out.details != nullptr) {
        add_extension_facts(&reader, &stream);
        complete_by_bytes(file->size, &stream);
        copy_utf8(out.details->format, "DTS");
        out.details->duration = stream.duration;
        out.details->estimated = stream.estimated & uint32_t{ZAT_ESTIMATED_DURATION};
    }
    add_stream_line(out, stream, line);
    return 0;
}

} // namespace zat
