// Every file of the fuzz seeds, over a file layer where something goes wrong at each call in turn.
#include "memory_file_access.h"
#include "support/temp_file.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace zat::test::faults_test {

struct Seed {
    std::string name;
    std::vector<uint8_t> bytes;
    std::vector<uint8_t> longer; // the bytes twice
};

const std::vector<Seed>& seeds() {
    static const std::vector<Seed> all = [] {
        std::vector<Seed> read;
        for (const auto& entry : std::filesystem::directory_iterator(ZAT_SOURCE_DIR "/fuzz/seeds")) {
            std::ifstream in(entry.path(), std::ios::binary);
            Seed seed{entry.path().filename().string(), {std::istreambuf_iterator<char>(in), {}}, {}};
            seed.longer = seed.bytes;
            seed.longer.insert(seed.longer.end(), seed.bytes.begin(), seed.bytes.end());
            read.push_back(std::move(seed));
        }
        return read;
    }();
    return all;
}

// The catalogue's file counts among the calls.
void prepare(const std::vector<uint8_t>& bytes) {
    static const std::string names = "[AVI-Audio]\n0055\tMP3\n[QT-BRAND]\nisom\tBase\n[AVI-Video]\n";
    memory_files = {.media = bytes, .catalogue = {reinterpret_cast<const uint8_t*>(names.data()), names.size()}};
}

void prepare(const Seed& seed, Fault fault, int at) {
    prepare(seed.bytes);
    memory_files.longer = seed.longer;
    memory_files.fault = fault;
    memory_files.fault_at = at;
}

std::unique_ptr<InfoRecord> info() {
    auto record = info_of_path("any");
    expect_sound(*record);
    EXPECT_EQ(memory_files.open_files, 0) << "a file was left open";
    EXPECT_EQ(memory_files.reserved_memory, 0) << "memory was left reserved";
    return record;
}

class FaultAtEveryCall : public testing::TestWithParam<Fault> {};

TEST_P(FaultAtEveryCall, leaves_a_sound_record) {
    for (const Seed& seed : seeds()) {
        SCOPED_TRACE(seed.name);
        prepare(seed, Fault::none, 0);
        const auto whole = info();
        const int calls = memory_files.calls;
        ASSERT_GT(calls, 0);
        for (int at = 0; at < calls && !HasFailure(); ++at) {
            SCOPED_TRACE("at call " + std::to_string(at));
            prepare(seed, GetParam(), at);
            const auto record = info();
            if (at != 0) { // the call that opens
                EXPECT_EQ(record->file_size, seed.bytes.size()) << "the size when it was opened";
            } else if (GetParam() == Fault::vanishes) {
                EXPECT_EQ(record->type_code, FILETYPE_OPENFAILED);
            }
        }
        prepare(seed, GetParam(), calls);
        EXPECT_EQ(report_of(*info()), report_of(*whole)) << "a fault behind the last call";
    }
}

// What a file has become before it is opened is all that its lines tell of.
TEST(Faults, a_file_that_changes_before_it_is_opened_is_the_changed_one) {
    for (const Seed& seed : seeds()) {
        SCOPED_TRACE(seed.name);
        const std::vector<uint8_t> half(seed.bytes.begin(), seed.bytes.begin() + static_cast<ptrdiff_t>(seed.bytes.size() / 2));
        const std::pair<Fault, const std::vector<uint8_t>*> changes[] = {{Fault::shrinks, &half}, {Fault::grows, &seed.longer}};
        for (const auto& [fault, changed] : changes) {
            prepare(*changed);
            const auto expected = info();
            prepare(seed, fault, 0);
            EXPECT_EQ(report_of(*info()), report_of(*expected));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Faults, FaultAtEveryCall,
    testing::Values(Fault::short_read, Fault::failed_read, Fault::failed_seek, Fault::vanishes, Fault::shrinks, Fault::grows));

TEST(Faults, no_memory_is_a_refusal) {
    const std::vector<uint8_t> bytes(100000, 0x42); // no zero byte: the text check wants a mebibyte
    memory_files = {.media = bytes, .no_memory = true};
    const auto record = info();
    EXPECT_EQ(record->type_code, FILETYPE_ERROR);
    EXPECT_EQ(record->general_count, 1);
}

} // namespace zat::test::faults_test
