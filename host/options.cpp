#include "options.h"

#include "encoding.h"
#include "files.h"
#include "messages.h"
#include "terminal.h"
#include "type_filter.h"

#include <CLI/CLI.hpp>
#include <charconv>
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
  zat --format html -o films.html Films/
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

template <class Value>
struct Named {
    std::string_view name;
    Value value;
};

constexpr Named<Format> formats[] = {{"text", Format::text}, {"table", Format::table},
    {"json", Format::json}, {"jsonl", Format::jsonl}, {"csv", Format::csv}, {"html", Format::html}};

constexpr Named<SortKey> sort_keys[] = {{"name", SortKey::name}, {"size", SortKey::size},
    {"time", SortKey::time}, {"duration", SortKey::duration}};

constexpr Named<ListEncoding> list_encodings[] = {{"auto", ListEncoding::automatic},
    {"utf-8", ListEncoding::utf8}, {"console", ListEncoding::console}};

constexpr Named<Language> languages[] = {{"en", Language::english}, {"ja", Language::japanese}};

// What the options say before it is understood; empty for those that are not given.
struct Words {
    std::vector<std::string> paths;
    std::string format;
    std::string sort;
    std::string list_encoding;
    std::string language;
    std::string max_depth;
    std::string jobs;
};

// Adds why the command line is wrong to what was found before; the first is shown.
struct Problems {
    std::string first;
};

void add_problem(Problems* problems, const std::string& text) {
    problems->first = problems->first.empty() ? text : problems->first;
}

template <class Value, size_t Size>
void understand(const char* option, const std::string& word, const Named<Value> (&table)[Size],
    Value* value, Problems* problems) {
    std::string names;
    for (const Named<Value>& row : table) {
        if (row.name == word) {
            *value = row.value;
            return;
        }
        names += (names.empty() ? "" : ", ") + std::string(row.name);
    }
    if (!word.empty()) {
        add_problem(problems, message(Message::is_none_of, option, repaired_utf8(word), names));
    }
}

void understand_number(const char* option, const std::string& word, unsigned limit, unsigned* value,
    Problems* problems) {
    const char* end = word.data() + word.size();
    const std::from_chars_result read = std::from_chars(word.data(), end, *value);
    if (!word.empty() &&
        (read.ec != std::errc() || read.ptr != end || *value < 1 || *value > limit)) {
        add_problem(problems,
            message(Message::is_no_number, option, repaired_utf8(word), std::to_string(limit)));
    }
}

void understand_paths(const std::vector<std::string>& paths, Options* options, Problems* problems) {
    for (const std::string& path : paths) {
        if (path != "-") {
            options->paths.push_back(path);
        } else if (options->files_from.empty()) {
            options->files_from = "-";
        } else {
            add_problem(problems, message(Message::excludes, "-", "--files-from"));
        }
    }
}

void check_types(const Options& options, Problems* problems) {
    for (const std::string& type : options.types) {
        if (!is_type_filter(type)) {
            add_problem(problems,
                message(Message::is_none_of, "--type", repaired_utf8(type), type_filter_names()));
        }
    }
}

// What the options ask for that cannot be, or would do nothing.
void check_together(const Options& options, Problems* problems) {
    const bool is_json = options.format == Format::json || options.format == Format::jsonl;
    const bool is_csv = options.format == Format::csv;
    const bool has_list = !options.files_from.empty();
    const struct {
        const char* option;
        const char* needed;
        bool is_given;
        bool is_there;
    } needs[] = {
        {"--raw", "--format text", options.raw, options.format == Format::text},
        {"--with-report", "--format json|jsonl", options.with_report, is_json},
        {"--per-file", "--format csv", options.per_file, is_csv},
        {"--bom", "--format csv", options.byte_order_mark, is_csv},
        {"--null", "--files-from|-", options.null_separated, has_list},
        {"--list-encoding", "--files-from|-", options.list_encoding != ListEncoding::automatic,
            has_list},
    };
    for (const auto& row : needs) {
        if (row.is_given && !row.is_there) {
            add_problem(problems, message(Message::goes_with_only, row.option, row.needed));
        }
    }
    const struct {
        const char* option;
        const char* other;
        bool is_given;
        bool is_other_given;
    } pairs[] = {
        // Detection looks no name up, reads no duration and leaves no report but the type.
        {"--detect-only", "--catalogue", options.detect_only, !options.catalogue.empty()},
        {"--detect-only", "--sort duration", options.detect_only,
            options.sort == SortKey::duration},
        {"--detect-only", "--with-report", options.detect_only, options.with_report},
        {"--version", "PATH", options.version, !options.paths.empty() || has_list},
    };
    for (const auto& row : pairs) {
        if (row.is_given && row.is_other_given) {
            add_problem(problems, message(Message::excludes, row.option, row.other));
        }
    }
    if (options.paths.empty() && !has_list && !options.version) {
        add_problem(problems, message(Message::no_path));
    }
    if (!options.catalogue.empty() && !names_directory(options.catalogue)) {
        add_problem(problems,
            message(Message::is_no_directory, "--catalogue", repaired_utf8(options.catalogue)));
    }
}

int usage_error(const std::string& text) {
    write_message(text);
    write_line(message(Message::try_help));
    return exit_usage;
}

CLI::Option* add_value(CLI::App* app, const char* names, std::string* value, const char* metavar,
    const char* description) {
    return app->add_option(names, *value, description)->type_name(metavar)->default_str("");
}

