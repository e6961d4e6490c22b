// The record's extra-info text: the title, then the program that wrote the file.
#pragma once

#include "common/record/output.h"

#include <string_view>

namespace zat {

// Appends the writer, UTF-8, behind " / " to the text that stands there, or alone; cut at 120
// bytes. The details get it too. Nothing for an empty one.
void append_writer(const Output& out, std::string_view writer);

} // namespace zat
