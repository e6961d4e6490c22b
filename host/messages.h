// What the program tells its user, in the user's language.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>

namespace host {

enum class Language : uint8_t { english, japanese };

// English until another one is set.
void set_language(Language language);

enum class Message : uint8_t {
    // Wrong command lines.
    try_help,
    no_path,
    unknown_option,
    needs_value,
    takes_no_value,
    given_twice,
    is_none_of,
    is_no_number,
    goes_with_only,
    excludes,
    is_no_directory,
    // The library.
    library_missing,
    library_lacks_export,
    // Files.
    unknown_type,
    empty_name,
    is_directory,
    is_no_regular_file,
    cannot_be_read,
    name_out_of_reach,
    standard_input,
    // The library's refusals.
    empty_file,
    text_file,
    executable,
    archive,
    nothing_behind_tag,
    unsupported,
    nothing_read,
    no_memory,
    // The system's errors.
    not_found,
    permission_denied,
    path_too_long,
    is_in_use,
    too_many_links,
    too_many_open_files,
    no_space,
    read_only,
    input_output,
    system_error,
    // Counts.
    output_failed,
    one_file,
    files,
    described,
    other_types,
    not_media,
    unreadable,
    count // no message
};

// The message with `first`, `second` and `third` in its places.
std::string message(Message id, std::string_view first = {}, std::string_view second = {},
    std::string_view third = {});

// In the user's language, that of an English one by the system where it has more to tell.
std::string error_text(const std::error_code& error);

} // namespace host
