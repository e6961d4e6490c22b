// A record as one analyser leaves it, without the detection that comes before it.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"
#include "common/text/text.h"
#include "support/temp_file.h"

#include <gtest/gtest.h>

namespace zat::test {

using Analyser = int (*)(FileRecord*, const Output&);

inline std::unique_ptr<InfoRecord> analysed(
    Analyser analyser, const TempFile& temporary, uint32_t type_code = 0, double play_time = 0, int* result = nullptr) {
    FileRecord file;
    EXPECT_EQ(FileOpen(&file, temporary.path.c_str()), 0);
    auto record = std::make_unique<InfoRecord>();
    record->file_size = static_cast<uint64_t>(file.size);
    record->type_code = type_code;
    record->play_time = play_time;
    const int returned = analyser(&file, {record.get(), nullptr});
    if (result != nullptr) {
        *result = returned;
    }
    FileClose(&file);
    expect_sound(*record);
    return record;
}

inline std::unique_ptr<InfoRecord> analysed(
    Analyser analyser, const std::vector<uint8_t>& bytes, uint32_t type_code = 0, double play_time = 0, int* result = nullptr) {
    return analysed(analyser, TempFile(bytes), type_code, play_time, result);
}

// The same for a stream behind padding, which detection leaves out of the file.
inline std::unique_ptr<InfoRecord> analysed_behind(size_t padding, Analyser analyser, const std::vector<uint8_t>& bytes) {
    const TempFile temporary(bytes);
    FileRecord file;
    EXPECT_EQ(FileOpen(&file, temporary.path.c_str()), 0);
    FileBeginAt(&file, static_cast<int64_t>(padding));
    auto record = std::make_unique<InfoRecord>();
    EXPECT_EQ(analyser(&file, {record.get(), nullptr}), 0);
    return record;
}

// Runs the analyser on the bytes cut at every length.
inline void expect_sound_when_cut(Analyser analyser, const std::vector<uint8_t>& bytes, uint32_t type_code = 0) {
    const TempFile file(bytes);
    for (size_t length = bytes.size(); length-- != 0;) {
        SCOPED_TRACE(length);
        cut_file(file, length);
        analysed(analyser, file, type_code);
    }
}

} // namespace zat::test
