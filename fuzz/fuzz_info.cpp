// Goes through the library as a host does: a file, GetDetails, the report; for some files, and for
// all in a replay, a second call and the other report. Aborts when what comes back is not sound, or
// cost more than is promised.
#include "input_file.h"
#include "sound.h"
#include "target.h"

#include "common/record/output.h"
#include "common/text/text.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <vector>

// libFuzzer's counters, one for each edge; none in a replay.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the linker names them
[[gnu::weak]] extern uint8_t __start___sancov_cntrs[];
[[gnu::weak]] extern uint8_t __stop___sancov_cntrs[];
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
}

namespace {

using namespace zat::test;

struct Result {
    InfoRecord record;
    ZatDetails details;
};

// What is done with a file follows from its bytes, so that a finding stays one.
bool is_called_again(zat::Bytes bytes) {
    constexpr size_t one_in = 64;
    const size_t middle = zat::byte_at(bytes, bytes.size() / 2);
    return is_replay || (bytes.size() + middle) % one_in == 0;
}

// The time that a thorough call takes grows with the file.
uint32_t options_for(zat::Bytes bytes, const InputFile& file) {
    const bool is_itself = file.size == static_cast<int64_t>(bytes.size());
    return is_itself && bytes.size() / 8 % 4 == 3 ? zat::option_thorough : 0;
}

void clear(InfoRecord* record, const char* path, uint32_t options) {
    std::memset(record, 0, sizeof *record);
    mark_host_areas(record);
    zat::copy_text(record->path, path);
    record->options = options;
}

// What reads memory that it did not write sees other bytes in every call.
__attribute__((noinline)) void fill_stack(int byte) {
    char area[65536];
    std::memset(area, byte, sizeof area);
    __asm__ volatile("" : : "r"(area) : "memory");
}

double seconds(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void call(Result* result) {
    const int32_t known = GetDetails(&result->record, &result->details);
    require(known == (result->record.type_code >= FILETYPE_MEDIA ? 1 : 0), "the result");
}

// The promise for a call without options, ten times over: that is what sanitizers cost.
constexpr double time_limit = 1.0; // seconds of processor time
constexpr int64_t memory_limit = int64_t{16} << 20;

// The wall clock costs no system call; the processor's is asked when that one shows too much.
void require_time(double wall, Result* again) {
    if (wall < time_limit) {
        return;
    }
    const double start = seconds(CLOCK_THREAD_CPUTIME_ID);
    call(again);
    require(seconds(CLOCK_THREAD_CPUTIME_ID) - start < time_limit, "the time of a call");
}

void require_cost(const InputCost& cost, size_t size) {
    // What is promised of any kind, detection's share on top; a thorough call goes through all
    // bytes.
    constexpr int64_t most_reads = 8192 + 64;
    constexpr int64_t most_bytes = int64_t{64 + 15} << 20;
    const auto bytes = static_cast<int64_t>(size);
    require(cost.memory <= memory_limit, "memory");
    require(cost.reads <= most_reads + bytes, "reads");
    require(cost.bytes <= most_bytes + bytes, "bytes read");
}

template <class Structure>
void require_same(const Structure& a, const Structure& b, const char* what) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(&a);
    require(std::equal(bytes, bytes + sizeof a, reinterpret_cast<const uint8_t*>(&b)), what);
}

// Neither the details' former content nor that of the stack may show in a result, and a host that
// asks for the record alone gets the same one.
void require_same_again(const Result& first, const char* path, uint32_t options) {
    static Result again;
    clear(&again.record, path, options);
    std::memset(&again.details, 0xEE, sizeof again.details);
    again.details.size = sizeof again.details;
    fill_stack(0x5A);
    call(&again);
    require_same(first.record, again.record, "a second call has another record");
    require_same(first.details, again.details, "a second call has other details");
    clear(&again.record, path, options);
    GetInfo(&again.record);
    require_same(first.record, again.record, "a call without details has another record");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Result result;
    const InputFile file = input_file({data, size});
    const uint32_t options = options_for({data, size}, file);
    clear(&result.record, file.path, options);
    result.details.size = sizeof result.details;

    const double start = seconds(CLOCK_MONOTONIC);
    call(&result);
    const double wall = seconds(CLOCK_MONOTONIC) - start;
    require(left_behind() == 0, "a file was left open, or memory was left reserved");
    require_cost(input_cost(), size);
    require_sound(result.record);
    require_sound(result.details);
    require_agreement(result.record, result.details);
    require_sound_report(result.record);
    if (result.record.type_code >= FILETYPE_MEDIA) {
        require(result.record.file_size == static_cast<uint64_t>(file.size), "the file's size");
    }
    if (is_called_again({data, size})) {
        // Only the first call counts, or the input would look like one that goes new ways.
        const std::vector<uint8_t> counters(__start___sancov_cntrs, __stop___sancov_cntrs);
        require_same_again(result, file.path, options);
        require_sound_short_report(result.record);
        std::ranges::copy(counters, __start___sancov_cntrs);
    }
    require_time(wall, &result); // last, for it may call once more with the same record
    return 0;
}
