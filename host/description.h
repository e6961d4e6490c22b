// One file as the host shows it.
#pragma once

#include "library.h"

#include <memory>
#include <string>
#include <system_error>

namespace host {

// Words for programs: "not-found", "permission", "not-a-file", "path-too-long", "read-error" of a
// file that could not be examined, "empty", "text", "executable", "archive", "unsupported" of one
// that is of no known type.
namespace reason {
inline constexpr char not_found[] = "not-found";
inline constexpr char not_a_file[] = "not-a-file";
inline constexpr char path_too_long[] = "path-too-long";
inline constexpr char read_error[] = "read-error";
const char* of_error(const std::error_code& error);
} // namespace reason

// What is asked of the library: the more, the more it reads.
enum class Query { type, record, details };

struct Description {
    std::string path;     // as given; bytes on Linux, UTF-8 on Windows
    std::string error;    // why the file could not be examined; empty when it was
    std::string reason;   // the same, and why a file is refused, as one of the fixed words below
    bool unknown = false; // examined, but of no known type
    std::string refusal;  // why a file is of no known type, in the user's language
    InfoRecord record{};
    std::string type_name;               // of the record's type code, such as "MATROSKA"
    std::string format;                  // such as "Matroska"; empty for a file of unknown type
    std::unique_ptr<ZatDetails> details; // null unless they were asked for and the type is known
    std::unique_ptr<ZatDetails> spare;   // room for the next file's
};

// Ready for another file.
void clear(Description* description);

// Asks the library about the file; never waits for a pipe.
void describe(const Library& library, Query query, Description* description);

// The part of it that all platforms share: the record's path is set.
void ask_library(const Library& library, Query query, Description* description);

// Whether the record of a file that could not be read holds the line that says why.
bool is_refused(const Description& description);

// The type's enumerator in zat.h; empty for a code without one.
std::string full_type_name(const Description& description);

// The text of the report, as the library writes it.
std::string report_of(const Library& library, const InfoRecord& record);

// The path as the library takes it: the bytes on Linux; on Windows the name in the system's code
// page, by its short form when it must be. Empty when it has none.
std::string path_for_library(const std::string& path);

} // namespace host
