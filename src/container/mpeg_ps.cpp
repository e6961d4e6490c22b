#include "container/mpeg_ps.h"

#include "common/record/record_lines.h"
#include "common/tags/outer_tags.h"
#include "common/tags/tag_sizes.h"
#include "container/mpeg_ps/elementary.h"
#include "container/mpeg_ps/program.h"

#include <algorithm>

namespace zat {

namespace {

using namespace ps;

// Where detection found the stream: behind the tags, which it all measures by the first one.
int64_t start_behind_tags(Reader* reader) {
    uint8_t header[id3v2_header_size] = {};
    read_some(reader, whole_file(reader), 0, header, sizeof header);
    const int64_t size = Id3v2Size(header);
    int64_t start = 0;
    char sign[3] = {'I', 'D', '3'};
    while (size > 0 && std::equal(sign, sign + 3, "ID3")) {
        start += size;
        uint8_t next[3] = {};
        read_some(reader, whole_file(reader), start, next, sizeof next);
        std::copy(next, next + 3, sign);
    }
    return start;
}

// Whether the walk found a stream, and not start codes in something else.
bool is_program_stream(const Program& program) {
    uint64_t packets = 0;
    for (size_t i = 0; i < program.table.count; ++i) {
        packets += program.table.streams[i].packets;
    }
    return program.any_pack || packets > 1;
}

// By the packs; without any by the video.
bool is_mpeg2(const Program& program) {
    if (program.any_pack) {
        return program.mpeg2;
    }
    for (size_t i = 0; i < program.table.count; ++i) {
        const Stream& stream = program.table.streams[i];
        if (stream.form == Form::mpeg_sequence) {
            return stream.sequence.extension_found;
        }
    }
    return true;
}

void set_data_size(const Program& program, InfoRecord* record) {
    if (record->data_size == 0) {
        record->data_size =
            static_cast<uint64_t>(program.source.size - std::max<int64_t>(program.stream_at, 0));
    }
}

} // namespace

int AnalyzeProgramStreamFile(FileRecord* file, const Output& out) {
    const WorkMemory memory(sizeof(Program));
    Program* program = start_program(memory, file);
    if (program == nullptr) {
        return 0;
    }
    InfoRecord* record = out.record;
    const int64_t start = start_behind_tags(&program->reader);
    source_open(&program->source, &program->reader, whole_file(&program->reader), Packing::bytes);
    const uint32_t budget = read_program(program, *record, start);
    if (is_program_stream(*program)) {
        program->mpeg2 = is_mpeg2(*program);
        set_label(record, "%s", program->mpeg2 ? "[MPEG2]" : "[MPEG1]");
        set_data_size(*program, record);
        write_program(program, out, "MPEG-PS");
    } else if (!analyze_elementary_stream(program, start, out)) {
        return 0;
    }
    record->scan_budget = budget;
    return static_cast<int>(std::min<int64_t>(program->damaged, INT32_MAX));
}

} // namespace zat
