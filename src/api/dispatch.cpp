#include "api/dispatch.h"

#include "audio/framed/aac_file.h"
#include "audio/framed/ac3_file.h"
#include "audio/framed/dts_file.h"
#include "audio/framed/mp3_file.h"
#include "audio/framed/rmp3_file.h"
#include "audio/lossless/dsdiff_file.h"
#include "audio/lossless/dsf_file.h"
#include "audio/lossless/flac_file.h"
#include "audio/lossless/monkey_file.h"
#include "audio/lossless/musepack_file.h"
#include "audio/lossless/optimfrog_file.h"
#include "audio/lossless/tak_file.h"
#include "audio/lossless/tta_file.h"
#include "audio/lossless/wavpack_file.h"
#include "audio/lossless/wsd_file.h"
#include "audio/midi/midi_file.h"
#include "audio/sound/aiff_file.h"
#include "audio/sound/au_file.h"
#include "audio/sound/cd_track_file.h"
#include "audio/sound/wav_file.h"
#include "common/bytes/numbers.h"
#include "common/bytes/tables.h"
#include "common/record/details.h"
#include "common/record/output.h"
#include "common/record/record_lines.h"
#include "common/text/messages.h"
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
#include "detect/driver.h"
#include "detect/file_type.h"
#include "picture/bmp_file.h"
#include "picture/gif_file.h"
#include "picture/jpeg_file.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace zat {

