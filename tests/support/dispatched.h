// What the analyser of a type leaves, without the detection that comes before it.
#pragma once

#include "api/dispatch.h"
#include "common/file/file_access.h"
#include "support/byte_builder.h"
#include "support/details_text.h"
#include "support/record_text.h"
#include "support/temp_file.h"

#include <gtest/gtest.h>

namespace zat::test {

struct Dispatched {
    InfoRecord record{};
    ZatDetails details{};

    std::string text() const { return record_text(record) + "\n" + details_text(details); }
};

inline std::unique_ptr<Dispatched> dispatched(uint32_t type_code, const Data& bytes, uint32_t options = 0) {
    const TempFile temporary(bytes);
    FileRecord file;
    EXPECT_EQ(FileOpen(&file, temporary.path.c_str()), 0);
    auto result = std::make_unique<Dispatched>();
    result->record.file_size = bytes.size();
    result->record.type_code = type_code;
    result->record.options = options;
    DispatchAnalyser(&file, {&result->record, &result->details});
    expect_sound(result->record);
    return result;
}

// Runs the analyser on the bytes cut at every length of their headers, and at some behind these.
inline void expect_sound_when_cut(uint32_t type_code, const Data& bytes) {
    constexpr size_t headers = 512;
    constexpr size_t step = 61;
    for (size_t size = 0; size < bytes.size(); size += size < headers ? 1 : step) {
        SCOPED_TRACE(size);
        dispatched(type_code, {bytes.data(), bytes.data() + size});
    }
}

struct DispatchedRow {
    const char* name;
    Data bytes;
    std::string expected; // lines and play time, then the details
};

// Files of one type, of which the first is cut too.
inline void expect_rows(uint32_t type_code, const char* label, const std::vector<DispatchedRow>& rows) {
    for (const DispatchedRow& row : rows) {
        const auto found = dispatched(type_code, row.bytes);
        EXPECT_EQ(found->text(), row.expected) << row.name;
        EXPECT_STREQ(found->record.label, label) << row.name;
    }
    expect_sound_when_cut(type_code, rows[0].bytes);
}

} // namespace zat::test
