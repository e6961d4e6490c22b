#include "options.h"

#include "encoding.h"
#include "files.h"
#include "terminal.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string_view>

namespace host {

namespace {

constexpr char examples[] = R"(Examples:
  zat song.mp3                          the report of one file
  zat Music/                            of every file below a directory
  zat --format table Films/             one line a file
  zat --format jsonl Music/ | jq .play_time
  zat --format csv *.mp4 > movies.csv   one row a stream
  find . -size +1G -print0 | zat -0 --files-from -

Exit status: 0 when every file was described, 1 when one could not be read, or
was named and is of unknown type, 2 for a wrong command line.)";

constexpr size_t help_width = 80;
constexpr size_t names_width = 30; // of the column that names the options

// Descriptions in as many lines as it takes.
class WrappingFormatter : public CLI::Formatter {
public:
    WrappingFormatter() { column_width(names_width); }

    std::string make_option_desc(const CLI::Option* option) const override {
        std::istringstream words(option->get_description());
        std::string out;
        size_t used = 0;
        for (std::string word; words >> word; used += word.size() + 1) {
            if (used != 0) {
                const bool fits = used + word.size() < help_width - names_width;
                out += fits ? ' ' : '\n';
                used = fits ? used : 0;
            }
            out += word;
        }
        return out;
    }
};

struct NamedFormat {
    std::string_view name;
    Format format;
};

constexpr NamedFormat formats[] = {{"text", Format::text}, {"table", Format::table},
    {"json", Format::json}, {"jsonl", Format::jsonl}, {"csv", Format::csv}};

std::string format_names() {
    std::string out;
    for (const NamedFormat& row : formats) {
        out += (out.empty() ? "" : ", ") + std::string(row.name);
    }
    return out;
}

int usage_error(const std::string& text) {
    write_message(text);
    std::cerr << "Try 'zat --help'.\n";
    return exit_usage;
}

// What the options ask for that cannot be; empty when all is well.
std::string contradiction_in(const Options& options) {
    const bool is_json = options.format == Format::json || options.format == Format::jsonl;
    if (options.paths.empty() && options.files_from.empty() && !options.version) {
        return "no file named";
    }
    if (options.raw && options.format != Format::text) {
        return "--raw goes with --format text only";
    }
    if (options.with_report && !is_json) {
        return "--with-report goes with --format json and jsonl only";
    }
    if (options.null_separated && options.files_from.empty()) {
        return "--null goes with a list of paths only";
    }
    if (!options.catalogue.empty() && !names_directory(options.catalogue)) {
        return "--catalogue: " + repaired_utf8(options.catalogue) + " is no directory";
    }
    return "";
}

} // namespace

int parse_options(const std::vector<std::string>& arguments, Options* options) {
    CLI::App app(
        "Tells what media files hold, from their bytes and never from their names.", "zat");
    app.footer(examples);
    app.formatter(std::make_shared<WrappingFormatter>());
    app.allow_windows_style_options(false); // a path may begin with a slash there too
    std::vector<std::string> paths;
    std::string format = "text";
    app.add_option(
           "PATH", paths, "Files and directories; - reads a list of paths from standard input")
        ->type_name("");
    app.add_option("-f,--format", format,
           "text: the report (default); table: one line a file; json: one array; jsonl: one object "
           "a line; csv: one row a "
           "stream")
        ->type_name("FORMAT")
        ->default_str("");
    app.add_option(
           "-o,--output", options->output, "Write to FILE, which gets its name when it is complete")
        ->type_name("FILE");
    app.add_option("--files-from", options->files_from,
           "Read paths from FILE, one a line; - is standard input")
        ->type_name("FILE");
    app.add_flag("-0,--null", options->null_separated, "The list's paths end with a zero byte");
    app.add_flag("--detect-only", options->detect_only, "Only tell the type of each file");
    app.add_flag("--with-report", options->with_report, "JSON: add the text of the report");
    app.add_flag("--hidden", options->hidden, "Hidden files and folders below a directory too");
    app.add_option("--only", options->only, "Only files below a directory that match, like '*.mkv'")
        ->type_name("GLOB")
        ->expected(1)
        ->allow_extra_args(false) // what follows is a path
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("--exclude", options->exclude,
           "No files and folders below a directory that match; like --only, as often as needed")
        ->type_name("GLOB")
        ->expected(1)
        ->allow_extra_args(false) // what follows is a path
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option(
           "--max-depth", options->max_depth, "Folders to go down; 1 is only the directory itself")
        ->type_name("N")
        ->check(CLI::Range(1U, 10000U).description(""));
    app.add_flag("--strict", options->strict,
        "Files of unknown type below a directory are failures, as named ones are");
    app.add_option("--catalogue", options->catalogue,
           "Directory of zat-codec.ini (default: beside the program, then the installed one)")
        ->type_name("DIR");
    app.add_option("-j,--jobs", options->jobs, "Files examined at a time (default: the processors)")
        ->type_name("N")
        ->check(CLI::Range(1U, 256U).description(""));
    app.add_flag(
        "--raw", options->raw, "Write the report's bytes as they are, Shift-JIS and CR LF");
    app.add_flag("-q,--quiet", options->quiet, "No messages and no progress");
    app.add_flag("--version", options->version, "Print the version");

    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    try {
        app.parse(reversed);
    } catch (const CLI::Success& success) {
        app.exit(success);
        return exit_described;
    } catch (const CLI::ParseError& error) {
        return usage_error(error.what());
    }
    const NamedFormat* found = std::find_if(std::begin(formats), std::end(formats),
        [&](const NamedFormat& row) { return row.name == format; });
    if (found == std::end(formats)) {
        return usage_error("--format: " + format + " is none of " + format_names());
    }
    options->format = found->format;
    for (const std::string& path : paths) {
        if (path != "-") {
            options->paths.push_back(path);
        } else if (options->files_from.empty()) {
            options->files_from = "-";
        }
    }
    const std::string contradiction = contradiction_in(*options);
    return contradiction.empty() ? -1 : usage_error(contradiction);
}

} // namespace host
