// The command line.
#pragma once

#include <string>
#include <vector>

namespace host {

enum class Format { text, table, json, jsonl, csv, html };

enum class SortKey { none, name, size, time, duration };
enum class ListEncoding { automatic, utf8, console };

struct Options {
    Format format = Format::text;
    std::vector<std::string> paths;
    std::string files_from;      // a file with a path a line, "-" for standard input
    bool null_separated = false; // the list's paths end with a zero byte
    ListEncoding list_encoding = ListEncoding::automatic; // Windows only: names are bytes elsewhere
    bool detect_only = false;
    bool raw = false;
    bool quiet = false;
    bool version = false;          // only tell the version
    bool hidden = false;           // walks pass over no hidden files
    unsigned max_depth = 0;        // folders that a walk goes down, the named one included; 0: all
    std::vector<std::string> only; // name patterns of the files that a walk finds
    std::vector<std::string> exclude; // and of files and folders that it passes over
    std::vector<std::string> types;   // kinds of files and formats that are shown; none: all
    SortKey sort = SortKey::none;
    bool strict = false;          // a file of unknown type is a failure even when nobody named it
    bool with_report = false;     // JSON: the report's text too
    bool per_file = false;        // CSV: a row a file
    bool byte_order_mark = false; // CSV: at the start, for spreadsheets
    std::string output;           // a file in place of standard output; empty for none
    std::string catalogue;        // directory; empty for the default
    unsigned jobs = 0;            // 0: as many as processors
};

constexpr int exit_described = 0;
constexpr int exit_failures = 1;
constexpr int exit_usage = 2;
constexpr int exit_signal = 128; // and the number of the signal that ended the program

// Reads the arguments, the program's name left out. Returns -1 when the program is to go on, else
// the exit status; help and usage errors have then been printed.
int parse_options(const std::vector<std::string>& arguments, Options* options);

} // namespace host
