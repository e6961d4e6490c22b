#include "container/avi/language.h"

#include "common/text/text.h"

namespace zat::avi {

namespace {

constexpr uint16_t primary_mask = 0x3FF;

// ISO 639-2 codes in the order of Microsoft's primary language identifiers (MS-LCID), from Arabic
// (1) to Vietnamese (0x2A).
constexpr std::string_view languages = "arabulcatzhocesdandeuellengspafinfrahebhunislita"
                                       "jpnkornldnorpolporrohronrushrvslksqiswethaturu"
                                       "rdindukrbelslvestlavlittgkfasvie";

} // namespace

std::string_view language_of(uint16_t identifier) {
    constexpr size_t code_size = 3;
    const size_t at = (size_t{identifier} & primary_mask) * code_size;
    return at == 0 || at > languages.size()
               ? std::string_view{}
               : text_from(languages, at - code_size).substr(0, code_size);
}

} // namespace zat::avi