namespace {

using Analyser = int (*)(FileRecord* file, const Output& out);

// What an analyser's result other than 0 means: nothing to the host, a number of errors, or that a
// file with a letter G here and there was taken for a transport stream.
enum class Result : uint8_t { unused, error_count, no_packets };

// What a call without options may read of a file, detection included; docs/host-guide.md promises
// it. Structures that a decoder needs stand in few places; tables that are summed, and what stands
// between the media, take more.
constexpr FileWork headers = {4096, 24LL << 20};
constexpr FileWork tables = {8192, 64LL << 20};
// Fragments of a movie stand between its media, a read each: hours of them are true files.
constexpr FileWork fragments = {32768, 64LL << 20};

struct Row {
    Analyser analyser;
    FileWork limit;
    uint32_t type_code;
    Result result = Result::unused;
};

// A code without a row has no analyser: its record holds what detection wrote. Most results are not
// looked at; what an analyser could not read is missing in the record, and that says it.
constexpr Row rows[] = {
    {AnalyzeAviFile, tables, FILETYPE_AVI},
    {AnalyzeAsfFile, tables, FILETYPE_WMV},
    {AnalyzeMp4File, fragments, FILETYPE_QUICKTIME},
    {AnalyzeMpegTsFile, headers, FILETYPE_MPEG2_TS, Result::no_packets},
    {AnalyzeMpegTsFile, headers, FILETYPE_MPEG2_M2TS, Result::no_packets},
    {AnalyzeMp4File, fragments, FILETYPE_3GPP2},
    {AnalyzeMp4File, fragments, FILETYPE_MPEG4},
    {AnalyzeAacFile, headers, FILETYPE_AAC},
    {AnalyzeOggFile, headers, FILETYPE_OGGMEDIA},
    {AnalyzeOggFile, headers, FILETYPE_OGGVORBIS},
    {AnalyzeOggFile, headers, FILETYPE_OGGSPEEX},
    {AnalyzeOggFile, headers, FILETYPE_OGGFLAC},
    {AnalyzeOggFile, headers, FILETYPE_OGGOPUS},
    {AnalyzeWavFile, headers, FILETYPE_WAV},
    {AnalyzeMidiFile, headers, FILETYPE_MID},
    {AnalyzeMidiFile, headers, FILETYPE_RMI},
    {AnalyzeAuFile, headers, FILETYPE_AU},
    {AnalyzeAiffFile, headers, FILETYPE_AIFF},
    {AnalyzeMp3File, headers, FILETYPE_MP3},
    {AnalyzeMp3File, headers, FILETYPE_SHOCKWAVEMP3},
    {AnalyzeCdTrackFile, headers, FILETYPE_CDA},
    {AnalyzeRmp3File, headers, FILETYPE_RMP3},
    {AnalyzeRealAudioFile, headers, FILETYPE_REALAUDIO},
    {ac3_file, headers, FILETYPE_AC3},
    {dts_file, headers, FILETYPE_DTS14LE},
    {dts_file, headers, FILETYPE_DTS14BE},
    {dts_file, headers, FILETYPE_DTS16BE},
    {AnalyzeMatroskaFile, tables, FILETYPE_MATROSKA},
    {AnalyzeFlacFile, headers, FILETYPE_FLAC},
    {AnalyzeMonkeyFile, headers, FILETYPE_MONKEY},
    {AnalyzeMusePackFile, headers, FILETYPE_MUSEPACK},
    {AnalyzeTtaFile, headers, FILETYPE_TTA},
    {AnalyzeOptimFrogFile, headers, FILETYPE_OPTIMFROG},
    {AnalyzeTakFile, headers, FILETYPE_TAK},
    {AnalyzeDsdiffFile, headers, FILETYPE_DSDIFF},
    {AnalyzeDsfFile, headers, FILETYPE_DSF},
    {AnalyzeWsdFile, headers, FILETYPE_WSD},
    {AnalyzeWavPackFile, headers, FILETYPE_WAVPACK},
    {AnalyzeFlvFile, tables, FILETYPE_FLV},
    {AnalyzeBmpFile, headers, FILETYPE_BMP},
    {AnalyzeJpegFile, headers, FILETYPE_JPEG},
    {AnalyzeGifFile, headers, FILETYPE_GIF},
    {AnalyzeProgramStreamFile, headers, FILETYPE_MPEG1, Result::error_count},
    {AnalyzeProgramStreamFile, headers, FILETYPE_MPEG2, Result::error_count},
    {AnalyzeVideoCdFile, headers, FILETYPE_MPEG1VCD, Result::error_count},
    {AnalyzeProgramStreamFile, headers, FILETYPE_MPEG, Result::error_count},
    {AnalyzeRealMediaFile, headers, FILETYPE_REALMEDIA},
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

// A host that wants all of a file counted says with the scan budget where that ends; without
// options the budget comes on top.
FileWork limit_of(const InfoRecord& record, const FileWork& usual) {
    constexpr int64_t bytes_per_read = 512; // the least that an analyser reads in vain
    const int64_t budget = record.scan_budget;
    if ((record.options & (option_thorough | option_check)) == 0) {
        return {usual.reads + budget / bytes_per_read, usual.bytes + budget};
    }
    return budget == 0 ? unlimited_work
                       : FileWork{std::max(usual.reads, budget / bytes_per_read),
                             std::max(usual.bytes, budget)};
}

const Row* row_of(uint32_t type_code) {
    return find_row(rows, &Row::type_code, type_code);
}

void analyse(const Row* row, FileRecord* file, const Output& out) {
    file->limit = limit_of(*out.record, row->limit);
    file->exhausted = false;
    int result = row->analyser(file, out);
    if (row->result == Result::no_packets && result != 0) { // the code stays, as detection gave it
        row = row_of(type_without_packets(file));
        result = row != nullptr ? row->analyser(file, out) : 0;
    }
    if (file->exhausted) {
        note_work_limit(out.details);
    }
    out.record->play_time = without_negative_zero(out.record->play_time);
    if (result != 0 && row->result == Result::error_count) {
        set_general_line(out.record, message::errors_found, result);
    }
}

} // namespace

void DispatchAnalyser(FileRecord* file, const Output& out) {
    if (const Row* row = row_of(out.record->type_code); row != nullptr) {
        analyse(row, file, out);
    }
    if (out.details != nullptr && out.details->format[0] == '\0') {
        copy_utf8(out.details->format, type_format(out.record->type_code));
    }
}

} // namespace zat
