// Tables: fixed arrays of rows that are looked up by one of their fields.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace zat {

// The first row whose field is the wanted value, null if there is none:
// find_row(encodings, &EncodingRow::encoding, encoding).
template <class Row, size_t N, class Field, class Value>
constexpr const Row* find_row(const Row (&rows)[N], Field Row::*field, const Value& wanted) {
    const Row* row = std::find_if(
        std::begin(rows), std::end(rows), [&](const Row& each) { return each.*field == wanted; });
    return row != std::end(rows) ? row : nullptr;
}

} // namespace zat
