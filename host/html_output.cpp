#include "html_output.h"

#include "json_output.h"

namespace host {

namespace {

// report_page.html as a literal.
constexpr std::string_view page =
#include "report_page.inc"
    ;

constexpr std::string_view files_mark = "@FILES@\n";
constexpr size_t files_place = page.find(files_mark);
static_assert(files_place != std::string_view::npos);

} // namespace

std::string_view html_head() {
    return page.substr(0, files_place);
}

std::string_view html_tail() {
    return page.substr(files_place + files_mark.size());
}

// HTML, section 13.2.5.4 (script data): the text ends at "</script", and "<!--" changes how it is
// read. In JSON "<" stands within texts only, where it may be an escape.
std::string html_of(const Library& library, const Description& description) {
    std::string out;
    for (const char c : json_of(library, description, false)) {
        if (c == '<') {
            out += "\\u003c";
        } else {
            out += c;
        }
    }
    return out + "\n";
}

} // namespace host
