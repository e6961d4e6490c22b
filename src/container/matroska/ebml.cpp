#include "container/matroska/ebml.h"

#include "common/bytes/bits.h"
#include "common/text/text.h"
#include "common/text/text_codes.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zat {

namespace {

constexpr int longest_id = 4;
constexpr int longest_vint = 8;

constexpr uint32_t id_void = 0xEC;
constexpr uint32_t id_crc32 = 0xBF;

constexpr uint64_t all_ones(int length) {
    return (uint64_t{1} << (7 * length)) - 1;
}

} // namespace

Vint parse_vint(Bytes bytes) {
    const int length = bytes.empty() ? 0 : VintLength(bytes[0]);
    if (length == 0 || static_cast<size_t>(length) > bytes.size()) {
        return {};
    }
    return {VintValue(bytes.data()), static_cast<uint32_t>(length)};
}

ElementHead parse_element_head(Bytes bytes) {
    const int id_length = bytes.empty() ? 0 : VintLength(bytes[0]);
    if (id_length == 0 || id_length > longest_id ||
        static_cast<size_t>(id_length) >= bytes.size()) {
        return {};
    }
    ElementHead head;
    for (int i = 0; i < id_length; ++i) {
        head.id = head.id << 8 | bytes[static_cast<size_t>(i)];
    }
    const Vint size = parse_vint(bytes.subspan(static_cast<size_t>(id_length)));
    if (size.length == 0) {
        return {};
    }
    head.unknown_size = size.value == all_ones(static_cast<int>(size.length));
    head.size = head.unknown_size ? 0 : static_cast<int64_t>(size.value); // below 2^56
    head.length = static_cast<uint32_t>(id_length) + size.length;
    return head;
}

bool next_element(Reader* reader, ElementCursor* cursor, Element* element) {
    static_assert(longest_element_head == longest_id + longest_vint);
    for (;;) {
        const ElementHead head = parse_element_head(read_view(
            reader, cursor->parent, cursor->position - cursor->parent.start, longest_element_head));
        if (head.length == 0) {
            return false;
        }
        element->id = head.id;
        element->start = cursor->position;
        element->unknown_size = head.unknown_size;
        const int64_t data_start = cursor->position + head.length;
        element->said_end = head.unknown_size ? cursor->parent.end : data_start + head.size;
        element->data = {data_start, std::min(element->said_end, cursor->parent.end)};
        cursor->position = element->data.end;
        if (head.id != id_void && head.id != id_crc32) {
            return true;
        }
    }
}

uint64_t read_uint(Reader* reader, const Element& element, uint64_t missing) {
    const Bytes bytes = read_view(reader, element.data, 0, sizeof(uint64_t) + 1);
    if (bytes.empty() || bytes.size() > sizeof(uint64_t)) {
        return missing;
    }
    uint64_t value = 0;
    for (const uint8_t byte : bytes) {
        value = value << 8 | byte;
    }
    return value;
}

double read_float(Reader* reader, const Element& element, double missing) {
    const Bytes bytes = read_view(reader, element.data, 0, sizeof(double) + 1);
    const double value = bytes.size() == sizeof(float)    ? ReadBEFloat32(bytes.data())
                         : bytes.size() == sizeof(double) ? ReadBEFloat64(bytes.data())
                                                          : missing;
    return std::isfinite(value) ? value : missing;
}

void read_text(Reader* reader, const Element& element, char* out, size_t size) {
    const auto wanted = static_cast<uint32_t>(std::min<size_t>(size, BlockReader::jump_size));
    const Bytes bytes = read_view(reader, element.data, 0, wanted);
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    claimed_utf8_to_utf8(text.substr(0, text.find('\0')), out, size);
}

void read_string(Reader* reader, const Element& element, char* out, size_t size) {
    read_text(reader, element, out, size);
    std::replace_if(out, out + bounded_text(out, size).size(), IsNotPrintable, '?');
}

} // namespace zat
