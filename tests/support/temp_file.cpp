#include "support/temp_file.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <tuple>
#include <utility>

namespace zat::test {

namespace {

void expect_terminated(const char* text, size_t size, const char* what) {
    EXPECT_NE(std::memchr(text, '\0', size), nullptr) << what << " lacks its terminator";
}

void expect_count(int32_t count, int32_t slots, const char* what) {
    EXPECT_GE(count, 0) << what;
    EXPECT_LE(count, slots) << what;
}

// Files that no test needs any more, still open: with Wine's server, writing one anew takes a fiftieth of
// making and removing one.
std::vector<std::pair<std::string, std::ofstream>>& spare_files() {
    temp_directory(); // made before and so removed after them
    static std::vector<std::pair<std::string, std::ofstream>> files;
    return files;
}

// What tests look at is a good start for fuzzing: fuzz/run asks for copies in a directory, as long as an
// input may be.
void keep_copy(const std::vector<uint8_t>& bytes) {
    static const char* const directory = std::getenv("ZAT_KEEP_TEST_FILES");
    if (directory != nullptr) {
        static int next = 0;
        const size_t size = std::min<size_t>(bytes.size(), 12288);
        std::ofstream(directory + ("/" + std::to_string(next++)), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(size));
    }
}

} // namespace

std::string temp_directory() {
    static const std::string directory = [] {
        std::random_device random;
        const auto unique = std::to_string(random()) + "-" + std::to_string(random());
        const auto path = std::filesystem::temp_directory_path() / ("zat-test-" + unique);
        std::filesystem::create_directories(path);
        static struct Remover {
            std::filesystem::path path;
            ~Remover() {
                std::error_code ignored;
                std::filesystem::remove_all(path, ignored);
            }
        } remover{path};
        return (path / "").string();
    }();
    return directory;
}

TempFile::TempFile(const std::vector<uint8_t>& bytes, std::string_view name) : has_name(!name.empty()) {
    static int next = 0;
    if (has_name || spare_files().empty()) {
        path = temp_directory() + std::to_string(next++) + "-" + std::string(name);
        out.open(path, std::ios::binary);
    } else {
        std::tie(path, out) = std::move(spare_files().back());
        spare_files().pop_back();
        out.seekp(0);
    }
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size())).flush();
    cut_file(*this, bytes.size());
    keep_copy(bytes);
}

TempFile::~TempFile() {
    if (has_name) {
        out.close();
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
    } else {
        spare_files().emplace_back(std::move(path), std::move(out));
    }
}

void cut_file(const TempFile& file, size_t size) {
    std::filesystem::resize_file(file.path, size);
}

std::unique_ptr<InfoRecord> info_of_path(std::string_view path) {
    auto record = std::make_unique<InfoRecord>();
    std::memcpy(record.get(), path.data(), std::min(path.size(), sizeof(InfoRecord)));
    GetInfo(record.get());
    return record;
}

std::unique_ptr<InfoRecord> info_of(const std::vector<uint8_t>& bytes) {
    return info_of_path(TempFile(bytes).path);
}

std::unique_ptr<ZatDetails> details_of(const std::vector<uint8_t>& bytes) {
    const TempFile file(bytes);
    auto record = std::make_unique<InfoRecord>();
    file.path.copy(record->path, sizeof record->path - 1);
    auto details = std::make_unique<ZatDetails>();
    details->size = sizeof(ZatDetails);
    GetDetails(record.get(), details.get());
    return details;
}

std::string report_of(const InfoRecord& record) {
    std::string report(ReFormFullBounded(&record, nullptr, 0) + 1, '\0');
    ReFormFullBounded(&record, report.data(), static_cast<uint32_t>(report.size()));
    report.pop_back();
    return report;
}

void expect_sound(const InfoRecord& record) {
    expect_count(record.general_count, 2, "general count");
    expect_count(record.video_count, ZAT_LINE_COUNT, "video count");
    expect_count(record.audio_count, ZAT_LINE_COUNT, "audio count");
    expect_count(record.extra_count, ZAT_LINE_COUNT, "extra count");
    expect_terminated(record.label, sizeof record.label, "label");
    expect_terminated(record.extra_info, sizeof record.extra_info, "extra info");
    for (const auto& line : record.general) {
        expect_terminated(line, sizeof line, "general line");
    }
    for (int i = 0; i < ZAT_LINE_COUNT; ++i) {
        expect_terminated(record.video[i], ZAT_LINE_SIZE, "video line");
        expect_terminated(record.audio[i], ZAT_LINE_SIZE, "audio line");
        expect_terminated(record.extra[i], ZAT_LINE_SIZE, "extra line");
    }
    for (const uint8_t byte : record.reserved) {
        EXPECT_EQ(byte, 0) << "the reserved area was written";
    }
    for (const uint8_t byte : record.unused) {
        EXPECT_EQ(byte, 0) << "the unused area was written";
    }
    report_of(record);
}

void expect_sound_at_every_length(const std::vector<uint8_t>& bytes, size_t step) {
    const TempFile file(bytes);
    for (size_t length = (bytes.size() + step - 1) / step * step; length != 0;) {
        length -= step;
        SCOPED_TRACE("cut at " + std::to_string(length));
        cut_file(file, length);
        expect_sound(*info_of_path(file.path));
        if (::testing::Test::HasFailure()) {
            return;
        }
    }
}

} // namespace zat::test
