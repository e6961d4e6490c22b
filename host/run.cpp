#include "run.h"

#include "description.h"
#include "encoding.h"
#include "file_list.h"
#include "output.h"
#include "terminal.h"
#include "text_width.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace host {

namespace {

// Files that may be waiting for their turn, per thread: what bounds the memory.
constexpr size_t slots_per_job = 64;

volatile std::sig_atomic_t interrupted = 0; // the signal

void on_interrupt(int signal) {
    interrupted = signal;
}

struct Job {
    size_t index;
    ListedFile file;
};

enum class Outcome { described, not_media, unreadable };
constexpr size_t outcome_count = 3;

struct Result {
    bool ready = false;
    Outcome outcome = Outcome::described;
    std::string text;
    std::string message; // one that makes the program's status a failure
};

bool means_several_files(const Options& options) {
    return options.paths.size() != 1 || !options.files_from.empty() ||
           names_directory(options.paths.front());
}

// What the threads share. Everything but the constants is guarded by the mutex.
struct Work {
    Work(const Library& the_library, const Options& the_options)
        : library(the_library), options(the_options), several(means_several_files(the_options)),
          as_text(the_options.format == Format::table ||
                  (the_options.format == Format::text && !the_options.raw)),
          is_made_printable(output_is_terminal() && !the_options.raw),
          shows_progress(!the_options.quiet && error_is_terminal() && !output_is_terminal()) {}

    const Library& library;
    const Options& options;
    const bool several;
    const bool as_text;
    const bool is_made_printable; // control characters from files must not reach a terminal
    const bool shows_progress;

