#include "encoding.h"
#include "terminal.h"
#include "text_width.h"

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
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
        return std::strerror(errno);
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
    return is_complete ? std::strerror(error) : "";
}

WriteResult write_output(std::string_view utf8, bool as_text) {
    const std::string text =
        as_text && locale_is_shift_jis() ? shift_jis_of_utf8(utf8) : std::string(utf8);
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t count = write(STDOUT_FILENO, text.data() + done, text.size() - done);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return errno == EPIPE ? WriteResult::closed : WriteResult::failed;
        }
        done += static_cast<size_t>(count);
    }
    return WriteResult::written;
}

std::string last_write_error() {
    return std::strerror(errno);
}

void write_message(const std::string& utf8) {
    const std::string text = error_is_terminal() ? printable(utf8) : utf8;
    std::fprintf(stderr, "zat: %s\n", text.c_str());
}

bool output_is_terminal() {
    return isatty(STDOUT_FILENO) != 0;
}

size_t output_columns() {
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool error_is_terminal() {
    return isatty(STDERR_FILENO) != 0;
}

void write_progress(const std::string& text) {
    std::fprintf(stderr, "\r\033[K%s", text.c_str());
    std::fflush(stderr);
}

} // namespace host
