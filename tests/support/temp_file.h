// A file that lasts as long as the test, and what the library says of it.
#pragma once

#include "zat/details.h"

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zat::test {

struct TempFile {
    std::string path;

    explicit TempFile(const std::vector<uint8_t>& bytes, std::string_view name = {});
    ~TempFile();
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;

    std::ofstream out; // stays open
    bool has_name;     // else it is kept for the next test
};

// Makes the file shorter: less work for the system than a new one.
void cut_file(const TempFile& file, size_t size);

// A directory for a test's files, with its last separator.
std::string temp_directory();

// What GetInfo leaves in a cleared record.
std::unique_ptr<InfoRecord> info_of_path(std::string_view path);
std::unique_ptr<InfoRecord> info_of(const std::vector<uint8_t>& bytes);

// What GetDetails leaves in cleared details.
std::unique_ptr<ZatDetails> details_of(const std::vector<uint8_t>& bytes);

// The whole report.
std::string report_of(const InfoRecord& record);

// Fails the test when a line lacks its terminator, a count leaves its array, or an area of the
// record that belongs to the host was written. Run it on records of damaged files.
void expect_sound(const InfoRecord& record);

// Runs GetInfo on the bytes cut at every `step` lengths and expects a sound record each time.
void expect_sound_at_every_length(const std::vector<uint8_t>& bytes, size_t step = 1);

} // namespace zat::test
