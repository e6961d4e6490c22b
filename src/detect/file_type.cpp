#include "detect/file_type.h"

#include "common/bytes/tables.h"
#include "common/text/text.h"
#include "zat/zat.h"

namespace zat {

namespace {

struct TypeName {
    uint32_t type_code;
    const char* name;             // of the enumerator, behind its prefix
    const char* number = nullptr; // behind the traced name; null for a code that traces none
    const char* format = "";      // of the files
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
    {FILETYPE_AVI, "AVI", "(12)", "AVI"},
    {FILETYPE_MPEG1, "MPEG1", "(13)", "MPEG-PS"},
    {FILETYPE_MPEG1VCD, "MPEG1VCD", "(14)", "VideoCD"},
    {FILETYPE_QUICKTIME, "QUICKTIME", "(15)", "QuickTime"},
    {FILETYPE_OGGMEDIA, "OGGMEDIA", "(16)", "Ogg"},
    {FILETYPE_MPEG2, "MPEG2", "(17)", "MPEG-PS"},
    {FILETYPE_MPEG2_TS, "MPEG2_TS", "(18)", "MPEG-TS"},
    {FILETYPE_MPEG2_M2TS, "MPEG2_M2TS", "(192)(19)", "MPEG-TS"},
    {FILETYPE_WMV, "WMV", "", "ASF"},
    {FILETYPE_REALMEDIA, "REALMEDIA", "", "RealMedia"},
    {FILETYPE_3GPP, "3GPP", "", "MP4"},
    {FILETYPE_3GPP2, "3GPP2", "", "MP4"},
    {FILETYPE_MPEG4, "MPEG4", "", "MP4"},
    {FILETYPE_AMC, "AMC", ""},
    {FILETYPE_MATROSKA, "MATROSKA", "", "Matroska"},
    {FILETYPE_MPEG, "MPEG", "", "MPEG video"},
    {FILETYPE_FLV, "FLV", "", "FLV"},
    {FILETYPE_GRAPHIC, "GRAPHIC", ""},
    {FILETYPE_BMP, "BMP", "", "BMP"},
    {FILETYPE_JPEG, "JPEG", "", "JPEG"},
    {FILETYPE_GIF, "GIF", "", "GIF"},
    {FILETYPE_GRAPHIC_END, "GRAPHIC_END", ""},
    {FILETYPE_VIDEO_AUDIO_END, "VIDEO_AUDIO_END", ""},
    {FILETYPE_AUDIO, "AUDIO", "(100)"},
    {FILETYPE_WAV, "WAV", "(101)", "WAV"},
    {FILETYPE_MID, "MID", "(102)", "MIDI"},
    {FILETYPE_RMI, "RMI", "(103)", "MIDI"},
    {FILETYPE_AU, "AU", "(104)", "AU"},
    {FILETYPE_AIFF, "AIFF", "(105)", "AIFF"},
    {FILETYPE_MP3, "MP3", "(106)", "MPEG audio"},
    {FILETYPE_CDA, "CDA", "(107)", "CD audio track"},
    {FILETYPE_RMP3, "RMP3", "(108)", "RMP3"},
    {FILETYPE_OGGVORBIS, "OGGVORBIS", "(109)", "Ogg"},
    {FILETYPE_OGGSPEEX, "OGGSPEEX", "(110)", "Ogg"},
    {FILETYPE_OGGFLAC, "OGGFLAC", "(111)", "Ogg"},
    {FILETYPE_OGGOPUS, "OGGOPUS", "(112)", "Ogg"},
    {FILETYPE_WMA, "WMA", "(112)", "ASF"},
    {FILETYPE_AC3, "AC3", "(113)", "AC-3"},
    {FILETYPE_MONKEY, "MONKEY", "(114)", "Monkey's Audio"},
    {FILETYPE_MUSEPACK, "MUSEPACK", "(115)", "Musepack"},
    {FILETYPE_FLAC, "FLAC", "(116)", "FLAC"},
    {FILETYPE_AAC, "AAC", "(117)", "MP4"},
    {FILETYPE_REALAUDIO, "REALAUDIO", "(118)", "RealAudio"},
    {FILETYPE_TTA, "TTA", "(119)", "TTA"},
    {FILETYPE_DTS14LE, "DTS14LE", "(120)", "DTS"},
    {FILETYPE_DTS14BE, "DTS14BE", "(121)", "DTS"},
    {FILETYPE_DTS16LE, "DTS16LE", "(122)", "DTS"},
    {FILETYPE_DTS16BE, "DTS16BE", "(123)", "DTS"},
    {FILETYPE_WAVPACK, "WAVPACK", "(124)", "WavPack"},
    {FILETYPE_OPTIMFROG, "OPTIMFROG", "(125)", "OptimFROG"},
    {FILETYPE_VQ, "VQ", "(126)"},
    {FILETYPE_SHOCKWAVEMP3, "SHOCKWAVEMP3", "(127)", "MPEG audio"},
    {FILETYPE_TAK, "TAK", nullptr, "TAK"},
    {FILETYPE_DSDIFF, "DSDIFF", nullptr, "DSDIFF"},
    {FILETYPE_DSF, "DSF", nullptr, "DSF"},
    {FILETYPE_WSD, "WSD", nullptr, "WSD"},
    {FILETYPE_AUDIO_END, "AUDIO_END", "(128)"},
    {FILETYPE_MEDIA_END, "MEDIA_END", "(129)"},
};

const TypeName* find_type(uint32_t type_code) {
    return find_row(names, &TypeName::type_code, type_code);
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

std::string_view type_format(uint32_t type_code) {
    const TypeName* row = find_type(type_code);
    return row != nullptr ? row->format : "";
}

} // namespace zat
