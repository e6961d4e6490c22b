// The files as one page for a browser: a table, charts and every fact, with nothing to fetch.
#pragma once

#include "description.h"

#include <string>
#include <string_view>

namespace host {

// The page before and behind its files.
std::string_view html_head();
std::string_view html_tail();

// One file: its JSON in a line, safe within the page.
std::string html_of(const Library& library, const Description& description);

} // namespace host
