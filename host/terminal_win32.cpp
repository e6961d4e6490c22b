#include "encoding.h"
#include "files.h"
#include "messages.h"
#include "terminal.h"
#include "text_width.h"

#include <algorithm>
#include <csignal>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <shellapi.h>

namespace host {

namespace {

HANDLE standard(DWORD which) {
    return GetStdHandle(which);
}

bool is_console(DWORD which) {
    DWORD mode = 0;
    return GetConsoleMode(standard(which), &mode) != 0;
}

WriteResult write_bytes(DWORD which, std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD count = 0;
        if (WriteFile(standard(which), bytes.data(), static_cast<DWORD>(bytes.size()), &count,
                nullptr) == 0) {
            const DWORD error = GetLastError();
            const bool is_closed = error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA ||
                                   error == ERROR_PIPE_NOT_CONNECTED;
            return is_closed ? WriteResult::closed : WriteResult::failed;
        }
        bytes.remove_prefix(count);
    }
    return WriteResult::written;
}

// Text of this program ends its lines with "\n" alone.
std::wstring with_windows_line_ends(const std::wstring& text) {
    std::wstring out;
    for (const wchar_t c : text) {
        if (c == L'\n' && !out.ends_with(L'\r')) {
            out += L'\r';
        }
        out += c;
    }
    return out;
}

// A console takes UTF-16 whatever its code page; a file or pipe gets the console's code page.
WriteResult write_text(DWORD which, std::string_view utf8) {
    const std::wstring wide = with_windows_line_ends(wide_of_utf8(utf8));
    if (is_console(which)) {
        for (size_t at = 0; at < wide.size();) {
            DWORD count = 0;
            const auto length =
                static_cast<DWORD>(wide.size() - at < 8192 ? wide.size() - at : 8192);
            if (WriteConsoleW(standard(which), wide.data() + at, length, &count, nullptr) == 0 ||
                count == 0) {
                return WriteResult::failed;
            }
            at += count;
        }
        return WriteResult::written;
    }
    const UINT code_page = GetConsoleOutputCP();
    if (code_page == 0 || code_page == CP_UTF8) {
        return write_bytes(which, utf8_of_wide(wide));
    }
    const int size = static_cast<int>(wide.size());
    const int length =
        WideCharToMultiByte(code_page, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<size_t>(length), '\0');
    WideCharToMultiByte(code_page, 0, wide.data(), size, bytes.data(), length, nullptr, nullptr);
    return write_bytes(which, bytes);
}

// Their values are patterns themselves.
bool takes_pattern(const std::wstring& argument) {
    return argument == L"--only" || argument == L"--exclude";
}

bool has_wildcard(const std::wstring& argument) {
    return argument.find_first_of(L"*?") != std::wstring::npos &&
           argument.rfind(L"\\\\?\\", 0) != 0 && argument.rfind(L"--", 0) != 0;
}

// The names that match, in the directory's order; the argument itself when none does.
void expand(const std::wstring& argument, std::vector<std::string>* out) {
    WIN32_FIND_DATAW found;
    const HANDLE handle = FindFirstFileW(argument.c_str(), &found);
    if (handle == INVALID_HANDLE_VALUE) {
        out->push_back(utf8_of_wide(argument));
        return;
    }
    const std::wstring directory = argument.substr(0, argument.find_last_of(L"\\/:") + 1);
    do {
        const std::wstring name = found.cFileName;
        if (name != L"." && name != L"..") {
            out->push_back(utf8_of_wide(directory + name));
        }
    } while (FindNextFileW(handle, &found) != 0);
    FindClose(handle);
}

std::string last_error_text() {
    return error_text({static_cast<int>(GetLastError()), std::system_category()});
}

std::wstring partial_name(const std::string& path) {
    const std::wstring wide = native_path(path);
    const size_t name = wide.find_last_of(L"\\/:") + 1;
    return wide.substr(0, name) + L"." + wide.substr(name) + L"." +
           std::to_wstring(GetCurrentProcessId());
}

} // namespace

std::vector<std::string> program_arguments(int /*argc*/, char** /*argv*/) {
    int count = 0;
    LPWSTR* arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> out;
    for (int i = 1; i < count; ++i) {
        if (has_wildcard(arguments[i]) && !takes_pattern(arguments[i - 1])) {
            expand(arguments[i], &out);
        } else {
            out.push_back(utf8_of_wide(arguments[i]));
        }
    }
    LocalFree(arguments);
    return out;
}

void prepare_signals(void (*on_interrupt)(int)) {
    std::signal(SIGINT, on_interrupt); // back to its default after the first
}

std::string begin_output_file(const std::string& path) {
    const HANDLE file = CreateFileW(partial_name(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ,
        nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE || SetStdHandle(STD_OUTPUT_HANDLE, file) == 0) {
        return last_error_text();
    }
    return "";
}

std::string finish_output_file(const std::string& path, bool is_complete) {
    const std::wstring partial = partial_name(path);
    CloseHandle(standard(STD_OUTPUT_HANDLE));
    if (is_complete &&
        MoveFileExW(partial.c_str(), native_path(path).c_str(), MOVEFILE_REPLACE_EXISTING) != 0) {
        return "";
    }
    const DWORD error = GetLastError();
    DeleteFileW(partial.c_str());
    return is_complete ? error_text({static_cast<int>(error), std::system_category()}) : "";
}

WriteResult write_output(std::string_view utf8, bool as_text) {
    return as_text ? write_text(STD_OUTPUT_HANDLE, utf8) : write_bytes(STD_OUTPUT_HANDLE, utf8);
}

std::string last_write_error() {
    return last_error_text();
}

void write_line(const std::string& utf8) {
    write_text(STD_ERROR_HANDLE, (error_is_terminal() ? printable(utf8) : utf8) + "\n");
}

void write_message(const std::string& utf8) {
    write_line("zat: " + utf8);
}

bool locale_is_japanese() {
    return PRIMARYLANGID(GetUserDefaultUILanguage()) == LANG_JAPANESE;
}

bool output_is_terminal() {
    return is_console(STD_OUTPUT_HANDLE);
}

size_t output_columns() {
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (GetConsoleScreenBufferInfo(standard(STD_OUTPUT_HANDLE), &info) == 0) {
        return 0;
    }
    // A line that fills the last column would be followed by an empty one.
    return static_cast<size_t>(std::max(info.srWindow.Right - info.srWindow.Left, 1));
}

bool error_is_terminal() {
    return is_console(STD_ERROR_HANDLE);
}

void write_progress(const std::string& text) {
    static size_t shown = 0;
    const std::string blank(shown, ' ');
    write_text(STD_ERROR_HANDLE, "\r" + blank + "\r" + text);
    shown = text.size();
}

} // namespace host
