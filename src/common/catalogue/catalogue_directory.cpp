#include "common/catalogue/catalogue_directory.h"

#include "common/text/text.h"

#include <cstring>

namespace zat {

namespace {

char directory_text[line_size];

} // namespace

void set_catalogue_directory(const char* directory) {
    std::memset(directory_text, 0, sizeof directory_text);
    copy_text(directory_text, directory);
}

const char* catalogue_directory() {
    return directory_text;
}

} // namespace zat
