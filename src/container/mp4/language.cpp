#include "container/mp4/language.h"

#include <cstring>

namespace zat::mp4 {

namespace {

// By number from 0 on, three letters each.
constexpr char script_manager_codes[] =
    "engfradeuitanldswespadanpornorhebjpnarafinellislmltturhrvzho" // 0
    "urdhinthakorlitpolhunestlavsmefaofasruszhonldglesqironcesslk" // 20
    "slvyidsrpmkdbulukrbeluzbkazazeazehyekatronkirtgktukmonmonpus" // 40
    "kurkassndbodnepsanmarbenasmgujpanorimalkantamtelsinmyakhmlao" // 60
    "vieindtglmsamsaamhtirormsomswakinrunnyamlgepo";               // 80
constexpr char further_script_manager_codes[] =
    "cymeuscatlatquegrnaymtatuigdzojavsunglgafrbreikuglaglvgleton" // 128
    "grckalaze";                                                   // 148
constexpr uint16_t first_further_code = 128;

constexpr uint16_t first_packed_code = 0x400;
constexpr uint16_t unspecified = 0x7FFF;

template <size_t N>
void copy_code(const char (&codes)[N], uint32_t index, char (&out)[language_size]) {
    if (size_t{index} * 3 + 3 < N) {
        std::memcpy(out, codes + size_t{index} * 3, 3);
        out[3] = '\0';
    }
}

} // namespace

void language_text(uint16_t code, char (&out)[language_size]) {
    out[0] = '\0';
    if (code == unspecified) {
        return;
    }
    if (code < first_further_code) {
        copy_code(script_manager_codes, code, out);
    } else if (code < first_packed_code) {
        copy_code(further_script_manager_codes, code - uint32_t{first_further_code}, out);
    } else {
        for (int i = 0; i < 3; ++i) {
            const int letter = code >> (10 - 5 * i) & 31;
            if (letter < 1 || letter > 26) {
                out[0] = '\0';
                return;
            }
            out[i] = static_cast<char>('a' - 1 + letter);
        }
        out[3] = '\0';
        if (std::memcmp(out, "und", 3) == 0) {
            out[0] = '\0';
        }
    }
}

} // namespace zat::mp4
