#include "run.h"

#include "encoding.h"
#include "file_list.h"
#include "files.h"
#include "messages.h"
#include "ordered_work.h"
#include "output.h"
#include "sorting.h"
#include "terminal.h"
#include "text_width.h"
#include "type_filter.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>
#include <utility>

namespace host {

namespace {

volatile std::sig_atomic_t interrupted = 0; // the signal

void on_interrupt(int signal) {
    interrupted = signal;
}

bool means_several_files(const Options& options) {
    return options.paths.size() != 1 || !options.files_from.empty() ||
           names_directory(options.paths.front());
}

bool is_interrupted() {
    return interrupted != 0;
}

// What is written, and what is counted on the way.
struct Report {
    const Library& library;
    const Options& options;
    const bool several = means_several_files(options);
    const bool as_text =
        options.format == Format::table || (options.format == Format::text && !options.raw);
    // Control characters from files must not reach a terminal.
    const bool is_made_printable = output_is_terminal() && !options.raw;
    const bool shows_progress = !options.quiet && error_is_terminal() && !output_is_terminal();

    bool is_stopped = false;  // the output can take no more
    bool has_written = false; // something stands in the output behind the head
    bool has_walked = false;  // a directory's files were found
    size_t counts[outcome_count] = {};
    size_t total = 0;
    int status = exit_described;
    std::chrono::steady_clock::time_point progress_shown{};
};

void write_or_stop(Report* report, const std::string& text) {
    if (text.empty() || report->is_stopped) {
        return;
    }
    const WriteResult result =
        write_output(report->is_made_printable ? printable_lines(text) : text, report->as_text);
    if (result == WriteResult::failed) {
        report->status = exit_failures;
        write_message(message(Message::output_failed, last_write_error()));
    }
    report->is_stopped = result != WriteResult::written;
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

std::string number_of_files(size_t number) {
    return message(number == 1 ? Message::one_file : Message::files, grouped(number));
}

void show_progress(Report* report) {
    const auto now = std::chrono::steady_clock::now();
    if (report->shows_progress && now - report->progress_shown > std::chrono::milliseconds(100)) {
        report->progress_shown = now;
        write_progress(number_of_files(report->total));
    }
}

void tell(const Report& report, const std::string& text) {
    if (report.options.quiet) {
        return;
    }
    if (report.shows_progress) {
        write_progress("");
    }
    write_message(text);
}

// All that is ready in one piece, but what goes before a message stands before it.
bool show(Report* report, std::span<const Examined> files) {
    std::string text;
    for (const Examined& examined : files) {
        const Result& result = examined.result;
        ++report->counts[static_cast<size_t>(result.outcome)];
        ++report->total;
        report->has_walked = report->has_walked || examined.file.is_found;
        if (!result.message.empty()) {
            report->status = exit_failures;
            write_or_stop(report, std::exchange(text, {}));
            tell(*report, result.message);
        }
        if (!result.text.empty()) {
            text += report->has_written ? output_separator(report->options) : "";
            text += result.text;
            report->has_written = true;
        }
    }
    write_or_stop(report, text);
    show_progress(report);
    return !report->is_stopped;
}

Result examine(const Report& report, const ListedFile& file, Description* description) {
    clear(description);
    description->path = file.path;
    description->error = file.error;
    description->reason = file.reason;
    if (description->error.empty()) {
        describe(report.library, query_of(report.options), description);
    }
    Result result;
    if (!report.options.types.empty() && description->error.empty() && !description->unknown &&
        !has_type(*description, report.options.types)) {
        result.outcome = Outcome::other_type;
        return result;
    }
    // Among media lie covers, texts and the like: found in a walk, they are no failures.
    const bool is_expected = description->unknown && file.is_found && !report.options.strict;
    const bool is_shown =
        !is_expected || (shows_unknown_files(report.options) && report.options.types.empty());
    if (is_shown) {
        result.text = output_of(report.library, report.options, *description, report.several);
    }
    const std::string path = repaired_utf8(description->path);
    if (!description->error.empty()) {
        result.outcome = Outcome::unreadable;
        result.message = path + ": " + description->error;
    } else if (description->unknown) {
        result.outcome = Outcome::not_media;
        result.message =
            is_expected ? "" : message(Message::unknown_type, path, description->refusal);
    }
    return result;
}

std::string summary(const Report& report) {
    constexpr Message words[] = {
        Message::described, Message::other_types, Message::not_media, Message::unreadable};
    std::string parts;
    for (size_t i = 0; i < outcome_count; ++i) {
        if (report.counts[i] != 0) {
            parts += parts.empty() ? ": " : ", ";
            parts += message(words[i], grouped(report.counts[i]));
        }
    }
    return number_of_files(report.total) + parts;
}

// The whole output, from its head to its tail.
void write_all(Report* report) {
    const unsigned processors = std::max(1U, std::thread::hardware_concurrency());
    const unsigned jobs = report->options.jobs != 0 ? report->options.jobs : processors;
    write_or_stop(report, output_head(report->options));
    work_in_order(
        {[&](const FileVisitor& visit) {
             for_each_sorted_file(report->library, report->options, jobs, is_interrupted, visit);
         },
            [&](const ListedFile& file, Description* description) {
                return examine(*report, file, description);
            },
            [&](std::span<const Examined> files) { return show(report, files); }, is_interrupted},
        report->several ? jobs : 1);
    if (report->shows_progress) {
        write_progress("");
    }
    write_or_stop(report, output_tail(report->options));
    if (report->has_walked) {
        tell(*report, summary(*report));
    }
}

} // namespace

int run(const Library& library, const Options& options) {
    prepare_signals(on_interrupt);
    std::string problem = options.output.empty() ? "" : begin_output_file(options.output);
    if (problem.empty()) {
        Report report{library, options};
        write_all(&report);
        if (!options.output.empty()) {
            problem = finish_output_file(options.output, interrupted == 0 && !report.is_stopped);
        }
        if (problem.empty()) {
            return interrupted != 0 ? exit_signal + interrupted : report.status;
        }
    }
    write_message(repaired_utf8(options.output) + ": " + problem);
    return exit_failures;
}

} // namespace host
