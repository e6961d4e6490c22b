#include "encoding.h"

#include "common/text/text_codes.h"
#include "common/text/utf8.h"

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#endif

namespace host {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

} // namespace

std::string utf8_of_shift_jis(std::string_view text) {
    constexpr size_t widest = 3; // bytes of a character that code page 932 knows
    std::string out(widest * text.size() + 1, '\0');
    out.resize(zat::cp932_to_utf8(text, out.data(), out.size()));
    return out;
}

bool is_utf8(std::string_view text) {
    return zat::is_utf8(text);
}

std::string repaired_utf8(std::string_view text) {
    if (is_utf8(text)) {
        return std::string(text);
    }
    std::string out;
    while (!text.empty()) {
        const std::string_view rest = text;
        const bool is_character = zat::take_utf8(&text) != zat::no_character;
        out += is_character ? rest.substr(0, rest.size() - text.size()) : replacement;
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
