// Refusal of plain text files.
#pragma once

#include "common/file/file_window.h"

#include <cstdint>

namespace zat {

// 0 for a text file, -1 for a binary one: that has a zero byte among its first mebibyte. `window`
// stands at the file's start and `size` is the file's size; bytes that the size promises and the
// file does not yield count as zeros. Reads on until the first zero byte only.
int TextFileCheck(FileWindow* window, int64_t size);

} // namespace zat
