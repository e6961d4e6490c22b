#include "description.h"

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

// Opened here as well, which tells the reason that the library's type code does not.
std::string open_error(const std::string& path, Descriptor* descriptor) {
    descriptor->value = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    return descriptor->value < 0 ? std::strerror(errno) : "";
}

} // namespace

std::string path_for_library(const std::string& path) {
    return path;
}

void describe(const Library& library, Query query, Description* description) {
    struct stat status {};
    if (stat(description->path.c_str(), &status) != 0) {
        description->error = std::strerror(errno);
        return;
    }
    if (!S_ISREG(status.st_mode)) {
        description->error = S_ISDIR(status.st_mode) ? "is a directory" : "is no regular file";
        return;
    }
    InfoRecord* record = &description->record;
    std::string path = description->path;
    Descriptor descriptor;
    if (path.size() >= sizeof record->path) {
        // Too long for the record; the open file has a short name as well.
        description->error = open_error(path, &descriptor);
        if (!description->error.empty()) {
            return;
        }
        path = "/proc/self/fd/" + std::to_string(descriptor.value);
    }
    std::memcpy(record->path, path.c_str(), path.size() + 1);
    ask_library(library, query, description);
    if (record->type_code == FILETYPE_OPENFAILED && descriptor.value < 0) {
        description->error = open_error(path, &descriptor);
    }
    if (record->type_code != FILETYPE_UNKNOWN && record->type_code < FILETYPE_MEDIA &&
        description->error.empty()) {
        description->error = "cannot be read";
    }
}

} // namespace host
