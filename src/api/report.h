// The record rendered as the report that a host shows.
#pragma once

#include "zat/zat.h"

#include <cstddef>

namespace zat {

// A report's body of at most 1,023 bytes, cut at whole lines, then the summary and the marker.
constexpr size_t report_body_size = 1024;

// Writes the report into `out`, cut to `size` bytes, terminator included; nothing when `size` is 0.
// The body ends at the first line that would make it `body_size` bytes or more (its terminator
// included). Returns the length of the whole report with such a body.
size_t write_report(const InfoRecord* record, char* out, size_t size, size_t body_size);

} // namespace zat
