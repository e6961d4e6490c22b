#include "input_file.h"
#include "memory_input.h"

namespace zat::test {

InputFile input_file(Bytes bytes) {
    const auto size = static_cast<int64_t>(bytes.size());
    return {put_in_memory(bytes, size), size};
}

} // namespace zat::test
