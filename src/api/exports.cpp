// The exported entry points. They hold no logic of their own beyond joining detection, dispatch and
// report.
#include "api/dispatch.h"
#include "api/float_control.h"
#include "api/report.h"
#include "common/catalogue/catalogue_directory.h"
#include "common/file/file_access.h"
#include "common/record/details.h"
#include "common/text/text.h"
#include "detect/file_format.h"
#include "detect/file_type.h"
#include "zat/zat.h"

#include <cstdint>

#if defined(_WIN32)
#define ZAT_EXPORT // listed in the module definition file
#else
#define ZAT_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

ZAT_EXPORT int32_t ZAT_CALL DllEntryPoint(
    void* /*module*/, uint32_t /*reason*/, void* /*reserved*/) {
    return 1;
}

ZAT_EXPORT void ZAT_CALL Init() {}

ZAT_EXPORT void ZAT_CALL InitFree() {}

ZAT_EXPORT int32_t ZAT_CALL GetDllVersion() {
    return 161225;
}

ZAT_EXPORT int32_t ZAT_CALL Unicode() {
    return 0;
}

ZAT_EXPORT void ZAT_CALL GetDllComment(char* /*text*/) {}

ZAT_EXPORT void ZAT_CALL SetPath(const char* directory) {
    zat::set_catalogue_directory(directory);
}

ZAT_EXPORT void ZAT_CALL _GetFileFormat(void* /*unused*/) {}

ZAT_EXPORT void ZAT_CALL GetFileFormat(InfoRecord* record) {
    const zat::FloatControl control;
    zat::FileRecord file;
    zat::fill_file_format(record, &file);
}

ZAT_EXPORT void ZAT_CALL GetInfo(InfoRecord* record) {
    const zat::FloatControl control;
    zat::FileEnds ends;
    zat::FileRecord file;
    file.ends = &ends;
    zat::fill_file_format(record, &file);
    zat::DispatchAnalyser(&file, {record, nullptr});
}

ZAT_EXPORT int32_t ZAT_CALL GetDetails(InfoRecord* record, ZatDetails* details) {
    if (details->size < sizeof *details) {
        return -1;
    }
    const zat::FloatControl control;
    zat::clear_details(details);
    zat::FileEnds ends;
    zat::FileRecord file;
    file.ends = &ends;
    zat::fill_file_format(record, &file);
    zat::DispatchAnalyser(&file, {record, details});
    zat::finish_details(*record, details);
    return record->type_code >= FILETYPE_MEDIA ? 1 : 0;
}

ZAT_EXPORT void ZAT_CALL ReFormFull(const InfoRecord* record, char* out) {
    const zat::FloatControl control;
    zat::write_report(record, out, ZAT_REPORT_SIZE, zat::report_body_size);
}

ZAT_EXPORT uint32_t ZAT_CALL GetTypeName(uint32_t type_code, char* out, uint32_t size) {
    const std::string_view name = zat::type_enumerator(type_code);
    if (size != 0) {
        zat::copy_text(out, size, name);
    }
    return static_cast<uint32_t>(name.size());
}

ZAT_EXPORT uint32_t ZAT_CALL ReFormFullBounded(const InfoRecord* record, char* out, uint32_t size) {
    const zat::FloatControl control;
    return static_cast<uint32_t>(zat::write_report(record, out, size, SIZE_MAX));
}
}
