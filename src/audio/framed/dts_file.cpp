#include "audio/framed/dts_file.h"

#include "audio/dts.h"
#include "audio/dts_hd.h"
#include "audio/first_frame.h"
#include "audio/stream_facts.h"
#include "common/record/stream_lines.h"

namespace zat {

namespace {

// Frames over which the rate of a stream with extension substreams is averaged.
constexpr int frames_averaged = 128;

constexpr uint32_t extension_start_size = 1024; // bytes, more than a header has

// The frames at the file's start with the extension substreams behind them.
struct FrameRun {
    int64_t bytes = 0;
    uint64_t samples = 0;
    uint32_t core_rate = 0; // Hz
    bool extended = false;
    DtsHdInfo extension; // the first one
};

FrameRun follow_frames(Reader* reader) {
    const Span file = whole_file(reader);
    FrameRun run;
    for (int frame = 0; frame < frames_averaged; ++frame) {
        DtsInfo core;
        const Bytes start = read_view(reader, file, run.bytes, dts_frame_start_size);
        if (dts_info(start, &core) != 0 || core.sync_type != dts_16bit_be ||
            core.sample_rate <= 0) {
            break;
        }
        run.core_rate = static_cast<uint32_t>(core.sample_rate);
        int64_t end = run.bytes + core.frame_size;
        DtsHdInfo extension;
        if (dts_hd_info(read_view(reader, file, end, extension_start_size), &extension)) {
            run.extension = run.extended ? run.extension : extension;
            run.extended = true;
            end += extension.size;
        }
        if (end > file.end) {
            break;
        }
        run.bytes = end;
        run.samples += core.samples;
    }
    return run;
}

// A core without an extension substream keeps its rate; with one, the mean of the frames at the
// file's start stands.
void set_extension_facts(const FrameRun& run, int64_t file_size, ZatStream* stream) {
    if (!run.extended) {
        return;
    }
    dts_hd_facts(run.extension, stream);
    if (run.samples != 0 && stream->bit_rate == 0) {
        stream->bit_rate = static_cast<uint64_t>(run.bytes) * 8 * run.core_rate / run.samples;
        stream->estimated |= run.bytes < file_size ? uint32_t{ZAT_ESTIMATED_BIT_RATE} : 0;
    }
}

// Words of 14 bits take more of the file than the rate of the stream tells: the length of its
// frames does.
void set_packed_duration(const DtsInfo& core, int64_t file_size, ZatStream* stream) {
    if (core.sync_type != dts_14bit_be && core.sync_type != dts_14bit_le) {
        return;
    }
    constexpr double packing = 16.0 / 14;
    if (core.sample_rate > 0) {
        const double frames = static_cast<double>(file_size) / (core.frame_size * packing);
        stream->duration = frames * core.samples / core.sample_rate;
    }
}

} // namespace

int dts_file(FileRecord* file, const Output& out) {
    constexpr uint32_t core_header_size = 15; // bytes
    Reader reader;
    reader_open(&reader, file);
    const Bytes start = read_view(&reader, whole_file(&reader), 0, core_header_size);
    DtsInfo core;
    ZatStream stream = new_stream(ZAT_STREAM_AUDIO);
    char line[line_size];
    if (dts_info(start, &core) != 0 || !describe_dts_frame(start, &stream, line)) {
        return 1;
    }
    const uint64_t byte_rate = stream.bit_rate / 8;
    if (byte_rate > 0) { // of the whole file, padding before the stream included
        const int64_t size = file->origin + file->size;
        out.record->play_time = static_cast<double>(size) / static_cast<double>(byte_rate);
    }
    // The line is the core's.
    if (out.details != nullptr) {
        set_packed_duration(core, file->size, &stream);
        set_extension_facts(follow_frames(&reader), file->size, &stream);
        complete_by_bytes(file->size, &stream);
        copy_utf8(out.details->format, "DTS");
        out.details->duration = stream.duration;
        out.details->estimated = stream.estimated & uint32_t{ZAT_ESTIMATED_DURATION};
    }
    set_stream_line(out, stream, line);
    return 0;
}

} // namespace zat
