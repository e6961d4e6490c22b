// GetInfo and ReFormFull per file on a warm cache, beside the floor: open, read 64 KiB, close.
#include "common/catalogue/codec_catalogue.h"
#include "corpus.h"
#include "io_counters.h"
#include "zat/zat.h"

#include <benchmark/benchmark.h>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <unistd.h>

namespace {

void set_counters(benchmark::State& state, const IoCounters& before) {
    const auto runs = static_cast<double>(state.iterations());
    state.counters["calls"] = static_cast<double>(io_counters.calls - before.calls) / runs;
    state.counters["bytes_read"] =
        static_cast<double>(io_counters.bytes_read - before.bytes_read) / runs;
}

void describe(benchmark::State& state, const std::string& path) {
    const auto record = std::make_unique<InfoRecord>();
    const auto report = std::make_unique<char[]>(ZAT_REPORT_SIZE);
    const IoCounters before = io_counters;
    for (auto _ : state) {
        std::memset(record.get(), 0, sizeof *record);
        std::memcpy(record->path, path.c_str(), path.size() + 1);
        GetInfo(record.get());
        ReFormFull(record.get(), report.get());
        benchmark::DoNotOptimize(report.get());
    }
    set_counters(state, before);
}

void detect(benchmark::State& state, const std::string& path) {
    const auto record = std::make_unique<InfoRecord>();
    const IoCounters before = io_counters;
    for (auto _ : state) {
        std::memset(record.get(), 0, sizeof *record);
        std::memcpy(record->path, path.c_str(), path.size() + 1);
        GetFileFormat(record.get());
        benchmark::DoNotOptimize(record->type_code);
    }
    set_counters(state, before);
}

void floor_of(benchmark::State& state, const std::string& path) {
    const auto buffer = std::make_unique<char[]>(65536);
    const IoCounters before = io_counters;
    for (auto _ : state) {
        const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        benchmark::DoNotOptimize(pread(file, buffer.get(), 65536, 0));
        close(file);
    }
    set_counters(state, before);
}

// The last entry that a query without a hit has to pass.
void look_up(benchmark::State& state, const char* section, const char* key) {
    char name[256];
    const IoCounters before = io_counters;
    for (auto _ : state) {
        benchmark::DoNotOptimize(zat::codec_name(section, key, key, name, sizeof name));
    }
    set_counters(state, before);
}

} // namespace

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    const fs::path directory =
        fs::temp_directory_path() / ("zat-bench-" + std::to_string(getpid()));
    fs::create_directories(directory);
    SetPath(ZAT_SOURCE_DIR "catalogue/");
    for (const BenchFile& file : make_corpus(directory.string() + "/")) {
        benchmark::RegisterBenchmark(("describe/" + file.name).c_str(), describe, file.path)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark(("detect/" + file.name).c_str(), detect, file.path)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark(("floor/" + file.name).c_str(), floor_of, file.path)
            ->Unit(benchmark::kMicrosecond);
    }
    benchmark::RegisterBenchmark("catalogue/found", look_up, "[AVI-Audio]", "0055")
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("catalogue/not-listed", look_up, "[AVI-Video]", "zzzz")
        ->Unit(benchmark::kMicrosecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    fs::remove_all(directory);
    return 0;
}
