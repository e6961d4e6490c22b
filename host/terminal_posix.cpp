#include "messages.h"
#include "terminal.h"
#include "text_width.h"

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <iconv.h>
#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace host {

namespace {

// UTF-8 to a Shift-JIS locale; other locales get UTF-8.
bool locale_is_shift_jis() {
    static const bool result = [] {
        std::setlocale(LC_CTYPE, "");
        const std::string charset = nl_langinfo(CODESET);
        std::setlocale(LC_CTYPE, "C");
        return charset == "SHIFT_JIS" || charset == "SJIS" || charset == "CP932" ||
               charset == "WINDOWS-31J";
    }();
    return result;
}

std::string shift_jis_of_utf8(std::string_view text) {
    iconv_t converter = iconv_open("CP932//TRANSLIT", "UTF-8");
    if (reinterpret_cast<intptr_t>(converter) == -1) {
        return std::string(text);
    }
    std::string in(text);
    std::string out(in.size() * 2 + 16, '\0');
    char* from = in.data();
    char* to = out.data();
    size_t from_left = in.size();
    size_t to_left = out.size();
    while (iconv(converter, &from, &from_left, &to, &to_left) == static_cast<size_t>(-1) &&
           from_left > 0 && to_left > 0) {
        *to++ = '?';
        --to_left;
        ++from;
        --from_left;
    }
    iconv_close(converter);
    out.resize(out.size() - to_left);
    return out;
}

std::string last_error_text() {
    return error_text({errno, std::generic_category()});
}

std::string partial_name(const std::string& path) {
    const size_t name = path.rfind('/') + 1;
    return path.substr(0, name) + "." + path.substr(name) + "." + std::to_string(getpid());
}

} // namespace

std::vector<std::string> program_arguments(int argc, char** argv) {
    return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

void prepare_signals(void (*on_interrupt)(int)) {
    std::signal(SIGPIPE, SIG_IGN);
    struct sigaction action {};
    action.sa_handler = on_interrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND); // and no restart: a waiting read is to end
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

std::string begin_output_file(const std::string& path) {
    const std::string partial = partial_name(path);
    const int file = open(partial.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0 || dup2(file, STDOUT_FILENO) < 0) {
        return last_error_text();
    }
    close(file);
    return "";
}

std::string finish_output_file(const std::string& path, bool is_complete) {
    const std::string partial = partial_name(path);
    if (is_complete && close(STDOUT_FILENO) == 0 && rename(partial.c_str(), path.c_str()) == 0) {
        return "";
    }
    const int error = errno;
    unlink(partial.c_str());
    return is_complete ? error_text({error, std::generic_category()}) : "";
}

WriteResult write_output(std::string_view utf8, bool as_text) {
    const bool is_converted = as_text && locale_is_shift_jis();
    const std::string converted = is_converted ? shift_jis_of_utf8(utf8) : std::string();
    std::string_view left = is_converted ? converted : utf8;
    while (!left.empty()) {
        const ssize_t count = write(STDOUT_FILENO, left.data(), left.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return errno == EPIPE ? WriteResult::closed : WriteResult::failed;
        }
        left.remove_prefix(static_cast<size_t>(count));
    }
    return WriteResult::written;
}

std::string last_write_error() {
    return last_error_text();
}

// The first of these that is set decides (POSIX.1, 8.2).
bool locale_is_japanese() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            return std::string_view(value).starts_with("ja");
        }
    }
    return false;
}

void write_line(const std::string& utf8) {
    const std::string text = error_is_terminal() ? printable(utf8) : utf8;
    const std::string shown = locale_is_shift_jis() ? shift_jis_of_utf8(text) : text;
    std::fprintf(stderr, "%s\n", shown.c_str());
}

void write_message(const std::string& utf8) {
    write_line("zat: " + utf8);
}

bool output_is_terminal() {
    return isatty(STDOUT_FILENO) != 0;
}

size_t output_columns() {
    static const bool is_terminal = output_is_terminal();
    winsize size{};
    return is_terminal && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool error_is_terminal() {
    return isatty(STDERR_FILENO) != 0;
}

void write_progress(const std::string& text) {
    std::fprintf(stderr, "\r\033[K%s", text.c_str());
    std::fflush(stderr);
}

} // namespace host
