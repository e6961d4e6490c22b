#include "encoding.h"

#include <cstdint>

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <iconv.h>
#endif

namespace host {

namespace {

constexpr char replacement[] = "\xEF\xBF\xBD";

bool is_lead_byte(char c) {
    const auto code = static_cast<unsigned char>(c);
    return (code >= 0x81 && code <= 0x9F) || (code >= 0xE0 && code <= 0xFC);
}

// Length of the UTF-8 character at the front, 0 when there is none (RFC 3629, section 4).
size_t utf8_length(std::string_view text) {
    const auto byte = [&](size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const auto follows = [&](size_t i) { return (byte(i) & 0xC0U) == 0x80; };
    const unsigned lead = byte(0);
    if (lead < 0x80) {
        return 1;
    }
    if (lead >= 0xC2 && lead <= 0xDF) {
        return follows(1) ? 2 : 0;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        const bool in_range =
            !(lead == 0xE0 && byte(1) < 0xA0) && !(lead == 0xED && byte(1) > 0x9F);
        return in_range && follows(1) && follows(2) ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const bool in_range =
            !(lead == 0xF0 && byte(1) < 0x90) && !(lead == 0xF4 && byte(1) > 0x8F);
        return in_range && follows(1) && follows(2) && follows(3) ? 4 : 0;
    }
    return 0;
}

// One character of two bytes or a single one from 0x80 on; empty when it is none.
std::string utf8_of_character(std::string_view character) {
#ifdef _WIN32
    wchar_t wide[4];
    const int length = MultiByteToWideChar(
        932, MB_ERR_INVALID_CHARS, character.data(), static_cast<int>(character.size()), wide, 4);
    return length > 0 ? utf8_of_wide(std::wstring(wide, static_cast<size_t>(length))) : "";
#else
    static thread_local iconv_t converter = iconv_open("UTF-8", "CP932");
    if (reinterpret_cast<intptr_t>(converter) == -1) {
        return "";
    }
    char in[2] = {character[0], character.size() > 1 ? character[1] : '\0'};
    char out[8];
    char* from = in;
    char* to = out;
    size_t from_left = character.size();
    size_t to_left = sizeof out;
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    if (iconv(converter, &from, &from_left, &to, &to_left) == static_cast<size_t>(-1)) {
        return "";
    }
    return {out, sizeof out - to_left};
#endif
}

// Bytes that the two platforms' tables treat differently and that stand for no character.
bool is_unassigned(char c) {
    const auto code = static_cast<unsigned char>(c);
    return code == 0x80 || code == 0xA0 || code >= 0xFD;
}

} // namespace

std::string utf8_of_shift_jis(std::string_view text) {
    std::string out;
    out.reserve(text.size() + text.size() / 2);
    for (size_t at = 0; at < text.size();) {
        const char c = text[at];
        if (static_cast<unsigned char>(c) < 0x80) {
            out += c;
            ++at;
            continue;
        }
        const size_t width = is_lead_byte(c) ? 2 : 1;
        std::string character;
        if (width <= text.size() - at && !is_unassigned(c)) {
            character = utf8_of_character(text.substr(at, width));
        }
        // What follows a stray byte may well be a character of its own.
        at += character.empty() ? 1 : width;
        out += character.empty() ? replacement : character;
    }
    return out;
}

bool is_utf8(std::string_view text) {
    while (!text.empty()) {
        const size_t length = utf8_length(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

std::string repaired_utf8(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        const size_t length = utf8_length(text);
        out += length == 0 ? std::string_view(replacement) : text.substr(0, length);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return out;
}

#ifdef _WIN32
std::string utf8_of_wide(const std::wstring& text) {
    const int size = static_cast<int>(text.size());
    const int length =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, out.data(), length, nullptr, nullptr);
    return out;
}

std::wstring wide_of_utf8(std::string_view text) {
    const int size = static_cast<int>(text.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0);
    std::wstring out(static_cast<size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), size, out.data(), length);
    return out;
}
#endif

} // namespace host
