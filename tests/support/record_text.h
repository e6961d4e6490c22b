// A record's findings as one text, so that a row of a test holds all that is expected.
#pragma once

#include "zat/zat.h"

#include <cstdio>
#include <string>

namespace zat::test {

// Every line behind its kind (G, V, A, X, and I for the extra-info text), each closed by "\n"; at
// the end the play time in seconds with three decimals.
inline std::string record_text(const InfoRecord& record) {
    std::string text;
    const auto add = [&text](const char* kind, const auto& lines, int count) {
        for (int i = 0; i < count; ++i) {
            text += std::string(kind) + lines[i] + "\n";
        }
    };
    add("G ", record.general, record.general_count);
    add("V ", record.video, record.video_count);
    add("A ", record.audio, record.audio_count);
    add("X ", record.extra, record.extra_count);
    if (record.extra_info[0] != '\0') {
        text += std::string("I ") + record.extra_info + "\n";
    }
    char time[400];
    std::snprintf(time, sizeof time, "%.3f", record.play_time);
    return text + time;
}

} // namespace zat::test
