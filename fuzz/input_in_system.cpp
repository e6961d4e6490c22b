#include "input_file.h"
#include "zat/zat.h"

#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

namespace zat::test {

InputFile input_file(Bytes bytes) {
    static char path[64];
    static const int file = [] {
        SetPath(ZAT_CATALOGUE);
        const int created = memfd_create("zat-fuzz", MFD_CLOEXEC);
        std::snprintf(path, sizeof path, "/proc/self/fd/%d", created);
        return created;
    }();
    if (ftruncate(file, 0) != 0 ||
        pwrite(file, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        std::abort();
    }
    return {path, static_cast<int64_t>(bytes.size())};
}

InputCost input_cost() {
    return {};
}

int64_t left_behind() {
    return 0;
}

} // namespace zat::test
