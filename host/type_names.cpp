#include "type_names.h"

#include "detect/file_type.h"
#include "zat/zat.h"

namespace host {

namespace {

// Enumerators that the library's own list of names lacks.
struct Row {
    uint32_t type_code;
    const char* name;
};
constexpr Row unlisted[] = {
    {FILETYPE_PATHTOOLONG, "FILETYPE_PATHTOOLONG"},
    {FILETYPE_TAK, "FILETYPE_TAK"},
    {FILETYPE_DSDIFF, "FILETYPE_DSDIFF"},
    {FILETYPE_DSF, "FILETYPE_DSF"},
    {FILETYPE_WSD, "FILETYPE_WSD"},
};

} // namespace

std::string type_name(uint32_t type_code) {
    for (const Row& row : unlisted) {
        if (row.type_code == type_code) {
            return row.name;
        }
    }
    char name[64] = "";
    zat::FileTypeName(type_code, name);
    // Behind the name stand numbers in parentheses, which are not always the code.
    const std::string whole = name;
    return whole.substr(0, whole.find('('));
}

} // namespace host
