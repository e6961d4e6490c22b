#include "container/mpeg_ts.h"

#include "common/record/output.h"
#include "container/mpeg_ts/analysis.h"
#include "container/mpeg_ts/describe.h"
#include "container/mpeg_ts/output.h"
#include "container/mpeg_ts/timing.h"

#include <algorithm>

namespace zat {

namespace {

constexpr uint32_t least_budget = 4 << 20; // bytes of the head
constexpr int64_t layout_limit = 2 << 20;  // searched for packets

// Looks for packets piece by piece, each overlapping the one before it by a few packets.
ts::Layout find_packets(ts::Analysis* analysis) {
    constexpr int64_t overlap = 2048;
    for (int64_t position = 0; position < std::min(layout_limit, analysis->file_size);
         position += ts::piece_size - overlap) {
        const Bytes piece = ts::file_bytes(analysis, position, ts::piece_size, ts::buffer_size);
        const bool reaches_end =
            position + static_cast<int64_t>(piece.size()) == analysis->file_size;
        ts::Layout layout = ts::find_layout(piece, reaches_end);
        if (layout.stride != 0) {
            layout.offset += static_cast<uint32_t>(position);
            return layout;
        }
    }
    return {};
}

// The duration of a frame, for the end of the stream's time.
void measure_frames(ts::Analysis* analysis) {
    for (uint32_t i = 0; i < analysis->stream_count; ++i) {
        const ts::Stream& stream = analysis->streams[i];
        ts::Unit* unit = &analysis->units[i];
        if (unit->captured == 0) {
            continue;
        }
        ZatStream facts{};
        ts::StreamText text;
        const Bytes captured = ts::captured_bytes(analysis, *unit);
        if (ts::text_of(stream.codec).kind == ZAT_STREAM_VIDEO) {
            if (ts::describe_video(stream, captured, &facts, &text) && facts.frame_rate >= 1 &&
                facts.frame_rate <= 300) {
                unit->frame_seconds = 1 / facts.frame_rate;
            }
        } else if (ts::describe_audio(stream, captured, &facts, &text)) {
            unit->frame_seconds = text.frame_seconds;
        }
    }
}

void analyse(ts::Analysis* analysis, const Output& out) {
    InfoRecord* record = out.record;
    const bool thorough = is_thorough(*record);
    record->scan_budget = std::max(record->scan_budget, least_budget);
    const int64_t limit = thorough ? analysis->file_size : int64_t{record->scan_budget};
    ts::read_head(analysis, limit, thorough);
    measure_frames(analysis);
    uint16_t order[ts::program_slots];
    const uint32_t count = ts::order_programs(analysis, order);
    const ts::PlayTime time =
        ts::measure_play_time(analysis, count > 0 ? order[0] : ts::program_slots);
    ts::write_analysis(analysis, order, count, time, out);
}

} // namespace

int AnalyzeMpegTsFile(FileRecord* file, const Output& out) {
    const WorkMemory memory(sizeof(ts::Analysis));
    if (memory.bytes == nullptr) {
        return 0; // which tells nothing of packets
    }
    ts::Analysis* analysis = ts::start_analysis(memory, file);
    analysis->layout = find_packets(analysis);
    const bool found = analysis->layout.stride != 0;
    if (found) {
        analyse(analysis, out);
    }
    return found ? 0 : 1;
}

} // namespace zat
