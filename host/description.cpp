#include "description.h"

#include "common/messages.h"
#include "detect/file_type.h"

namespace host {

namespace {

struct Refusal {
    std::string_view line;
    const char* reason;
};

constexpr Refusal refusals[] = {
    {zat::message::empty_file, "empty"},
    {zat::message::text_file, "text"},
    {zat::message::exe_file, "executable"},
    {zat::message::zip_file, "archive"},
};

const char* refusal_of(const InfoRecord& record) {
    for (const Refusal& refusal : refusals) {
        if (record.general_count > 0 && record.general[0] == refusal.line) {
            return refusal.reason;
        }
    }
    return "unsupported";
}

} // namespace

const char* reason::of_error(const std::error_code& error) {
    if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory ||
        error == std::errc::no_such_device || error == std::errc::invalid_argument) {
        return "not-found";
    }
    if (error == std::errc::permission_denied || error == std::errc::operation_not_permitted) {
        return "permission";
    }
    if (error == std::errc::filename_too_long) {
        return path_too_long;
    }
    return error == std::errc::is_a_directory ? not_a_file : read_error;
}

void ask_library(const Library& library, Query query, Description* description) {
    InfoRecord* record = &description->record;
    switch (query) {
    case Query::type:
        library.get_file_format(record);
        break;
    case Query::record:
        library.get_info(record);
        break;
    case Query::details:
        description->details = std::make_unique<ZatDetails>();
        description->details->size = sizeof(ZatDetails);
        if (library.get_details(record, description->details.get()) != 1) {
            description->details.reset();
        }
        break;
    }
    char name[32];
    library.get_type_name(record->type_code, name, sizeof name);
    description->type_name = name;
    description->unknown = record->type_code == FILETYPE_UNKNOWN;
    description->reason = description->unknown ? refusal_of(*record) : "";
    description->format = description->details != nullptr && description->details->format[0] != '\0'
                              ? description->details->format
                              : zat::type_format(record->type_code);
}

std::string full_type_name(const Description& description) {
    return description.type_name.empty() ? "" : "FILETYPE_" + description.type_name;
}

std::string report_of(const Library& library, const InfoRecord& record) {
    std::string report(library.reform_full_bounded(&record, nullptr, 0) + 1, '\0');
    library.reform_full_bounded(&record, report.data(), static_cast<uint32_t>(report.size()));
    report.pop_back();
    return report;
}

} // namespace host
