// Names for what containers give only as a number, a four-character code or a GUID, from the text
// file "zat-codec.ini" in the catalogue directory.
//
// The file holds sections ("[AVI-Audio]"), comments (first character "'") and entries: a key, a
// tab and the name. Every lookup sees the file as it is, so that an edit shows at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace zat {

struct CodecQuery {
    char file_path[512]; // of the catalogue file
    char section[64];    // brackets included
    char key[64];
    char result[256]; // the name that was found; cleared by the caller
};

enum CodecLookupResult : int { codec_found = 0, codec_not_listed = 1, codec_no_catalogue = 2 };

// Looks the key up in the section; returns a CodecLookupResult and leaves `result` as it was unless
// a name was found.
//
// An entry matches every key that begins with the entry's own, and the first match wins. In
// "[MPEG2-TS-PID]" the last one does, and the section must be the file's last: a header behind it
// turns even a match into codec_not_listed.
int CodecLookup(CodecQuery* query);

constexpr size_t codec_name_size = 256; // bytes for any name, terminator included

// The same in the library's own catalogue. Writes the name to `out` or, without one, a remark that
// says why and shows the code as `shown`. Returns the lookup's result.
int codec_name(
    std::string_view section, std::string_view key, std::string_view shown, char* out, size_t size);

// The same by a four-character code, the first character in the top byte.
int fourcc_codec_name(std::string_view section, uint32_t code, char* out, size_t size);

// One of several keys that are looked up at once.
struct CodecKey {
    char key[8];
    bool found;
    char name[64]; // cut to fit
};

// Looks all keys up in a section of the library's own catalogue where the last match wins, in one
// reading of the file.
void codec_names(std::string_view section, std::span<CodecKey> keys);

} // namespace zat
