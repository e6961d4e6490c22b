// The limits that docs/host-guide.md promises, measured on the release library: true files stay
// within what is usual, hostile ones within what is the most.
//
//   limits_test LIBRARY SOURCE_DIRECTORY [--print]
#include "limits/hostile_files.h"
#include "limits/measured_call.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace {

using namespace zat::test;

constexpr uint64_t most_stack = 128 << 10;
constexpr uint64_t most_memory = 16 << 20;
// Three times what is promised: the machine may be busy, and slower than the one of the promise.
constexpr double most_milliseconds = 300;

// A row of the table in the guide.
struct Promise {
    std::vector<uint32_t> type_codes;
    uint64_t usual_reads, usual_bytes, most_reads, most_bytes;

    bool operator==(const Promise&) const = default;
};

int failures = 0;
bool prints = false;

void expect_at_most(const std::string& name, const char* what, double value, double limit) {
    if (value > limit) {
        ++failures;
        std::printf("%s: %s is %.0f, more than %.0f\n", name.c_str(), what, value, limit);
    }
}

std::vector<uint64_t> numbers_of(std::string cell) {
    std::replace_if(
        cell.begin(), cell.end(), [](char c) { return c == ','; }, ' ');
    std::istringstream in(cell);
    std::vector<uint64_t> numbers;
    for (uint64_t number = 0; in >> number;) {
        numbers.push_back(number);
    }
    return in.eof() ? numbers : std::vector<uint64_t>{};
}

// The rows "| files | codes | usual calls | usual KiB | calls | MiB |".
std::vector<Promise> read_promises(const std::filesystem::path& guide) {
    std::vector<Promise> promises;
    std::ifstream file(guide);
    for (std::string line; std::getline(file, line);) {
        std::vector<std::string> cells;
        std::istringstream in(line);
        for (std::string cell; std::getline(in, cell, '|');) {
            cells.push_back(cell);
        }
        if (cells.size() != 7) {
            continue;
        }
        std::vector<uint64_t> values;
        for (size_t i = 3; i < 7; ++i) {
            const std::vector<uint64_t> numbers = numbers_of(cells[i]);
            values.push_back(numbers.size() == 1 ? numbers[0] : 0);
        }
        const std::vector<uint64_t> codes = numbers_of(cells[2]);
        if (!codes.empty() && *std::min_element(values.begin(), values.end()) != 0) {
            promises.push_back({{codes.begin(), codes.end()}, values[0], values[1] << 10, values[2], values[3] << 20});
        }
    }
    return promises;
}

const Promise* find_promise(const std::vector<Promise>& promises, uint32_t type_code) {
    const auto found = std::find_if(promises.begin(), promises.end(),
        [&](const Promise& promise) { return std::count(promise.type_codes.begin(), promise.type_codes.end(), type_code) != 0; });
    return found == promises.end() ? nullptr : &*found;
}

void print(const std::string& name, const Cost& cost) {
    if (prints) {
        std::printf("%7.2f ms %6llu stack %8llu memory %9llu bytes %5llu reads, type %3u, %s\n", cost.milliseconds,
            static_cast<unsigned long long>(cost.stack), static_cast<unsigned long long>(cost.memory),
            static_cast<unsigned long long>(cost.bytes_read), static_cast<unsigned long long>(cost.reads), cost.type_code,
            name.c_str());
    }
}

void expect_kept(const std::vector<Promise>& promises, const VirtualFile& file, bool usual) {
    Cost cost = measure(file);
    if (cost.milliseconds > most_milliseconds) {
        cost = measure(file); // once more, in case something else ran at the time
    }
    print(file.name, cost);
    expect_at_most(file.name, "stack", static_cast<double>(cost.stack), most_stack);
    expect_at_most(file.name, "memory", static_cast<double>(cost.memory), most_memory);
    expect_at_most(file.name, "processor time", cost.milliseconds, most_milliseconds);
    const Promise* promise = find_promise(promises, cost.type_code);
    if (promise == nullptr) {
        ++failures;
        std::printf("%s: the guide has no limits for type %u\n", file.name.c_str(), cost.type_code);
        return;
    }
    expect_at_most(file.name, "reads", static_cast<double>(cost.reads),
        static_cast<double>(usual ? promise->usual_reads : promise->most_reads));
    expect_at_most(file.name, "bytes read", static_cast<double>(cost.bytes_read),
        static_cast<double>(usual ? promise->usual_bytes : promise->most_bytes));
}

// The limits leave room for what a true file holds.
void expect_told(const VirtualFile& file, const char* text) {
    if (measure(file).report.find(text) == std::string::npos) {
        ++failures;
        std::printf("%s: no %s in the report\n", file.name.c_str(), text);
    }
}

// All of the file is asked for, and the budget ends it.
void expect_stopped(const std::vector<Promise>& promises, const VirtualFile& file) {
    constexpr uint32_t thorough = 1;
    constexpr uint32_t budget = 100 << 20;
    const Cost cost = measure(file, thorough, budget);
    print(file.name + ", thorough", cost);
    const Promise* promise = find_promise(promises, cost.type_code);
    expect_at_most(file.name, "bytes read in spite of the budget", static_cast<double>(cost.bytes_read),
        static_cast<double>(std::max<uint64_t>(budget, promise == nullptr ? 0 : promise->most_bytes)));
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3 || !load_library(argv[1], (std::string(argv[2]) + "/catalogue/").c_str())) {
        std::fprintf(stderr, "limits_test: the library cannot be loaded\n");
        return 1;
    }
    prints = argc > 3;
    const std::filesystem::path source = argv[2];
    const std::vector<Promise> promises = read_promises(source / "docs/host-guide.md");
    if (promises.empty() || promises != read_promises(source / "docs/host-guide.ja.md")) {
        std::printf("the guides have no table of limits, or two that differ\n");
        return 1;
    }
    for (const VirtualFile& file : built_hostile_files()) {
        expect_kept(promises, file, false);
        expect_stopped(promises, file);
    }
    for (const auto& entry : std::filesystem::directory_iterator(source / "fuzz/seeds")) {
        const std::string name = entry.path().filename().string();
        std::ifstream in(entry.path(), std::ios::binary);
        const std::vector<uint8_t> seed(std::istreambuf_iterator<char>(in), {});
        expect_kept(promises, VirtualFile{name}.add(seed), true);
        for (const VirtualFile& file : grown_files(name, seed)) {
            expect_kept(promises, file, false);
        }
    }
    expect_told(movie_of_fragments(25000), "MovieFragment(25000)");
    expect_told(movie_without_end(), "320x240");
    std::printf("%d limits are not kept\n", failures);
    return failures == 0 ? 0 : 1;
}