    std::mutex mutex;
    std::condition_variable has_jobs;
    std::condition_variable has_room;
    std::deque<Job> jobs;
    std::vector<Result> results; // a ring by index
    size_t next_output = 0;
    bool is_writing = false;
    bool is_complete = false; // no more jobs will come
    bool is_stopped = false;  // the output can take no more
    bool has_written = false; // something stands in the output behind the head
    bool has_walked = false;  // a directory's files were found
    size_t counts[outcome_count] = {};
    int status = exit_described;
    std::chrono::steady_clock::time_point progress_shown{};
};

void write_or_stop(Work* work, const std::string& text) {
    if (text.empty()) {
        return;
    }
    const WriteResult result =
        write_output(work->is_made_printable ? printable_lines(text) : text, work->as_text);
    if (result == WriteResult::written) {
        return;
    }
    const std::lock_guard lock(work->mutex);
    if (result == WriteResult::failed && !work->is_stopped) {
        work->status = exit_failures;
        write_message("standard output cannot be written: " + repaired_utf8(last_write_error()));
    }
    work->is_stopped = true;
}

void show_progress(Work* work, size_t count) {
    const auto now = std::chrono::steady_clock::now();
    if (work->shows_progress && now - work->progress_shown > std::chrono::milliseconds(100)) {
        work->progress_shown = now;
        write_progress(std::to_string(count) + " files");
    }
}

void show(Work* work, const Result& result, size_t count) {
    if (!result.message.empty()) {
        if (work->shows_progress) {
            write_progress("");
        }
        write_message(result.message);
    }
    if (!result.text.empty()) {
        write_or_stop(work,
            (work->has_written ? output_separator(work->options) : std::string()) + result.text);
        work->has_written = true;
    }
    show_progress(work, count);
}

Result examine(const Work& work, const Job& job) {
    Description description;
    description.path = job.file.path;
    description.error = job.file.error;
    description.reason = job.file.reason;
    if (description.error.empty()) {
        describe(work.library, query_of(work.options), &description);
    }
    Result result;
    result.ready = true;
    // Among media lie covers, texts and the like: found in a walk, they are no failures.
    const bool is_expected = description.unknown && job.file.is_found && !work.options.strict;
    if (!is_expected || shows_unknown_files(work.options)) {
        result.text = output_of(work.library, work.options, description, work.several);
    }
    if (!description.error.empty()) {
        result.outcome = Outcome::unreadable;
        result.message = repaired_utf8(description.path) + ": " + repaired_utf8(description.error);
    } else if (description.unknown) {
        result.outcome = Outcome::not_media;
        result.message = is_expected ? ""
                                     : repaired_utf8(description.path) + ": unknown type: " +
                                           utf8_of_shift_jis(description.record.general[0]);
    }
    return result;
}

// Whoever finishes the file whose turn it is writes it and all that are ready behind it.
void write_ready(Work* work, std::unique_lock<std::mutex>* lock) {
    if (work->is_writing) {
        return;
    }
    work->is_writing = true;
    while (work->results[work->next_output % work->results.size()].ready) {
        const Result result =
            std::exchange(work->results[work->next_output % work->results.size()], Result{});
        const size_t count = ++work->next_output;
        const bool writes = !work->is_stopped;
        lock->unlock();
        if (writes) {
            show(work, result, count);
        }
        lock->lock();
        work->has_room.notify_one();
    }
    work->is_writing = false;
}

// Examines the files that wait, with the lock held between them.
void examine_jobs(Work* work, std::unique_lock<std::mutex>* lock) {
    while (!work->jobs.empty()) {
        const Job job = std::move(work->jobs.front());
        work->jobs.pop_front();
        lock->unlock();
        Result result = examine(*work, job);
        lock->lock();
        ++work->counts[static_cast<size_t>(result.outcome)];
        work->has_walked = work->has_walked || job.file.is_found;
        if (!result.message.empty()) {
            work->status = exit_failures;
        }
        if (work->options.quiet) {
            result.message.clear();
        }
        work->results[job.index % work->results.size()] = std::move(result);
        write_ready(work, lock);
    }
}

void work_on(Work* work) {
    std::unique_lock lock(work->mutex);
    do {
        examine_jobs(work, &lock);
        work->has_jobs.wait(lock, [&] { return !work->jobs.empty() || work->is_complete; });
    } while (!work->jobs.empty());
}

// False when the system has no thread to give.
bool start_thread(Work* work, std::vector<std::thread>* threads) {
    try {
        threads->emplace_back(work_on, work);
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

// "10,000"
std::string grouped(size_t number) {
    std::string out = std::to_string(number);
    for (size_t at = out.size(); at > 3;) {
        at -= 3;
        out.insert(at, 1, ',');
    }
    return out;
}

std::string summary(const size_t (&counts)[outcome_count]) {
    constexpr const char* words[] = {" described", " not media", " unreadable"};
    size_t total = 0;
    std::string parts;
    for (size_t i = 0; i < outcome_count; ++i) {
        total += counts[i];
        if (counts[i] != 0) {
            parts += (parts.empty() ? ": " : ", ") + grouped(counts[i]) + words[i];
        }
    }
    return grouped(total) + (total == 1 ? " file" : " files") + parts;
}

// Hands the files out and starts threads as they are needed; without any, examines them itself.
void hand_out(Work* work, size_t thread_limit) {
    std::vector<std::thread> threads;
    size_t next = 0;
    for_each_file(work->options, [&](const ListedFile& file) {
        std::unique_lock lock(work->mutex);
        work->has_room.wait(lock, [&] { return next - work->next_output < work->results.size(); });
        if (interrupted != 0 || work->is_stopped) {
            return false;
        }
        work->jobs.push_back({next++, file});
        if (threads.size() < thread_limit && work->jobs.size() > threads.size() &&
            !start_thread(work, &threads)) {
            thread_limit = threads.size();
        }
        if (threads.empty()) {
            examine_jobs(work, &lock);
        }
        work->has_jobs.notify_one();
        return true;
    });
    {
        const std::lock_guard lock(work->mutex);
        if (interrupted != 0) {
            work->jobs.clear();
        }
        work->is_complete = true;
    }
    work->has_jobs.notify_all();
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// The whole output, from its head to its tail.
void write_all(Work* work, size_t jobs) {
    write_or_stop(work, output_head(work->options));
    hand_out(work, jobs);
    if (work->shows_progress) {
        write_progress("");
    }
    if (!work->is_stopped) {
        write_or_stop(work, output_tail(work->options));
    }
    if (work->has_walked && !work->options.quiet) {
        write_message(summary(work->counts));
    }
}

} // namespace

int run(const Library& library, const Options& options) {
    prepare_signals(on_interrupt);
    std::string problem = options.output.empty() ? "" : begin_output_file(options.output);
    if (problem.empty()) {
        const size_t jobs =
            options.jobs != 0 ? options.jobs : std::max(1U, std::thread::hardware_concurrency());
        Work work(library, options);
        work.results.resize(jobs * slots_per_job);
        write_all(&work, jobs);
        if (!options.output.empty()) {
            problem = finish_output_file(options.output, interrupted == 0 && !work.is_stopped);
        }
        if (problem.empty()) {
            return interrupted != 0 ? exit_signal + interrupted : work.status;
        }
    }
    write_message(repaired_utf8(options.output) + ": " + repaired_utf8(problem));
    return exit_failures;
}

} // namespace host
