#include "detect/file_type.h"

#include "common/text.h"
#include "zat/zat.h"

#include <algorithm>
#include <iterator>

namespace zat {

namespace {

struct TypeName {
    uint32_t type_code;
    const char* name;             // of the enumerator, behind its prefix
    const char* number = nullptr; // behind the traced name; null for a code that traces none
};

// The numbers are history: above 112 they are one less than the code.
constexpr TypeName names[] = {
    {FILETYPE_ERROR, "ERROR", "(0)"},
    {FILETYPE_UNKNOWN, "UNKNOWN", "(1)"},
    {FILETYPE_OPENFAILED, "OPENFAILED", "(2)"},
    {FILETYPE_PATHTOOLONG, "PATHTOOLONG"},
    {FILETYPE_ERROR_END, "ERROR_END", "(3)"},
    {FILETYPE_MEDIA, "MEDIA", "(10)"},
    {FILETYPE_VIDEO_AUDIO, "VIDEO_AUDIO", "(11)"},
    {FILETYPE_AVI, "AVI", "(12)"},
    {FILETYPE_MPEG1, "MPEG1", "(13)"},
    {FILETYPE_MPEG1VCD, "MPEG1VCD", "(14)"},
    {FILETYPE_QUICKTIME, "QUICKTIME", "(15)"},
    {FILETYPE_OGGMEDIA, "OGGMEDIA", "(16)"},
    {FILETYPE_MPEG2, "MPEG2", "(17)"},
    {FILETYPE_MPEG2_TS, "MPEG2_TS", "(18)"},
    {FILETYPE_MPEG2_M2TS, "MPEG2_M2TS", "(192)(19)"},
    {FILETYPE_WMV, "WMV", ""},
    {FILETYPE_REALMEDIA, "REALMEDIA", ""},
    {FILETYPE_3GPP, "3GPP", ""},
    {FILETYPE_3GPP2, "3GPP2", ""},
    {FILETYPE_MPEG4, "MPEG4", ""},
    {FILETYPE_AMC, "AMC", ""},
    {FILETYPE_MATROSKA, "MATROSKA", ""},
    {FILETYPE_MPEG, "MPEG", ""},
    {FILETYPE_FLV, "FLV", ""},
    {FILETYPE_GRAPHIC, "GRAPHIC", ""},
    {FILETYPE_BMP, "BMP", ""},
    {FILETYPE_JPEG, "JPEG", ""},
    {FILETYPE_GIF, "GIF", ""},
    {FILETYPE_GRAPHIC_END, "GRAPHIC_END", ""},
    {FILETYPE_VIDEO_AUDIO_END, "VIDEO_AUDIO_END", ""},
    {FILETYPE_AUDIO, "AUDIO", "(100)"},
    {FILETYPE_WAV, "WAV", "(101)"},
    {FILETYPE_MID, "MID", "(102)"},
    {FILETYPE_RMI, "RMI", "(103)"},
    {FILETYPE_AU, "AU", "(104)"},
    {FILETYPE_AIFF, "AIFF", "(105)"},
    {FILETYPE_MP3, "MP3", "(106)"},
    {FILETYPE_CDA, "CDA", "(107)"},
    {FILETYPE_RMP3, "RMP3", "(108)"},
    {FILETYPE_OGGVORBIS, "OGGVORBIS", "(109)"},
    {FILETYPE_OGGSPEEX, "OGGSPEEX", "(110)"},
    {FILETYPE_OGGFLAC, "OGGFLAC", "(111)"},
    {FILETYPE_OGGOPUS, "OGGOPUS", "(112)"},
    {FILETYPE_WMA, "WMA", "(112)"},
    {FILETYPE_AC3, "AC3", "(113)"},
    {FILETYPE_MONKEY, "MONKEY", "(114)"},
    {FILETYPE_MUSEPACK, "MUSEPACK", "(115)"},
    {FILETYPE_FLAC, "FLAC", "(116)"},
    {FILETYPE_AAC, "AAC", "(117)"},
    {FILETYPE_REALAUDIO, "REALAUDIO", "(118)"},
    {FILETYPE_TTA, "TTA", "(119)"},
    {FILETYPE_DTS14LE, "DTS14LE", "(120)"},
    {FILETYPE_DTS14BE, "DTS14BE", "(121)"},
    {FILETYPE_DTS16LE, "DTS16LE", "(122)"},
    {FILETYPE_DTS16BE, "DTS16BE", "(123)"},
    {FILETYPE_WAVPACK, "WAVPACK", "(124)"},
    {FILETYPE_OPTIMFROG, "OPTIMFROG", "(125)"},
    {FILETYPE_VQ, "VQ", "(126)"},
    {FILETYPE_SHOCKWAVEMP3, "SHOCKWAVEMP3", "(127)"},
    {FILETYPE_TAK, "TAK"},
    {FILETYPE_DSDIFF, "DSDIFF"},
    {FILETYPE_DSF, "DSF"},
    {FILETYPE_WSD, "WSD"},
    {FILETYPE_AUDIO_END, "AUDIO_END", "(128)"},
    {FILETYPE_MEDIA_END, "MEDIA_END", "(129)"},
};

const TypeName* find_type(uint32_t type_code) {
    const auto* found = std::find_if(std::begin(names), std::end(names),
        [type_code](const TypeName& row) { return row.type_code == type_code; });
    return found != std::end(names) ? found : nullptr;
}

} // namespace

void FileTypeName(uint32_t type_code, char (&out)[file_type_name_size]) {
    const TypeName* row = find_type(type_code);
    if (row != nullptr && row->number != nullptr) {
        copy_text(out, "FILETYPE_");
        append_text(out, row->name);
        append_text(out, row->number);
    }
}

std::string_view type_enumerator(uint32_t type_code) {
    const TypeName* row = find_type(type_code);
    return row != nullptr ? row->name : "";
}

} // namespace zat
