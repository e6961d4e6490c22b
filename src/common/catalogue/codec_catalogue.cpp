#include "common/catalogue/codec_catalogue.h"

#include "common/catalogue/catalogue_directory.h"
#include "common/catalogue/kept_text.h"
#include "common/file/file_access.h"
#include "common/text/fourcc.h"
#include "common/text/messages.h"
#include "common/text/text.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace zat {

namespace {

constexpr std::string_view file_name = "zat-codec.ini";

// The one section where a later match replaces an earlier one: its range keys stand first.
constexpr std::string_view last_match_section = "[MPEG2-TS-PID]";

// Characters of a line, its newline included; what is longer continues as a line of its own.
constexpr size_t line_limit = 255;

// Reads a text file line by line through one block, however large the file and its lines are, or a
// text that is at hand.
struct LineReader {
    FileRecord file;
    const char* block = buffer;
    size_t at = 0;
    size_t end = 0;
    bool at_end_of_file = false;
    char buffer[16384];
};

bool open_lines(LineReader* reader, const char* path) {
    const std::string_view kept = kept_text(path);
    if (kept.empty()) {
        return FileOpen(&reader->file, path) == 0;
    }
    reader->block = kept.data();
    reader->end = kept.size();
    reader->at_end_of_file = true;
    return true;
}

// Makes the longest possible line visible at once: "\r\n" counts as one character.
void fill_block(LineReader* reader) {
    const size_t rest = reader->end - reader->at;
    std::memmove(reader->buffer, reader->buffer + reader->at, rest);
    const uint32_t got = FileRead(
        &reader->file, reader->buffer + rest, static_cast<uint32_t>(sizeof reader->buffer - rest));
    reader->at = 0;
    reader->end = rest + got;
    reader->at_end_of_file = got == 0 || reader->file.position >= reader->file.size;
}

// Moves to the next line that may begin with '[', by a search for the bracket: outside the wanted
// section no other line counts. Stops before the last line of the block, which may go on behind it,
// and at a line so long that its rest counts as a line of its own.
void skip_to_bracket(LineReader* reader) {
    const char* const block = reader->block;
    size_t from = reader->at;
    while (from < reader->end) {
        const void* found = std::memchr(block + from, '[', reader->end - from);
        const size_t at = found != nullptr
                              ? static_cast<size_t>(static_cast<const char*>(found) - block)
                              : reader->end;
        size_t start = at; // of the line: behind a newline
        while (start > reader->at && block[start - 1] != '\n') {
            --start;
        }
        reader->at = start;
        if (start == at || at - start >= line_limit) {
            return;
        }
        from = at + 1;
    }
}

// Whether the line at the front may be an entry for the key, by its text in front of the first tab.
bool may_match(std::string_view lines, std::string_view key) {
    for (size_t i = 0; i < lines.size() && lines[i] != '\t'; ++i) {
        if (i == key.size() || lines[i] != key[i]) {
            return false;
        }
    }
    return true;
}

// Passes over lines of a section that are neither a header nor an entry that matters, which most
// are, as far as the block shows the whole of them.
template <typename Matters>
void skip_entries(LineReader* reader, Matters matters) {
    std::string_view lines(reader->block + reader->at, reader->end - reader->at);
    while (!lines.empty() && lines.front() != '[' && !matters(lines)) {
        const size_t newline = lines.find('\n');
        if (newline >= line_limit) {
            break; // what is that long goes on as a line of its own
        }
        lines.remove_prefix(newline + 1);
    }
    reader->at = reader->end - lines.size();
}

// The next line without its newline, up to its first zero byte; valid until the next call. False
// at the end of the file.
bool read_line(LineReader* reader, std::string_view* line) {
    constexpr size_t window = line_limit + 1;
    while (reader->end - reader->at < window && !reader->at_end_of_file) {
        fill_block(reader);
    }
    const char* text = reader->block + reader->at;
    const size_t available = std::min(reader->end - reader->at, window);
    if (available == 0) {
        return false;
    }
    size_t length = std::min(available, line_limit);
    size_t used = length;
    const void* newline = std::memchr(text, '\n', available);
    if (newline != nullptr) {
        const auto raw = static_cast<size_t>(static_cast<const char*>(newline) - text);
        const size_t shown = raw != 0 && text[raw - 1] == '\r' ? raw - 1 : raw;
        if (shown < line_limit) {
            length = shown;
            used = raw + 1;
        }
    }
    reader->at += used;
    *line = bounded_text(text, length);
    return true;
}

// The next line of a section that matters, or the next one that may be the header of one.
template <typename Matters>
bool next_line(LineReader* reader, bool in_section, Matters matters, std::string_view* line) {
    if (in_section) {
        skip_entries(reader, matters);
    } else {
        skip_to_bracket(reader);
    }
    return read_line(reader, line);
}

// True for an entry that matches the key.
bool entry_matches(std::string_view line, std::string_view key, std::string_view* name) {
    const size_t tab = line.rfind('\t');
    if (tab == std::string_view::npos || tab == 0 || !key.starts_with(line.substr(0, tab))) {
        return false;
    }
    *name = text_from(line, tab + 1);
    return true;
}

int search(LineReader* reader, CodecQuery* query) {
    const std::string_view section = bounded_text(query->section);
    const std::string_view key = bounded_text(query->key);
    const bool last_wins = section == last_match_section;
    const auto matters = [key](std::string_view lines) { return may_match(lines, key); };
    bool in_section = false;
    int result = codec_not_listed;
    std::string_view line;
    while (next_line(reader, in_section, matters, &line)) {
        if (line.starts_with('[')) {
            if (in_section) {
                return codec_not_listed;
            }
            // A header that is only the beginning of the wanted one opens the section as well.
            in_section = section.starts_with(line);
            continue;
        }
        std::string_view name;
        if (!in_section || line.starts_with('\'') || !entry_matches(line, key, &name)) {
            continue;
        }
        copy_text(query->result, name);
        result = codec_found;
        if (!last_wins) {
            break;
        }
    }
    return result;
}

// Takes an entry for every key that it matches.
void match_keys(std::string_view line, std::span<CodecKey> keys) {
    for (CodecKey& key : keys) {
        std::string_view name;
        if (entry_matches(line, bounded_text(key.key), &name)) {
            copy_text(key.name, name);
            key.found = true;
        }
    }
}

void search_all(LineReader* reader, std::string_view section, std::span<CodecKey> keys) {
    const auto matters = [keys](std::string_view lines) {
        return std::any_of(keys.begin(), keys.end(),
            [lines](const CodecKey& key) { return may_match(lines, bounded_text(key.key)); });
    };
    bool in_section = false;
    std::string_view line;
    while (next_line(reader, in_section, matters, &line)) {
        if (line.starts_with('[')) {
            if (in_section) { // as for a single key: what was found counts for nothing then
                for (CodecKey& key : keys) {
                    key.found = false;
                }
                return;
            }
            in_section = section.starts_with(line);
        } else if (in_section && !line.starts_with('\'')) {
            match_keys(line, keys);
        }
    }
}

// Writes the path of the library's own catalogue. False when it would not fit: cut, it might be
// another file's.
bool catalogue_path(char (&path)[512]) {
    const std::string_view directory = catalogue_directory();
    if (directory.size() + file_name.size() >= sizeof path) {
        return false;
    }
    copy_text(path, directory);
    append_text(path, file_name);
    return true;
}

} // namespace

void codec_names(std::string_view section, std::span<CodecKey> keys) {
    char path[512];
    LineReader reader;
    if (!keys.empty() && catalogue_path(path) && open_lines(&reader, path)) {
        search_all(&reader, section, keys);
    }
}

int CodecLookup(CodecQuery* query) {
    LineReader reader;
    return open_lines(&reader, query->file_path) ? search(&reader, query) : codec_no_catalogue;
}

int codec_name(std::string_view section, std::string_view key, std::string_view shown, char* out,
    size_t size) {
    CodecQuery query{};
    int result = codec_no_catalogue;
    if (catalogue_path(query.file_path)) {
        copy_text(query.section, section);
        copy_text(query.key, key);
        result = CodecLookup(&query);
    }
    if (result == codec_found) {
        copy_text(out, size, bounded_text(query.result));
        return result;
    }
    char code[line_size];
    copy_text(code, shown);
    format_text(
        out, size, result == codec_not_listed ? message::not_listed : message::no_catalogue, code);
    return result;
}

int fourcc_codec_name(std::string_view section, uint32_t code, char* out, size_t size) {
    char key[fourcc_text_size];
    printable_fourcc_text(code, key);
    return codec_name(section, key, key, out, size);
}

} // namespace zat
