// Files of one stream of audio: what record and details say of them, and the tags that they end in.
#pragma once

#include "support/analysed.h"
#include "support/byte_builder.h"
#include "support/details_text.h"
#include "support/record_text.h"

namespace zat::test {

struct AudioFileRow {
    const char* what;
    Data file;
    std::string record; // behind the play time the data size
    std::string details = {};
};

// Holds every row against record and details.
inline void expect_rows(Analyser analyser, const std::vector<AudioFileRow>& rows) {
    for (const AudioFileRow& row : rows) {
        const TempFile temporary(row.file);
        FileRecord file;
        ASSERT_EQ(FileOpen(&file, temporary.path.c_str()), 0);
        InfoRecord record{};
        const auto details = std::make_unique<ZatDetails>();
        analyser(&file, {&record, details.get()});
        FileClose(&file);
        expect_sound(record);
        EXPECT_EQ(record_text(record) + " " + std::to_string(record.data_size), row.record) << row.what;
        if (!row.details.empty()) {
            EXPECT_EQ(details_text(*details), row.details) << row.what;
        }
    }
    for (const AudioFileRow& row : rows) {
        if (row.file.size() < 2000) {
            expect_sound_when_cut(analyser, row.file);
        }
    }
}

inline Data text(std::string_view value) {
    return ByteBuilder().text(value).bytes;
}

inline Data id3v1(std::string_view title) {
    return ByteBuilder().text("TAG").text(title).pad_to(128).bytes;
}

inline Data ape_tag(uint64_t version, std::string_view key, std::string_view value) {
    const Data items = ByteBuilder().le32(value.size()).le32(0).text(key).u8(0).text(value).bytes;
    return ByteBuilder().append(items).text("APETAGEX").le32(version).le32(items.size() + 32).le32(1).le32(0).fill(8).bytes;
}

} // namespace zat::test
