// A record as one analyser leaves it, without the detection that comes before it.
#pragma once

#include "common/text.h"
#include "support/temp_file.h"

#include <gtest/gtest.h>

namespace zat::test {

inline std::unique_ptr<InfoRecord> analysed(
    int (*analyser)(InfoRecord*), const std::vector<uint8_t>& bytes, uint32_t type_code = 0, double play_time = 0) {
    const TempFile file(bytes);
    auto record = std::make_unique<InfoRecord>();
    copy_text(record->path, file.path);
    record->type_code = type_code;
    record->play_time = play_time;
    analyser(record.get());
    expect_sound(*record);
    EXPECT_EQ(record->file_size, bytes.size());
    return record;
}

// Runs the analyser on the bytes cut at every length.
inline void expect_sound_when_cut(int (*analyser)(InfoRecord*), const std::vector<uint8_t>& bytes, uint32_t type_code = 0) {
    for (auto end = bytes.begin(); end != bytes.end(); ++end) {
        SCOPED_TRACE(end - bytes.begin());
        analysed(analyser, {bytes.begin(), end}, type_code);
    }
}

} // namespace zat::test
