#include "container/mpeg_ts/pid_line.h"

#include "common/catalogue/codec_catalogue.h"
#include "common/record/record_lines.h"
#include "common/text/text.h"

#include <bit>

namespace zat::ts {

namespace {

bool carries_pcr(const Analysis* analysis, uint16_t pid) {
    for (uint32_t i = 0; i < analysis->program_count; ++i) {
        const Program& program = analysis->programs[i];
        if (is_active(analysis, program) && program.pcr_pid == pid) {
            return true;
        }
    }
    return false;
}

bool belongs_to_stream(const Analysis* analysis, const Pid& place) {
    if (place.stream == 0) {
        return false;
    }
    const uint16_t program = analysis->streams[place.stream - 1].program;
    return program == program_slots || is_active(analysis, analysis->programs[program]);
}

// The first identifier from `pid` on of which packets were seen; pid_count without one.
uint32_t next_seen(const Analysis* analysis, uint32_t pid) {
    while (pid < pid_count) {
        const uint64_t seen = analysis->seen[pid / 64] >> pid % 64;
        if (seen != 0) {
            return pid + static_cast<uint32_t>(std::countr_zero(seen));
        }
        pid = (pid / 64 + 1) * 64;
    }
    return pid_count;
}

// Identifiers in the line: as many as the shortest entries would fill it with.
constexpr uint32_t entry_slots = line_size / 5;

} // namespace

void write_pid_line(const Analysis* analysis, InfoRecord* record) {
    if (record->extra_count >= ZAT_LINE_COUNT) {
        return;
    }
    CodecKey keys[entry_slots] = {};
    uint16_t pids[entry_slots];
    uint32_t count = 0;
    for (uint32_t pid = next_seen(analysis, 0); pid < pid_count && count < entry_slots;
         pid = next_seen(analysis, pid + 1)) {
        if (!belongs_to_stream(analysis, known_of(analysis, pid))) {
            format_text(keys[count].key, sizeof keys[count].key, "%04X", pid);
            pids[count++] = static_cast<uint16_t>(pid);
        }
    }
    codec_names("[MPEG2-TS-PID]", {keys, count});
    char line[line_size] = "PID";
    for (uint32_t i = 0; i < count; ++i) {
        CodecKey* key = &keys[i];
        if (known_of(analysis, pids[i]).carries_map) {
            copy_text(key->name, "PMT");
        } else if (!key->found) {
            copy_text(key->name, carries_pcr(analysis, pids[i]) ? "PCR" : "");
        }
        char entry[100];
        format_text(
            entry, sizeof entry, key->name[0] != '\0' ? " %s(%s)" : " %s", key->key, key->name);
        if (bounded_text(line).size() + bounded_text(entry).size() >= line_size) {
            break;
        }
        append_text(line, entry);
    }
    if (count != 0) {
        add_extra_line(record, "%s", line);
    }
}

} // namespace zat::ts
