#include "detect/file_format.h"

#include "common/record/record_lines.h"
#include "common/text/messages.h"
#include "detect/driver.h"

#include <cstring>

namespace zat {

namespace {

// The path is the record's first field. A host may have written one that is too long over the
// fields behind it: its length is told all the same, and none of it is copied past the buffer.
void take_path(const InfoRecord* record, DetectContext* context) {
    static_assert(offsetof(InfoRecord, path) == 0);
    const auto* text = reinterpret_cast<const char*>(record);
    context->path_length = bounded_text(text, sizeof *record).size();
    if (context->path_length < sizeof context->path) {
        std::memcpy(context->path, text, context->path_length);
    }
}

} // namespace

void fill_file_format(InfoRecord* record, FileRecord* file) {
    DetectContext context{};
    take_path(record, &context);
    const Detection result = detect(&context, file);
    record->file_size = static_cast<uint64_t>(context.file_size);
    record->type_code = context.type_code;
    record->general_count = context.general_count;
    for (int32_t i = 0; i < context.general_count; ++i) {
        copy_text(record->general[i], bounded_text(context.general[i]));
    }
    if (result == Detection::unknown) {
        set_general_line(record, "%s", message::unsupported);
    }
}

} // namespace zat
