// A file's description as a JSON object; docs/zat.schema.json describes it.
#pragma once

#include "description.h"

#include <string>

namespace host {

// In one line without its end.
std::string json_of(const Library& library, const Description& description, bool with_report);

} // namespace host
