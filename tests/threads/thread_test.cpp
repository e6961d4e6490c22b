// thread_test CATALOGUE DIRECTORY: what several threads at once are told of the files is what one
// thread alone is told. Built by preset linux-tsan, ThreadSanitizer looks on.
#include "zat/details.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr size_t thread_count = 4;
constexpr int rounds = 3;

struct Answer {
    InfoRecord record{};
    ZatDetails details{};
    char report[ZAT_REPORT_SIZE]{};
    char type_name[16]{};
};

// All but the padding of the structures is written by the library or was zero.
bool same(const Answer& a, const Answer& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

void ask(const std::string& path, Answer* answer) {
    std::memset(static_cast<void*>(answer), 0, sizeof *answer);
    path.copy(answer->record.path, sizeof answer->record.path - 1);
    GetFileFormat(&answer->record);
    GetInfo(&answer->record);
    answer->details.size = sizeof answer->details;
    GetDetails(&answer->record, &answer->details);
    ReFormFullBounded(&answer->record, answer->report, sizeof answer->report);
    GetTypeName(answer->record.type_code, answer->type_name, sizeof answer->type_name);
}

using Answers = std::vector<std::unique_ptr<Answer>>;

// Each thread starts at a file of its own, so that the same file and different ones meet.
void ask_all(const std::vector<std::string>& paths, const Answers& expected, size_t first, int* wrong) {
    const auto answer = std::make_unique<Answer>();
    for (size_t i = 0; i < paths.size(); ++i) {
        const size_t at = (first + i) % paths.size();
        ask(paths[at], answer.get());
        *wrong += same(*answer, *expected[at]) ? 0 : 1;
    }
}

int wrong_answers(const std::vector<std::string>& paths, const Answers& expected, size_t step) {
    int wrong[thread_count] = {};
    std::vector<std::thread> threads;
    for (size_t i = 0; i < thread_count; ++i) {
        threads.emplace_back(ask_all, std::cref(paths), std::cref(expected), i * step, &wrong[i]);
    }
    int sum = 0;
    for (size_t i = 0; i < thread_count; ++i) {
        threads[i].join();
        sum += wrong[i];
    }
    return sum;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: thread_test CATALOGUE DIRECTORY\n");
        return 2;
    }
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(argv[2])) {
        paths.push_back(entry.path().string());
    }
    int wrong = paths.empty() ? 1 : 0;
    const char* const catalogues[] = {argv[1], "no catalogue/"};
    for (const char* catalogue : catalogues) {
        SetPath(catalogue); // no other thread is in the library
        Answers expected;
        for (const std::string& path : paths) {
            ask(path, expected.emplace_back(std::make_unique<Answer>()).get());
        }
        for (int round = 0; round < rounds; ++round) {
            wrong += wrong_answers(paths, expected, static_cast<size_t>(round));
        }
    }
    std::printf("%zu files, %zu threads, %d wrong answers\n", paths.size(), thread_count, wrong);
    return wrong == 0 ? 0 : 1;
}
