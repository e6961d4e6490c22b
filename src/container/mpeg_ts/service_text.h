// Names of services and descriptions of events, out of service information.
#pragma once

#include "common/text/text.h"
#include "container/mpeg_ts/service_info.h"

namespace zat::ts {

constexpr size_t service_text_size = 1024; // UTF-8 of the longest field

// A field in the code that the file uses.
size_t service_utf8(const ServiceInfo& info, Bytes text, char* out, size_t size);
size_t service_cp932(const ServiceInfo& info, Bytes text, char* out, size_t size);

// "1024 name (provider)", "4.1 WNBC" for ATSC. Empty for a service without name and provider.
void service_line(
    const ServiceInfo& info, const Service& service, bool with_provider, char (&line)[line_size]);

// "2024/02/29 23:55-00:50 name genre"; what is not told is left out.
void event_line(const ServiceInfo& info, const Event& event, char (&line)[line_size]);

// "heading: text" of an extended item.
void item_line(const ServiceInfo& info, const Event& event, uint32_t item, char (&line)[line_size]);

} // namespace zat::ts
