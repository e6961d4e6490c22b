/* zat - media-file information: the public interface, for C and C++ hosts.
 *
 * A host
 *   1. calls SetPath once with the directory of the codec name catalogue, ending in a separator;
 *   2. clears an InfoRecord to zero, writes a path into it and calls GetInfo;
 *   3. reads the record, or lets ReFormFull render it as a report.
 *
 * Encodings. The path is in the system's 8-bit encoding (Windows: the ANSI code page; elsewhere:
 * the bytes of the file name). Texts that the library writes are ASCII, except its own messages,
 * which are Shift-JIS (code page 932); texts taken from a file keep the file's bytes.
 *
 * Threads. Calls on different records may run on different threads. SetPath changes what they all
 * depend on, without a lock: no other thread may be inside the library meanwhile.
 *
 * The library only reads files, and keeps none open between calls. No call raises; a failure shows
 * as a type code and a general line in the record.
 */
#ifndef ZAT_ZAT_H
#define ZAT_ZAT_H

#include <stddef.h>
#include <stdint.h>

/* 32-bit Windows: the exports are stdcall under undecorated names. Elsewhere: the C convention. */
#if defined(_WIN32) && !defined(_WIN64)
#define ZAT_CALL __stdcall
#else
#define ZAT_CALL
#endif

#define ZAT_LINE_SIZE 512 /* bytes of a line, its terminator included */
#define ZAT_LINE_COUNT 10 /* lines of each kind of stream */
#define ZAT_LABEL_SIZE 32 /* bytes of the label, its terminator included */

/* The buffer that ReFormFull needs: a body of 1,024 bytes, the summary and the marker. */
#define ZAT_REPORT_SIZE 2048

