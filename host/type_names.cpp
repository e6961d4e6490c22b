#include "type_names.h"

#include "detect/file_type.h"

namespace host {

std::string type_name(uint32_t type_code) {
    const std::string_view name = zat::type_enumerator(type_code);
    return name.empty() ? std::string() : "FILETYPE_" + std::string(name);
}

} // namespace host
