#include "container/asf/object.h"

#include <algorithm>

namespace zat::asf {

bool next_object(Reader* reader, Span* space, Object* object) {
    const Bytes header = read_view(reader, *space, 0, object_header_size);
    if (header.size() < object_header_size) {
        return false;
    }
    const auto size = static_cast<uint64_t>(ReadLE64(header.data() + 16));
    if (size < object_header_size) {
        return false;
    }
    const auto length = static_cast<int64_t>(std::min(size, uint64_t{INT64_MAX}));
    object->id = read_guid(header.data());
    object->offset = space->start;
    object->size = size;
    object->data = sub_span(*space, object_header_size, length - object_header_size);
    *space = sub_span(*space, length);
    return true;
}

} // namespace zat::asf
