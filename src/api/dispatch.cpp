#include "api/dispatch.h"

#include "audio/aac_file.h"
#include "audio/ac3_file.h"
#include "audio/aiff_file.h"
#include "audio/au_file.h"
#include "audio/cd_track_file.h"
#include "audio/dsdiff_file.h"
#include "audio/dsf_file.h"
#include "audio/dts_file.h"
#include "audio/flac_file.h"
#include "audio/midi_file.h"
#include "audio/monkey_file.h"
#include "audio/mp3_file.h"
#include "audio/musepack_file.h"
#include "audio/optimfrog_file.h"
#include "audio/tak_file.h"
#include "audio/tta_file.h"
#include "audio/wav_file.h"
#include "audio/wavpack_file.h"
#include "audio/wsd_file.h"
#include "common/details.h"
#include "common/messages.h"
#include "common/numbers.h"
#include "common/record_lines.h"
#include "container/asf.h"
#include "container/avi.h"
#include "container/flv.h"
#include "container/matroska.h"
#include "container/mp4.h"
#include "container/mpeg_ps.h"
#include "container/mpeg_ts.h"
#include "container/ogg.h"
#include "container/realaudio.h"
#include "container/realmedia.h"
#include "container/video_cd.h"
#include "detect/file_type.h"
#include "picture/bmp_file.h"
#include "picture/gif_file.h"
#include "picture/jpeg_file.h"

#include <cstddef>
#include <iterator>

namespace zat {

namespace {

using Analyser = int (*)(FileRecord* file, const Output& out);

// What an analyser's result means to the host.
enum class Result : uint8_t { unused, error_count };

struct Row {
    Analyser analyser;
    uint32_t type_code;
    Result result = Result::unused;
};

// A code without a row has no analyser: its record holds what detection wrote. Most results are not
// looked at; what an analyser could not read is missing in the record, and that says it.
constexpr Row rows[] = {
    {AnalyzeAviFile, FILETYPE_AVI},
    {AnalyzeAsfFile, FILETYPE_WMV},
    {AnalyzeMp4File, FILETYPE_QUICKTIME},
    {AnalyzeMpegTsFile, FILETYPE_MPEG2_TS},
    {AnalyzeMpegTsFile, FILETYPE_MPEG2_M2TS},
    {AnalyzeMp4File, FILETYPE_3GPP2},
    {AnalyzeMp4File, FILETYPE_MPEG4},
    {AnalyzeAacFile, FILETYPE_AAC},
    {AnalyzeOggFile, FILETYPE_OGGMEDIA},
    {AnalyzeOggFile, FILETYPE_OGGVORBIS},
    {AnalyzeOggFile, FILETYPE_OGGSPEEX},
    {AnalyzeOggFile, FILETYPE_OGGFLAC},
    {AnalyzeOggFile, FILETYPE_OGGOPUS},
    {AnalyzeWavFile, FILETYPE_WAV},
    {AnalyzeMidiFile, FILETYPE_MID},
    {AnalyzeMidiFile, FILETYPE_RMI},
    {AnalyzeAuFile, FILETYPE_AU},
    {AnalyzeAiffFile, FILETYPE_AIFF},
    {AnalyzeMp3File, FILETYPE_MP3},
    {AnalyzeMp3File, FILETYPE_SHOCKWAVEMP3},
    {AnalyzeCdTrackFile, FILETYPE_CDA},
    {AnalyzeRmp3File, FILETYPE_RMP3},
    {AnalyzeRealAudioFile, FILETYPE_REALAUDIO},
    {ac3_file, FILETYPE_AC3},
    {dts_file, FILETYPE_DTS14LE},
    {dts_file, FILETYPE_DTS14BE},
    {dts_file, FILETYPE_DTS16BE},
    {AnalyzeMatroskaFile, FILETYPE_MATROSKA},
    {AnalyzeFlacFile, FILETYPE_FLAC},
    {AnalyzeMonkeyFile, FILETYPE_MONKEY},
    {AnalyzeMusePackFile, FILETYPE_MUSEPACK},
    {AnalyzeTtaFile, FILETYPE_TTA},
    {AnalyzeOptimFrogFile, FILETYPE_OPTIMFROG},
    {AnalyzeTakFile, FILETYPE_TAK},
    {AnalyzeDsdiffFile, FILETYPE_DSDIFF},
    {AnalyzeDsfFile, FILETYPE_DSF},
    {AnalyzeWsdFile, FILETYPE_WSD},
    {AnalyzeWavPackFile, FILETYPE_WAVPACK},
    {AnalyzeFlvFile, FILETYPE_FLV},
    {AnalyzeBmpFile, FILETYPE_BMP},
    {AnalyzeJpegFile, FILETYPE_JPEG},
    {AnalyzeGifFile, FILETYPE_GIF},
    {AnalyzeProgramStreamFile, FILETYPE_MPEG1, Result::error_count},
    {AnalyzeProgramStreamFile, FILETYPE_MPEG2, Result::error_count},
    {AnalyzeVideoCdFile, FILETYPE_MPEG1VCD, Result::error_count},
    {AnalyzeProgramStreamFile, FILETYPE_MPEG, Result::error_count},
    {AnalyzeRealMediaFile, FILETYPE_REALMEDIA},
};

constexpr bool has_duplicate_codes() {
    for (size_t i = 0; i < std::size(rows); ++i) {
        for (size_t j = i + 1; j < std::size(rows); ++j) {
            if (rows[i].type_code == rows[j].type_code) {
                return true;
            }
        }
    }
    return false;
}
static_assert(!has_duplicate_codes());

} // namespace

void DispatchAnalyser(FileRecord* file, const Output& out) {
    for (const Row& row : rows) {
        if (row.type_code == out.record->type_code) {
            const int result = row.analyser(file, out);
            out.record->play_time = without_negative_zero(out.record->play_time);
            if (out.details != nullptr && out.details->format[0] == '\0') {
                copy_utf8(out.details->format, type_format(row.type_code));
            }
            if (row.result == Result::error_count && result != 0) {
                set_general_line(out.record, message::errors_found, result);
            }
            return;
        }
    }
}

} // namespace zat
