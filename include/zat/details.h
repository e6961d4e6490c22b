/* zat - typed details: what a report's lines say, as numbers and Unicode texts for programs.
 *
 * A host clears a ZatDetails, sets its `size` and calls GetDetails in place of GetInfo:
 *
 *     static InfoRecord record;
 *     static ZatDetails details;
 *     details.size = sizeof details;
 *     strcpy(record.path, "film.mkv");
 *     if (GetDetails(&record, &details) == 1) { ... details.streams[0].width ... }
 *
 * All texts are UTF-8, zero-terminated and never cut inside a character. What is not known is 0, an
 * empty text, or NaN where 0 is a value. A value that was measured on a part of the file, or
 * follows from an assumption, has its bit in `estimated`. The structures have the same layout on
 * every platform. Slots behind stream_count mean nothing: a call clears those it finds counted.
 */
#ifndef ZAT_DETAILS_H
#define ZAT_DETAILS_H

#include "zat/zat.h"

#define ZAT_STREAM_SLOTS 64 /* streams that are kept */

/* ZatStream.kind */
enum ZatStreamKind {
    ZAT_STREAM_VIDEO = 1,
    ZAT_STREAM_AUDIO = 2,
    ZAT_STREAM_TEXT = 3, /* subtitles and captions */
    ZAT_STREAM_DATA = 4
};

/* ZatStream.flags */
enum ZatStreamFlag {
    ZAT_FLAG_DEFAULT = 1 << 0,
    ZAT_FLAG_FORCED = 1 << 1,
    ZAT_FLAG_COMMENTARY = 1 << 2,
    ZAT_FLAG_HEARING_IMPAIRED = 1 << 3,
    ZAT_FLAG_VISUAL_IMPAIRED = 1 << 4,
    ZAT_FLAG_ENCRYPTED = 1 << 5,
    ZAT_FLAG_NO_DATA = 1 << 6, /* declared, without a packet */
    ZAT_FLAG_LOSSLESS = 1 << 7
};

/* ZatStream.estimated, ZatDetails.estimated */
enum ZatEstimated {
    ZAT_ESTIMATED_DURATION = 1 << 0,
    ZAT_ESTIMATED_BIT_RATE = 1 << 1,
    ZAT_ESTIMATED_FRAME_RATE = 1 << 2,
    ZAT_ESTIMATED_FRAMES = 1 << 3,
    ZAT_ESTIMATED_SAMPLES = 1 << 4,
    ZAT_ESTIMATED_BYTES = 1 << 5
};

enum ZatBitRateMode { ZAT_BIT_RATE_CONSTANT = 1, ZAT_BIT_RATE_VARIABLE = 2 };
enum ZatScan { ZAT_SCAN_PROGRESSIVE = 1, ZAT_SCAN_INTERLACED = 2 };
enum ZatFieldOrder { ZAT_FIELD_TOP = 1, ZAT_FIELD_BOTTOM = 2 }; /* the first field */

typedef struct ZatStream {
    uint32_t kind;             /* ZatStreamKind */
    uint32_t flags;            /* ZatStreamFlag bits */
    uint32_t estimated;        /* ZatEstimated bits */
    uint32_t bit_rate_mode;    /* ZatBitRateMode */
    uint64_t id;               /* the container's own: track number or id, PID, serial, stream id */
    double start;              /* seconds; NaN when not known */
    double duration;           /* seconds */
    uint64_t bit_rate;         /* bit/s: counted where the container counts, else claimed */
    uint64_t nominal_bit_rate; /* bit/s: a claim that differs from the counted rate */
    uint64_t bytes;            /* payload */

    /* Video. */
    double frame_rate;         /* frames, never fields, per second */
    double nominal_frame_rate; /* a declared one that differs by more than half a percent */
    uint64_t frames;           /* their number */
    uint32_t width, height;    /* pixels after cropping */
    uint32_t pixel_aspect_width, pixel_aspect_height;      /* reduced */
    uint32_t display_aspect_width, display_aspect_height;  /* reduced */
    uint32_t frame_rate_numerator, frame_rate_denominator; /* where the file has a ratio */
    uint32_t scan;                                         /* ZatScan */
    uint32_t field_order;                                  /* ZatFieldOrder */

    /* Audio. */
    uint64_t samples;     /* per channel */
    uint32_t sample_rate; /* Hz, as decoded */
    uint32_t channels;    /* as decoded */

    uint32_t bit_depth;   /* per sample or colour component, where it means something */
    uint32_t reserved[5]; /* 0 */

    char codec[32];    /* one vocabulary for all containers: "H.264", "AAC" */
    char codec_id[64]; /* the container's own: "avc1", "V_MPEG4/ISO/AVC", "0x0055" */
    char profile[32];  /* "High", "Main 10", "HE-AAC" */
    char level[16];    /* "4.1" */
    char language[32]; /* ISO 639-2 or BCP 47, as the file has it */
    char title[256];
    char encoder[128];  /* of the stream: "LAME3.100" */
    char layout[128];   /* speakers: "L R C LFE Ls Rs" */
    char chroma[16];    /* "4:2:0" */
    char primaries[32]; /* names of ITU-T H.273: "BT.2020" */
    char transfer[32];  /* "PQ", "HLG" */
    char matrix[32];
    char range[16];      /* "limited", "full" */
    char hdr[32];        /* "HDR10", "HLG", "Dolby Vision" */
    char reserved2[128]; /* empty */
} ZatStream;

typedef struct ZatDetails {
    uint32_t size;          /* in: sizeof(ZatDetails); no byte beyond it is written */
    uint32_t stream_count;  /* of the file; those beyond ZAT_STREAM_SLOTS are not kept */
    double duration;        /* seconds */
    uint64_t bit_rate;      /* bit/s of the whole file */
    uint64_t missing_bytes; /* of a truncated file */
    uint32_t chapters;      /* their number */
    uint32_t pictures;      /* covers and the like, which are no streams */
    uint32_t estimated;     /* ZatEstimated bits */
    uint32_t reserved[5];
    char format[32];         /* "Matroska" */
    char format_profile[32]; /* "OpenDML", a major brand, "SV7" */
    char title[256];
    char artist[256];
    char writer[256];    /* the program that wrote the file */
    char created[32];    /* UTC, ISO 8601: "2024-02-29T23:55:00Z" */
    char notes[256];     /* "truncated", "no index", ...: each but the first behind a newline */
    char reserved2[256]; /* empty */
    ZatStream streams[ZAT_STREAM_SLOTS]; /* in file order */
} ZatDetails;

#ifdef __cplusplus
extern "C" {
#endif

/* Does all that GetInfo does and fills the details too. Returns 1 when the file is of a known type,
 * 0 when not, and -1, without a look at the file, when details->size is less than that of the first
 * version of the structure. */
int32_t ZAT_CALL GetDetails(InfoRecord* record, ZatDetails* details);

#ifdef __cplusplus
}

static_assert(offsetof(ZatStream, codec) == 168, "ZatStream is part of the interface");
static_assert(sizeof(ZatStream) == 1144, "ZatStream is part of the interface");
static_assert(offsetof(ZatDetails, streams) == 1440, "ZatDetails is part of the interface");
static_assert(sizeof(ZatDetails) == 1440 + 64 * 1144, "ZatDetails is part of the interface");
#else
typedef char zat_assert_stream[sizeof(ZatStream) == 1144 ? 1 : -1];
typedef char zat_assert_details[sizeof(ZatDetails) == 1440 + 64 * 1144 ? 1 : -1];
#endif

#endif