void add_values(CLI::App* app, const char* names, std::vector<std::string>* values,
    const char* metavar, const char* description) {
    app->add_option(names, *values, description)
        ->type_name(metavar)
        ->expected(1)
        ->allow_extra_args(false) // what follows is a path
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void add_flag(CLI::App* app, const char* names, bool* flag, const char* description) {
    app->add_flag(names, *flag, description)->disable_flag_override();
}

void declare(CLI::App* app, Options* options, Words* words) {
    app->add_option("PATH", words->paths,
           "Files and directories; - reads a list of paths from standard input")
        ->type_name("");
    add_value(app, "-f,--format", &words->format, "FORMAT",
        "text: the report (default); table: one line a file; json: one array; jsonl: one object a "
        "line; csv: one row a stream; html: a page to look at, sort and filter");
    add_value(app, "-o,--output", &options->output, "FILE",
        "Write to FILE, which gets its name when it is complete");
    add_value(app, "--files-from", &options->files_from, "FILE",
        "Read paths from FILE, one a line; - is standard input");
    add_flag(app, "-0,--null", &options->null_separated, "The list's paths end with a zero byte");
    add_value(app, "--list-encoding", &words->list_encoding, "NAME",
        "Windows: the list is in utf-8, in the console's code page, or auto, which tells them "
        "apart (default)");
    add_flag(app, "--detect-only", &options->detect_only, "Only tell the type of each file");
    add_flag(app, "--with-report", &options->with_report, "JSON: add the text of the report");
    add_flag(app, "--per-file", &options->per_file, "CSV: one row a file");
    add_flag(app, "--bom", &options->byte_order_mark,
        "CSV: begin with a byte order mark, for spreadsheets");
    add_flag(app, "--hidden", &options->hidden, "Hidden files and folders below a directory too");
    add_values(app, "--only", &options->only, "GLOB",
        "Only files below a directory that match, like '*.mkv'");
    add_values(app, "--exclude", &options->exclude, "GLOB",
        "No files and folders below a directory that match; like --only, as often as needed");
    add_value(app, "--max-depth", &words->max_depth, "N",
        "Folders to go down; 1 is only the directory itself");
    add_values(app, "--type", &options->types, "TYPE",
        "Only video, audio, picture, or a format such as Matroska; as often as needed");
    add_value(app, "--sort", &words->sort, "KEY",
        "By name, or by size, time or duration, the largest, newest or longest first: the output "
        "waits until all files are found, their paths are kept in memory, and duration examines "
        "files twice");
    add_flag(app, "--strict", &options->strict,
        "Files of unknown type below a directory are failures, as named ones are");
    add_value(app, "--catalogue", &options->catalogue, "DIR",
        "Directory of zat-codec.ini (default: beside the program, then the installed one)");
    add_value(
        app, "-j,--jobs", &words->jobs, "N", "Files examined at a time (default: the processors)");
    add_flag(
        app, "--raw", &options->raw, "Write the report's bytes as they are, Shift-JIS and CR LF");
    add_value(app, "--lang", &words->language, "LANG",
        "Messages in English (en) or Japanese (ja); default: the locale's");
    add_flag(app, "-q,--quiet", &options->quiet, "No messages and no progress");
    add_flag(app, "--version", &options->version, "Print the version");
}

// The language of what parsing has to say: known before everything else.
Language language_of(const std::vector<std::string>& arguments) {
    Language language = locale_is_japanese() ? Language::japanese : Language::english;
    Problems ignored;
    for (size_t i = 0; i < arguments.size() && arguments[i] != "--"; ++i) {
        if (arguments[i] == "--lang" && i + 1 < arguments.size()) {
            understand("--lang", arguments[i + 1], languages, &language, &ignored);
        } else if (arguments[i].starts_with("--lang=")) {
            understand("--lang", arguments[i].substr(7), languages, &language, &ignored);
        }
    }
    return language;
}

// Why the arguments could not be parsed, in the user's language.
std::string parse_problem(const CLI::App& app, const CLI::ParseError& error) {
    if (!app.remaining().empty()) {
        return message(Message::unknown_option, repaired_utf8(app.remaining().back()));
    }
    const std::string text = error.what();
    std::string name = text.substr(0, text.find_first_of(": "));
    if (!name.starts_with('-')) {
        name = "--" + name; // of a flag with a value
    }
    const CLI::Option* option = app.get_option_no_throw(name);
    if (option == nullptr) {
        return repaired_utf8(text);
    }
    if (option->get_items_expected_max() == 0) {
        return message(Message::takes_no_value, name);
    }
    return message(option->count() > 1 ? Message::given_twice : Message::needs_value, name);
}

} // namespace

int parse_options(const std::vector<std::string>& arguments, Options* options) {
    set_language(language_of(arguments));
    CLI::App app(
        "Tells what media files hold, from their bytes and never from their names.", "zat");
    app.footer(examples);
    app.formatter(std::make_shared<WrappingFormatter>());
    app.allow_windows_style_options(false); // a path may begin with a slash there too
    Words words;
    declare(&app, options, &words);
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::Success& success) {
        app.exit(success);
        return exit_described;
    } catch (const CLI::ParseError& error) {
        return usage_error(parse_problem(app, error));
    }
    Problems problems;
    Language ignored{};
    understand("--lang", words.language, languages, &ignored, &problems);
    understand("--format", words.format, formats, &options->format, &problems);
    understand("--sort", words.sort, sort_keys, &options->sort, &problems);
    understand(
        "--list-encoding", words.list_encoding, list_encodings, &options->list_encoding, &problems);
    understand_number("--max-depth", words.max_depth, 10000, &options->max_depth, &problems);
    understand_number("--jobs", words.jobs, 256, &options->jobs, &problems);
    understand_paths(words.paths, options, &problems);
    check_types(*options, &problems);
    check_together(*options, &problems);
    return problems.first.empty() ? -1 : usage_error(problems.first);
}

} // namespace host
