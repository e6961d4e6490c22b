#include "description.h"

namespace host {

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
