#include "description.h"
#include "messages.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace host {

namespace {

struct Descriptor {
    int value = -1;
    ~Descriptor() {
        if (value >= 0) {
            close(value);
        }
    }
};

void set_error(Description* description) {
    const std::error_code error(errno, std::generic_category());
    description->error = error_text(error);
    description->reason = reason::of_error(error);
}

void try_open(const std::string& path, Descriptor* descriptor, Description* description) {
    descriptor->value = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor->value < 0) {
        set_error(description);
    }
}

// What the library's type code does not tell: why it could not open the file.
void find_reason(Description* description) {
    struct stat status {};
    if (stat(description->path.c_str(), &status) != 0) {
        set_error(description);
    } else if (!S_ISREG(status.st_mode)) {
        description->error =
            message(S_ISDIR(status.st_mode) ? Message::is_directory : Message::is_no_regular_file);
        description->reason = reason::not_a_file;
    } else {
        Descriptor descriptor;
        try_open(description->path, &descriptor, description);
    }
}

} // namespace

std::string path_for_library(const std::string& path) {
    return path;
}

void describe(const Library& library, Query query, Description* description) {
    InfoRecord* record = &description->record;
    std::string path = description->path;
    Descriptor descriptor;
    if (path.size() >= sizeof record->path) {
        // Too long for the record; the open file has a short name as well.
        try_open(path, &descriptor, description);
        if (!description->error.empty()) {
            return;
        }
        path = "/proc/self/fd/" + std::to_string(descriptor.value);
    }
    std::memcpy(record->path, path.c_str(), path.size() + 1);
    ask_library(library, query, description);
    if (record->type_code == FILETYPE_OPENFAILED) {
        find_reason(description);
    }
}

} // namespace host
