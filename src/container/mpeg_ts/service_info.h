// Service information: which services a transport stream carries and what they show. DVB (ETSI EN
// 300 468), ARIB (STD-B10) and ATSC (A/65) share the place where it is kept; texts stay as bytes
// until all is known that decides how to read them.
#pragma once

#include "container/mpeg_ts/sections.h"

#include <cstdint>

namespace zat::ts {

enum ServicePid : uint16_t {
    pid_nit = 0x10,
    pid_sdt = 0x11,
    pid_eit = 0x12,
    pid_tdt = 0x14,
    pid_sit = 0x1F,
    pid_bit = 0x24,
    pid_eit_m = 0x26,
    pid_eit_l = 0x27,
    pid_psip = 0x1FFB,
};

constexpr size_t service_slots = 64;
constexpr size_t item_slots = 12;
constexpr size_t item_pool_size = 2560;
constexpr size_t audio_component_slots = 4;

struct RawText {
    uint8_t length = 0;
    uint8_t bytes[255];
};

inline Bytes raw_bytes(const RawText& text) {
    return {text.bytes, text.length};
}

// A heading and its text within the pool of an event.
struct EventItem {
    uint16_t heading = 0;
    uint16_t heading_length = 0;
    uint16_t text = 0;
    uint16_t text_length = 0;
};

struct AudioComponent {
    uint8_t tag = 0;
    bool dual_mono = false;
    uint8_t languages[6] = {}; // two of three letters; zeros without
};

struct Event {
    bool known = false;
    uint8_t start[5]; // MJD and BCD time; all FF when not told
    uint8_t duration[3];
    uint8_t genre = 0xFF; // content_nibble_level_1
    uint8_t item_count = 0;
    uint8_t audio_count = 0;
    uint16_t pool_used = 0;
    RawText name;
    RawText text;
    RawText long_text; // beside the items
    EventItem items[item_slots];
    AudioComponent audio[audio_component_slots];
    uint8_t pool[item_pool_size];
};

struct Service {
    uint16_t id = 0;
    bool described = false; // by a service table
    bool is_atsc = false;
    uint16_t major = 0; // ATSC channel numbers
    uint16_t minor = 0;
    RawText provider;
    RawText name;
    Event present;
    Event following;
};

struct ServiceInfo {
    uint32_t service_count = 0;
    SectionNumbers sdt_sections;
    SectionNumbers sit_sections;
    bool sdt_seen = false;
    bool eit_seen = false;
    bool has_arib_signs = false; // tables or network ids that only ARIB has
    bool has_japanese = false;   // a text in Japanese
    bool is_latin_arib = false;  // ARIB tables with texts in Portuguese or Spanish
    bool looks_like_8859_15 = false;
    Service services[service_slots];
};

// Starts anew; the services are cleared when they come into use.
void clear_services(ServiceInfo* info);

// Whether sections of the identifier are read here.
bool carries_service_info(uint16_t pid);

// Takes a section that came on the identifier.
void read_service_section(ServiceInfo* info, uint16_t pid, const Section& section);

const Service* find_service(const ServiceInfo* info, uint16_t id);

// Whether the texts are in the 8-bit code of ARIB STD-B24.
inline bool has_arib_text(const ServiceInfo* info) {
    return info->has_japanese || (info->has_arib_signs && !info->is_latin_arib);
}

} // namespace zat::ts
