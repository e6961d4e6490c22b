#include "container/mpeg_ts/service_lines.h"

#include "common/record/details.h"
#include "common/record/record_lines.h"
#include "container/mpeg_ts/service_text.h"

namespace zat::ts {

namespace {

// The services that count, in the order of their programs.
struct Shown {
    const Service* services[service_slots];
    uint32_t count = 0;
};

bool has_name(const Service& service) {
    return service.is_atsc || service.name.length != 0 || service.provider.length != 0;
}

void gather(const Analysis* analysis, const uint16_t* order, uint32_t program_count, Shown* shown) {
    const ServiceInfo& info = analysis->services;
    if (program_count == 0) {
        for (uint32_t i = 0; i < info.service_count; ++i) {
            shown->services[shown->count++] = &info.services[i];
        }
        return;
    }
    for (uint32_t i = 0; i < program_count && shown->count < service_slots; ++i) {
        const Service* service = find_service(&info, analysis->programs[order[i]].number);
        if (service != nullptr) {
            shown->services[shown->count++] = service;
        }
    }
}

void write_present_event(const ServiceInfo& info, const Event& event, const Output& out) {
    if (!event.known) {
        return;
    }
    char line[line_size];
    event_line(info, event, line);
    if (line[0] != '\0') {
        add_general_line(out.record, "%s", line);
    }
    const RawText& text = event.text.length != 0 ? event.text : event.long_text;
    service_cp932(info, raw_bytes(text), out.record->extra_info, sizeof out.record->extra_info);
    if (out.details != nullptr) {
        char title[service_text_size];
        service_utf8(info, raw_bytes(event.name), title, sizeof title);
        copy_utf8(out.details->title, title);
    }
}

void add_following_event(const ServiceInfo& info, const Event& event, ExtraLines* extra) {
    char line[line_size] = "";
    if (event.known) {
        event_line(info, event, line);
    }
    if (line[0] != '\0') {
        add_fact(extra, "next %s", line);
    }
}

void add_items(const ServiceInfo& info, const Event& event, ExtraLines* extra) {
    for (uint32_t i = 0; i < event.item_count; ++i) {
        char line[line_size];
        item_line(info, event, i, line);
        if (line[0] != '\0') {
            add_fact(extra, "%s", line);
        }
    }
}

} // namespace

void write_services(const Analysis* analysis, const uint16_t* order, uint32_t program_count,
    const Output& out, ExtraLines* extra) {
    const ServiceInfo& info = analysis->services;
    Shown shown;
    gather(analysis, order, program_count, &shown);
    const Service* first = nullptr;
    for (uint32_t i = 0; i < shown.count; ++i) {
        const Service& service = *shown.services[i];
        char line[line_size] = "";
        if (has_name(service)) {
            service_line(info, service, first == nullptr, line);
        }
        if (line[0] == '\0') {
            continue;
        }
        if (first == nullptr) {
            first = &service;
            add_general_line(out.record, "%s", line);
        } else {
            add_fact(extra, "%s", line);
        }
    }
    if (first == nullptr && shown.count > 0) {
        first = shown.services[0];
    }
    if (first != nullptr) {
        write_present_event(info, first->present, out);
        add_following_event(info, first->following, extra);
        add_items(info, first->present, extra);
    }
}

} // namespace zat::ts
