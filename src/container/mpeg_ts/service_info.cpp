#include "container/mpeg_ts/service_info.h"

#include "container/mpeg_descriptors.h"
#include "text/dvb_text.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>

namespace zat::ts {

namespace {

enum TableId : uint8_t {
    table_nit = 0x40,
    table_sdt = 0x42,
    table_eit_present_following = 0x4E,
    table_sit = 0x7F,
    table_tvct = 0xC8,
    table_cvct = 0xC9,
};

enum Tag : uint8_t {
    tag_service = 0x48,
    tag_short_event = 0x4D,
    tag_extended_event = 0x4E,
    tag_content = 0x54,
    tag_network = 0xC2,      // ARIB: network_identification_descriptor
    tag_partial_time = 0xC3, // partialTS_time_descriptor
    tag_audio_component = 0xC4,
    tag_ts_information = 0xCD,
};

// The bytes of a field with a length in front; steps over it.
Bytes take_counted(Bytes* rest) {
    const size_t length = byte_at(*rest, 0);
    const Bytes field = part_of(*rest, 1, length);
    *rest = part_of(*rest, 1 + length);
    return field;
}

// One text that can only be of ISO/IEC 8859-15 tells the table of all that name none.
void note_table(ServiceInfo* info, Bytes text) {
    info->looks_like_8859_15 = info->looks_like_8859_15 || looks_like_iso8859_15(text);
}

void set_text(ServiceInfo* info, RawText* to, Bytes text) {
    const Bytes kept = part_of(text, 0, sizeof to->bytes);
    to->length = static_cast<uint8_t>(kept.size());
    std::copy(kept.begin(), kept.end(), to->bytes);
    note_table(info, kept);
}

// Of Japanese broadcasters (ARIB STD-B10, annex N).
void note_network(ServiceInfo* info, uint16_t original_network_id) {
    const bool is_japanese = original_network_id == 4 || original_network_id == 6 ||
                             original_network_id == 7 ||
                             (original_network_id >= 0x7880 && original_network_id <= 0x7FE8);
    info->has_arib_signs = info->has_arib_signs || is_japanese;
}

void note_language(ServiceInfo* info, Bytes code) {
    if (has_at(code, 0, "jpn")) {
        info->has_japanese = true;
    } else if (has_at(code, 0, "por") || has_at(code, 0, "spa")) {
        info->is_latin_arib = true;
    }
}

Service* service_of(ServiceInfo* info, uint16_t id) {
    for (uint32_t i = 0; i < info->service_count; ++i) {
        if (info->services[i].id == id) {
            return &info->services[i];
        }
    }
    if (info->service_count == service_slots) {
        return nullptr;
    }
    Service* service = &info->services[info->service_count++];
    *service = Service{};
    service->id = id;
    return service;
}

// service_descriptor (ETSI EN 300 468, 6.2.33).
void read_service_descriptor(ServiceInfo* info, Service* service, Bytes data) {
    Bytes rest = part_of(data, 1); // behind service_type
    set_text(info, &service->provider, take_counted(&rest));
    set_text(info, &service->name, take_counted(&rest));
    service->described = true;
}

// short_event_descriptor (6.2.37).
void read_short_event(ServiceInfo* info, Event* event, Bytes data) {
    note_language(info, data);
    Bytes rest = part_of(data, 3);
    set_text(info, &event->name, take_counted(&rest));
    set_text(info, &event->text, take_counted(&rest));
}

uint16_t add_to_pool(Event* event, Bytes text) {
    const size_t count = std::min(text.size(), item_pool_size - event->pool_used);
    std::copy_n(text.begin(), count, event->pool + event->pool_used);
    event->pool_used = static_cast<uint16_t>(event->pool_used + count);
    return static_cast<uint16_t>(count);
}

// An item without a heading goes on with the text of the one before it, byte by byte: characters
// and states of the code are cut between descriptors.
void add_item(Event* event, Bytes heading, Bytes text) {
    if (!heading.empty() || event->item_count == 0) {
        if (event->item_count == item_slots) {
            return;
        }
        EventItem* item = &event->items[event->item_count++];
        item->heading = event->pool_used;
        item->heading_length = add_to_pool(event, heading);
        item->text = event->pool_used;
        item->text_length = 0;
    }
    EventItem* item = &event->items[event->item_count - 1];
    item->text_length = static_cast<uint16_t>(item->text_length + add_to_pool(event, text));
}

// extended_event_descriptor (6.2.15).
void read_extended_event(ServiceInfo* info, Event* event, Bytes data) {
    note_language(info, part_of(data, 1));
    Bytes items = part_of(data, 5, byte_at(data, 4));
    while (!items.empty()) {
        const Bytes heading = take_counted(&items);
        const Bytes text = take_counted(&items);
        note_table(info, heading);
        if (!heading.empty()) { // else it goes on with a text whose table is not known here
            note_table(info, text);
        }
        add_item(event, heading, text);
    }
    Bytes rest = part_of(data, size_t{5} + byte_at(data, 4));
    const Bytes text = take_counted(&rest);
    if (event->long_text.length == 0) {
        set_text(info, &event->long_text, text);
    }
}

// audio_component_descriptor (ARIB STD-B10, part 2, 6.2.26).
void read_event_audio(Event* event, Bytes data) {
    constexpr size_t size = 9;
    constexpr uint8_t dual_mono = 2;
    if (data.size() < size || event->audio_count == audio_component_slots) {
        return;
    }
    AudioComponent* component = &event->audio[event->audio_count++];
    component->tag = data[2];
    component->dual_mono = data[1] == dual_mono;
    const bool has_second = (data[5] & 0x80) != 0 && data.size() >= size + 3;
    std::copy_n(&data[6], has_second ? 6 : 3, component->languages);
}

void read_event_descriptors(ServiceInfo* info, Event* event, Bytes descriptors) {
    Descriptor descriptor;
    while (next_descriptor(&descriptors, &descriptor)) {
        switch (descriptor.tag) {
        case tag_short_event:
            read_short_event(info, event, descriptor.data);
            break;
        case tag_extended_event:
            read_extended_event(info, event, descriptor.data);
            break;
        case tag_content:
            if (event->genre == 0xFF && descriptor.data.size() >= 2) {
                event->genre = descriptor.data[0] >> 4;
            }
            break;
        case tag_audio_component:
            read_event_audio(event, descriptor.data);
            break;
        default:
            break;
        }
    }
}

void begin_event(Event* event, Bytes start, Bytes duration) {
    event->known = true;
    event->genre = 0xFF;
    std::memset(event->start, 0xFF, sizeof event->start);
    std::memset(event->duration, 0xFF, sizeof event->duration);
    if (start.size() == sizeof event->start) {
        std::copy(start.begin(), start.end(), event->start);
    }
    if (duration.size() == sizeof event->duration) {
        std::copy(duration.begin(), duration.end(), event->duration);
    }
}

// service_description_section (ETSI EN 300 468, 5.2.3).
void read_sdt(ServiceInfo* info, Bytes bytes) {
    if (bytes.size() < 11) {
        return;
    }
    info->sdt_seen = true;
    note_network(info, ReadBE16(&bytes[8]));
    Bytes rest = part_of(bytes, 11);
    while (rest.size() >= 5) {
        Service* service = service_of(info, ReadBE16(rest.data()));
        Bytes descriptors = descriptor_loop(rest, 3);
        rest = part_of(rest, 5 + length12(rest, 3));
        Descriptor descriptor;
        while (service != nullptr && next_descriptor(&descriptors, &descriptor)) {
            if (descriptor.tag == tag_service && !service->described) {
                read_service_descriptor(info, service, descriptor.data);
            }
        }
    }
}

// event_information_section (5.2.4): the present event in section 0, the following one in 1.
void read_eit(ServiceInfo* info, const Section& section) {
    constexpr size_t event_at = 14;
    const Bytes bytes = section.bytes;
    if (bytes.size() < event_at) {
        return;
    }
    info->eit_seen = true;
    note_network(info, ReadBE16(&bytes[10]));
    Service* service = service_of(info, section.extension);
    if (service == nullptr || section.number > 1 || bytes.size() < event_at + 12) {
        return;
    }
    Event* event = section.number == 0 ? &service->present : &service->following;
    if (!event->known) {
        begin_event(event, bytes.subspan(event_at + 2, 5), bytes.subspan(event_at + 7, 3));
        read_event_descriptors(info, event, descriptor_loop(bytes, event_at + 10));
    }
}

// network_information_section (5.2.1).
void read_nit(ServiceInfo* info, Bytes bytes) {
    Bytes rest = part_of(bytes, 8 + 2 + length12(bytes, 8) + 2); // behind both lengths
    while (rest.size() >= 6) {
        note_network(info, ReadBE16(&rest[2]));
        Bytes descriptors = descriptor_loop(rest, 4);
        rest = part_of(rest, 6 + length12(rest, 4));
        Descriptor descriptor;
        while (next_descriptor(&descriptors, &descriptor)) {
            info->has_arib_signs = info->has_arib_signs || descriptor.tag == tag_ts_information;
        }
    }
}

// The service loop of the selection information table, which recorders write in place of all other
// tables (ETSI EN 300 468, 7.1.2; ARIB STD-B21, 9.6). `time` is the time descriptor of the whole
// table, which holds for services without their own.
void read_sit_service(ServiceInfo* info, Service* service, Bytes time, Bytes descriptors) {
    bool has_event = false;
    Descriptor descriptor;
    for (Bytes rest = descriptors; next_descriptor(&rest, &descriptor);) {
        if (descriptor.tag == tag_service && !service->described) {
            read_service_descriptor(info, service, descriptor.data);
        } else if (descriptor.tag == tag_partial_time) {
            info->has_arib_signs = true;
            time = descriptor.data;
            has_event = true;
        }
        has_event = has_event || descriptor.tag == tag_short_event ||
                    descriptor.tag == tag_extended_event || descriptor.tag == tag_content;
    }
    if (has_event && !service->present.known) {
        begin_event(&service->present, part_of(time, 1, 5), part_of(time, 6, 3));
        read_event_descriptors(info, &service->present, descriptors);
    }
}

void read_sit(ServiceInfo* info, Bytes bytes) {
    Bytes time;
    Descriptor descriptor;
    for (Bytes rest = descriptor_loop(bytes, 8); next_descriptor(&rest, &descriptor);) {
        if (descriptor.tag == tag_network || descriptor.tag == tag_partial_time) {
            info->has_arib_signs = true;
        }
        time = descriptor.tag == tag_partial_time ? descriptor.data : time;
    }
    Bytes rest = part_of(bytes, 10 + length12(bytes, 8));
    while (rest.size() >= 4) {
        Service* service = service_of(info, ReadBE16(rest.data()));
        const Bytes descriptors = descriptor_loop(rest, 2);
        if (service != nullptr && !descriptors.empty()) {
            info->sdt_seen = true;
            info->eit_seen = true;
            read_sit_service(info, service, time, descriptors);
        }
        rest = part_of(rest, 4 + length12(rest, 2));
    }
}

// virtual_channel_table_section (ATSC A/65, 6.3).
void read_vct(ServiceInfo* info, Bytes bytes) {
    constexpr size_t channel_size = 32;
    constexpr size_t name_size = 14; // UTF-16
    info->sdt_seen = true;
    Bytes rest = part_of(bytes, 10);
    for (uint32_t i = byte_at(bytes, 9); i > 0 && rest.size() >= channel_size; --i) {
        const uint32_t numbers = ReadBE32(&rest[name_size]);
        Service* service = service_of(info, ReadBE16(&rest[24]));
        if (service != nullptr && !service->described) {
            service->described = true;
            service->is_atsc = true;
            service->major = numbers >> 18 & 0x3FF;
            service->minor = numbers >> 8 & 0x3FF;
            service->name.length = name_size;
            std::copy_n(rest.begin(), name_size, service->name.bytes);
        }
        const size_t descriptors = static_cast<size_t>(rest[30] & 3) << 8 | rest[31];
        rest = part_of(rest, channel_size + descriptors);
    }
}

} // namespace

void clear_services(ServiceInfo* info) {
    std::memset(static_cast<void*>(info), 0, offsetof(ServiceInfo, services));
}

bool carries_service_info(uint16_t pid) {
    static constexpr uint16_t pids[] = {
        pid_nit, pid_sdt, pid_eit, pid_sit, pid_bit, pid_eit_m, pid_eit_l, pid_psip};
    return std::find(std::begin(pids), std::end(pids), pid) != std::end(pids);
}

void read_service_section(ServiceInfo* info, uint16_t pid, const Section& section) {
    if (!section.has_syntax || !section.crc_ok || !section.current) {
        return;
    }
    switch (section.table_id) {
    case table_nit:
        if (pid == pid_nit) {
            read_nit(info, section.bytes);
        }
        break;
    case table_sdt:
        if (pid == pid_sdt && take_number(&info->sdt_sections, section.number)) {
            read_sdt(info, section.bytes);
        }
        break;
    case table_eit_present_following:
        if (pid == pid_eit || pid == pid_eit_m || pid == pid_eit_l) {
            read_eit(info, section);
        }
        break;
    case table_sit:
        if (pid == pid_sit && take_number(&info->sit_sections, section.number)) {
            read_sit(info, section.bytes);
        }
        break;
    case table_tvct:
    case table_cvct:
        if (pid == pid_psip) {
            read_vct(info, section.bytes);
        }
        break;
    default:
        break;
    }
    info->has_arib_signs = info->has_arib_signs || pid == pid_bit;
}

const Service* find_service(const ServiceInfo* info, uint16_t id) {
    for (uint32_t i = 0; i < info->service_count; ++i) {
        if (info->services[i].id == id) {
            return &info->services[i];
        }
    }
    return nullptr;
}

} // namespace zat::ts
