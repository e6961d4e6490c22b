// Tables: fixed arrays of rows that are looked up by one of their fields.
#pragma once

#include <cstddef>

namespace zat {

// The first row whose field is the wanted value, null if there is none:
// find_row(encodings, &EncodingRow::encoding, encoding).
template <class Row, size_t N, class Field, class Value>
constexpr const Row* find_row(const Row (&rows)[N], Field Row::*field, const Value& wanted) {
    for (const Row& row : rows) {
        if (row.*field == wanted) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace zat
