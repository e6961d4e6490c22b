// Files examined by several threads, what comes of them handed over in the files' order.
#pragma once

#include "description.h"
#include "file_list.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace host {

enum class Outcome { described, other_type, not_media, unreadable };
constexpr size_t outcome_count = 4;

struct Result {
    Outcome outcome = Outcome::described;
    int64_t duration = -1; // microseconds, where it is what is asked for; -1: not known
    std::string text;      // for the output
    std::string message;   // for standard error: one that makes the program's status a failure
};

struct Examined {
    ListedFile file;
    Result result{};
    bool is_ready = false;
};

struct OrderedWork {
    // Visits the files, in the calling thread.
    std::function<void(const FileVisitor& visit)> list;
    // Called by any thread; `description` is the thread's own, to be used again.
    std::function<Result(const ListedFile& file, Description* description)> examine;
    // Called with all that is ready, by one thread at a time. False ends the work.
    std::function<bool(std::span<const Examined> files)> show;
    // Asked before each file; what was begun is finished.
    std::function<bool()> is_cancelled;
};

// With one thread, or when the system has none to give, the calling one does everything. What is
// ready is shown at once; memory is bounded by the number of threads.
void work_in_order(const OrderedWork& work, unsigned threads);

} // namespace host
