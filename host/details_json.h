// The typed details as JSON: a member stands there only when it is known.
#pragma once

#include "zat/details.h"

#include <nlohmann/json.hpp>

namespace host {

// Adds the file's own members.
void add_file_details(const ZatDetails& details, nlohmann::ordered_json* out);

// Adds the file's members and its streams.
void add_details(const ZatDetails& details, nlohmann::ordered_json* out);

nlohmann::ordered_json stream_json(const ZatStream& stream);

} // namespace host
