// The elements of EBML documents (RFC 8794): an identifier, a size and data.
#pragma once

#include "common/file/reader.h"

#include <cstddef>
#include <cstdint>

namespace zat {

struct Element {
    uint32_t id = 0;           // with its length marker, as documents write it: 0x1A45DFA3
    int64_t start = 0;         // file position of the identifier
    Span data;                 // as much of it as lies in the parent
    int64_t said_end = 0;      // where the size says that it ends, which may be outside the parent
    bool unknown_size = false; // ends where the next element of its level begins
};

// The head of an element alone.
struct ElementHead {
    uint32_t id = 0;
    int64_t size = 0; // of the data; 0 when unknown
    bool unknown_size = false;
    uint32_t length = 0; // bytes of the head; 0: no element starts here
};

// Bytes that hold every head.
constexpr uint32_t longest_element_head = 12;

ElementHead parse_element_head(Bytes bytes);

// Variable-length integers of other places, such as laces: the value without its marker, and how
// many bytes it has; 0 when it is cut or longer than eight bytes.
struct Vint {
    uint64_t value = 0;
    uint32_t length = 0;
};
Vint parse_vint(Bytes bytes);

// Steps through the children of a span.
struct ElementCursor {
    Span parent;
    int64_t position = 0; // in the file
    bool damaged = false; // what is no element was passed over
};

constexpr ElementCursor children_of(Span data) {
    return {data, data.start};
}

// The next child; the cursor moves behind it. Void and CRC-32 elements are passed over. False at
// the end of the parent, and at what is no element: the cursor then stands there.
bool next_element(Reader* reader, ElementCursor* cursor, Element* element);

// Values of an element's data. An integer has up to eight bytes and a float 0, 4 or 8; others give
// `missing`, and so does an empty one.
uint64_t read_uint(Reader* reader, const Element& element, uint64_t missing);
double read_float(Reader* reader, const Element& element, double missing);

// A text, UTF-8 as the format has it, up to its first zero byte.
void read_text(Reader* reader, const Element& element, char* out, size_t size);
template <size_t N>
void read_text(Reader* reader, const Element& element, char (&out)[N]) {
    read_text(reader, element, out, N);
}

// A String (RFC 8794, 7.4), which is printable ASCII: other bytes become "?".
void read_string(Reader* reader, const Element& element, char* out, size_t size);
template <size_t N>
void read_string(Reader* reader, const Element& element, char (&out)[N]) {
    read_string(reader, element, out, N);
}

} // namespace zat