#ifdef __cplusplus
extern "C" {
#endif

/* What a file is. Codes below 10 are refusals; GetFileFormat yields the codes marked with +. */
enum ZatFileType {
    FILETYPE_ERROR = 0,       /* + nothing could be read */
    FILETYPE_UNKNOWN = 1,     /* + unknown or refused */
    FILETYPE_OPENFAILED = 2,  /* + could not be opened, or no regular file */
    FILETYPE_PATHTOOLONG = 3, /* + path of more than 512 bytes */
    FILETYPE_ERROR_END = 4,   /* end of the error range */
    FILETYPE_MEDIA = 10,      /* start of the media range */
    FILETYPE_VIDEO_AUDIO = 11,
    FILETYPE_AVI = 12,        /* + */
    FILETYPE_MPEG1 = 13,      /* + MPEG-1 program stream */
    FILETYPE_MPEG1VCD = 14,   /* + VideoCD (RIFF CDXA) */
    FILETYPE_QUICKTIME = 15,  /* + */
    FILETYPE_OGGMEDIA = 16,   /* + Ogg with OGM stream headers */
    FILETYPE_MPEG2 = 17,      /* + MPEG-2 program stream */
    FILETYPE_MPEG2_TS = 18,   /* + transport stream, 188-byte packets */
    FILETYPE_MPEG2_M2TS = 19, /* + transport stream, 192-byte packets */
    FILETYPE_WMV = 20,        /* + ASF */
    FILETYPE_REALMEDIA = 21,  /* + */
    FILETYPE_3GPP = 22,
    FILETYPE_3GPP2 = 23, /* + */
    FILETYPE_MPEG4 = 24, /* + */
    FILETYPE_AMC = 25,
    FILETYPE_MATROSKA = 26, /* + */
    FILETYPE_MPEG = 27,     /* + MPEG elementary stream */
    FILETYPE_FLV = 28,      /* + */
    FILETYPE_GRAPHIC = 50,  /* start of the picture range */
    FILETYPE_BMP = 51,      /* + */
    FILETYPE_JPEG = 52,     /* + */
    FILETYPE_GIF = 53,      /* + */
    FILETYPE_GRAPHIC_END = 54,
    FILETYPE_VIDEO_AUDIO_END = 55,
    FILETYPE_AUDIO = 100,     /* start of the audio range */
    FILETYPE_WAV = 101,       /* + */
    FILETYPE_MID = 102,       /* + MIDI */
    FILETYPE_RMI = 103,       /* + RIFF MIDI */
    FILETYPE_AU = 104,        /* + */
    FILETYPE_AIFF = 105,      /* + */
    FILETYPE_MP3 = 106,       /* + MPEG audio */
    FILETYPE_CDA = 107,       /* + CD audio track */
    FILETYPE_RMP3 = 108,      /* + RIFF-wrapped MP3 */
    FILETYPE_OGGVORBIS = 109, /* + */
    FILETYPE_OGGSPEEX = 110,  /* + */
    FILETYPE_OGGFLAC = 111,   /* + */
    FILETYPE_OGGOPUS = 112,   /* + */
    FILETYPE_WMA = 113,
    FILETYPE_AC3 = 114,       /* + raw AC-3, TrueHD and MLP */
    FILETYPE_MONKEY = 115,    /* + */
    FILETYPE_MUSEPACK = 116,  /* + */
    FILETYPE_FLAC = 117,      /* + */
    FILETYPE_AAC = 118,       /* + AAC, raw or in an MP4 file */
    FILETYPE_REALAUDIO = 119, /* + */
    FILETYPE_TTA = 120,       /* + */
    FILETYPE_DTS14LE = 121,   /* + words of 14 bits */
    FILETYPE_DTS14BE = 122,   /* + */
    FILETYPE_DTS16LE = 123,   /* + */
    FILETYPE_DTS16BE = 124,   /* + */
    FILETYPE_WAVPACK = 125,   /* + */
    FILETYPE_OPTIMFROG = 126, /* + */
    FILETYPE_VQ = 127,
    FILETYPE_SHOCKWAVEMP3 = 128, /* + length-prefixed MP3 */
    FILETYPE_TAK = 129,          /* + */
    FILETYPE_DSDIFF = 130,       /* + */
    FILETYPE_DSF = 131,          /* + */
    FILETYPE_WSD = 132,          /* + */
    FILETYPE_AUDIO_END = 133,
    FILETYPE_MEDIA_END = 134
};

/* The record that crosses the interface: 17,624 bytes, little-endian, the same on every platform.
 * The host owns it and clears it to zero before the first call. Lines are zero-terminated texts of
 * at most 511 bytes; a count says how many slots of its array are valid. */
typedef struct InfoRecord {
    char path[ZAT_LINE_SIZE];       /* in: the file to examine */
    uint32_t type_code;             /* out: a ZatFileType */
    char label[ZAT_LABEL_SIZE];     /* out: short container label */
    char general[2][ZAT_LINE_SIZE]; /* out: general lines, refusals among them */
    int32_t general_count;
    uint8_t reserved[128];                     /* never read or written */
    char video[ZAT_LINE_COUNT][ZAT_LINE_SIZE]; /* out: one line per video stream */
    int32_t video_count;
    char audio[ZAT_LINE_COUNT][ZAT_LINE_SIZE]; /* out: one line per audio stream */
    int32_t audio_count;
    char extra_info[ZAT_LINE_SIZE];            /* out: free text; empty when there is none */
    char extra[ZAT_LINE_COUNT][ZAT_LINE_SIZE]; /* out: lines for further facts and streams */
    int32_t extra_count;
    uint8_t unused[4]; /* never read or written */
    double play_time;  /* out: seconds; may be negative or not finite */
    /* in: bit 0: walk the whole file where that makes the answer exact; bit 1: also to count
     * errors, in program streams. 0 for a host without wishes. */
    uint32_t options;
    uint32_t scan_budget; /* in/out: bytes that may be scanned, 0 for the usual number */
    uint64_t data_size;   /* out: payload bytes, where known */
    uint64_t file_size;   /* out: bytes; 0 for a file that does not open */
} InfoRecord;

/* Do nothing; kept for the interface. */
void ZAT_CALL Init(void);
void ZAT_CALL InitFree(void);
void ZAT_CALL GetDllComment(char* text);
void ZAT_CALL _GetFileFormat(void* unused);
int32_t ZAT_CALL DllEntryPoint(void* module, uint32_t reason, void* reserved); /* always 1 */

/* The build number, 161225. */
int32_t ZAT_CALL GetDllVersion(void);

/* 0: all texts of the interface are 8-bit. */
int32_t ZAT_CALL Unicode(void);

/* Sets the directory of "zat-codec.ini", its last separator included; cut at 511 bytes. */
void ZAT_CALL SetPath(const char* directory);

/* Detection only: fills the type code, the general lines and the file size. */
void ZAT_CALL GetFileFormat(InfoRecord* record);

/* Detection and then the analyser for the type that was found. */
void ZAT_CALL GetInfo(InfoRecord* record);

/* Writes the record as a report into a buffer of at least ZAT_REPORT_SIZE bytes. The report's body
 * holds at most 1,023 bytes: whole lines are left out from the first one that does not fit. */
void ZAT_CALL ReFormFull(const InfoRecord* record, char* out);

/* The whole report, without that limit, cut to `size` bytes, terminator included. Returns the
 * length of the whole report without its terminator; `out` may be null when `size` is 0. */
uint32_t ZAT_CALL ReFormFullBounded(const InfoRecord* record, char* out, uint32_t size);

/* Writes the name of a ZatFileType without its prefix ("MATROSKA"), empty for other numbers, cut to
 * `size` bytes, terminator included. Returns the length of the whole name without its terminator;
 * `out` may be null when `size` is 0. No name is longer than 31 bytes. */
uint32_t ZAT_CALL GetTypeName(uint32_t type_code, char* out, uint32_t size);

#ifdef __cplusplus
}

static_assert(offsetof(InfoRecord, play_time) == 17592, "InfoRecord is part of the interface");
static_assert(offsetof(InfoRecord, file_size) == 17616, "InfoRecord is part of the interface");
static_assert(sizeof(InfoRecord) == 17624, "InfoRecord is part of the interface");
#else
typedef char zat_assert_play_time[offsetof(InfoRecord, play_time) == 17592 ? 1 : -1];
typedef char zat_assert_file_size[offsetof(InfoRecord, file_size) == 17616 ? 1 : -1];
typedef char zat_assert_size[sizeof(InfoRecord) == 17624 ? 1 : -1];
#endif

#endif
