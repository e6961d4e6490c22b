// Every file of the fuzz seeds, read by a file layer that fails after so many reads, as a file does
// that is cut or vanishes while it is examined.
#include "faults/faulty_file_access.h"
#include "support/temp_file.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace {

using namespace zat::test;

void expect_nothing_lost(const InfoRecord& record) {
    expect_sound(record);
    EXPECT_EQ(faults.open_files, 0) << "a file was left open";
    EXPECT_EQ(faults.reserved_memory, 0) << "memory was left reserved";
}

std::vector<std::filesystem::path> seeds() {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(ZAT_SOURCE_DIR "/fuzz/seeds")) {
        paths.push_back(entry.path());
    }
    return paths;
}

TEST(Faults, a_file_that_shrinks_at_any_read_yields_what_was_read) {
    for (const auto& path : seeds()) {
        SCOPED_TRACE(path.string());
        std::ifstream in(path, std::ios::binary);
        file_bytes.assign(std::istreambuf_iterator<char>(in), {});
        faults = {};
        const auto whole = info_of_path("any");
        expect_nothing_lost(*whole);
        const int reads = faults.reads;
        for (int good = 0; good < reads; ++good) {
            faults = {.good_reads = good};
            expect_nothing_lost(*info_of_path("any"));
        }
        faults = {.good_reads = reads};
        EXPECT_EQ(report_of(*info_of_path("any")), report_of(*whole));
    }
}

TEST(Faults, no_memory_is_a_refusal) {
    file_bytes.assign(100000, 0x42); // no zero byte: the text check wants a mebibyte
    faults = {.no_memory = true};
    const auto record = info_of_path("any");
    expect_nothing_lost(*record);
    EXPECT_EQ(record->type_code, FILETYPE_ERROR);
    EXPECT_EQ(record->general_count, 1);
}

} // namespace
