#include "description.h"

#include "common/text/messages.h"
#include "detect/file_type.h"
#include "messages.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace host {

namespace {

struct Refusal {
    std::string_view line;
    const char* reason;
    Message text;
};

constexpr Refusal refusals[] = {
    {zat::message::empty_file, "empty", Message::empty_file},
    {zat::message::text_file, "text", Message::text_file},
    {zat::message::exe_file, "executable", Message::executable},
    {zat::message::zip_file, "archive", Message::archive},
    {zat::message::dummy_data, "unsupported", Message::nothing_behind_tag},
    {zat::message::unsupported, "unsupported", Message::unsupported},
    {zat::message::read_failed, reason::read_error, Message::nothing_read},
    {zat::message::buffer_failed, reason::read_error, Message::no_memory},
};

// By the line that says why; else the last resort.
Refusal refusal_of(const InfoRecord& record, const Refusal& other) {
    const auto* found =
        std::find_if(std::begin(refusals), std::end(refusals), [&](const Refusal& row) {
            return record.general_count > 0 && record.general[0] == row.line;
        });
    return found != std::end(refusals) ? *found : other;
}

void set_type(Description* description) {
    const InfoRecord& record = description->record;
    description->unknown = record.type_code == FILETYPE_UNKNOWN;
    if (description->unknown) {
        const Refusal refusal = refusal_of(record, {"", "unsupported", Message::unsupported});
        description->reason = refusal.reason;
        description->refusal = message(refusal.text);
    } else if (record.type_code < FILETYPE_MEDIA) {
        const Refusal refusal =
            refusal_of(record, {"", reason::read_error, Message::cannot_be_read});
        description->reason = refusal.reason;
        description->error = message(refusal.text);
    }
}

} // namespace

const char* reason::of_error(const std::error_code& error) {
    if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory ||
        error == std::errc::no_such_device || error == std::errc::invalid_argument) {
        return not_found;
    }
    if (error == std::errc::permission_denied || error == std::errc::operation_not_permitted) {
        return "permission";
    }
    if (error == std::errc::filename_too_long) {
        return path_too_long;
    }
    return error == std::errc::is_a_directory ? not_a_file : read_error;
}

void clear(Description* description) {
    if (description->details != nullptr) {
        description->spare = std::move(description->details);
    }
    description->path.clear();
    description->error.clear();
    description->reason.clear();
    description->unknown = false;
    description->refusal.clear();
    description->record = {};
    description->type_name.clear();
    description->format.clear();
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
        description->details = description->spare != nullptr ? std::move(description->spare)
                                                             : std::make_unique<ZatDetails>();
        description->details->size = sizeof(ZatDetails);
        if (library.get_details(record, description->details.get()) != 1) {
            description->spare = std::move(description->details);
        }
        break;
    }
    char name[32];
    library.get_type_name(record->type_code, name, sizeof name);
    description->type_name = name;
    set_type(description);
    description->format = description->details != nullptr && description->details->format[0] != '\0'
                              ? description->details->format
                              : zat::type_format(record->type_code);
}

bool is_refused(const Description& description) {
    return !description.error.empty() && description.record.type_code == FILETYPE_ERROR &&
           description.record.general_count != 0;
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
