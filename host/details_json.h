// The typed details as JSON: a member stands there only when it is known.
#pragma once

#include "zat/details.h"

#include <nlohmann/json.hpp>

namespace host {

using Json = nlohmann::ordered_json;

// Adds the file's own members.
void add_file_details(const ZatDetails& details, Json* out);

// Adds the file's members and its streams.
void add_details(const ZatDetails& details, Json* out);

Json stream_json(const ZatStream& stream);

} // namespace host
