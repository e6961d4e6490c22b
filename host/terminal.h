// The program's standard streams.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// The arguments without the program's name; on Windows as UTF-8, with wildcards expanded.
std::vector<std::string> program_arguments(int argc, char** argv);

// Makes a closed pipe an error of the write rather than a signal, and has an interrupt (Ctrl-C)
// call the handler once; a second one ends the program.
void prepare_signals(void (*on_interrupt)(int));

enum class WriteResult { written, closed, failed };

// Writes to standard output. With `as_text` the UTF-8 is shown as the terminal or locale wants it;
// else it goes out as it is.
WriteResult write_output(std::string_view utf8, bool as_text);

// Why the last write of this thread failed.
std::string last_write_error();

// Sends standard output to a new file beside `path`, hidden until finish_output_file gives it that
// name, or removes it when it is not complete. Both return an empty text, or why they failed.
std::string begin_output_file(const std::string& path);
std::string finish_output_file(const std::string& path, bool is_complete);

// Whether the user's language is Japanese.
bool locale_is_japanese();

// One line to standard error.
void write_line(const std::string& utf8);

// The same, "zat: " before it.
void write_message(const std::string& utf8);

bool output_is_terminal();

// Characters in a line of the terminal; 0 when standard output is none.
size_t output_columns();

bool error_is_terminal();

// Overwrites the progress line; an empty text removes it.
void write_progress(const std::string& text);

} // namespace host
