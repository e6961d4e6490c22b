/* A 32-bit host as the interface was made for: it loads the DLL, finds the undecorated names, and
 * calls each as stdcall. contract_host DLL SAMPLE prints what is broken and fails. */
#include "dynamic_library.h"
#include "zat/details.h"

#include <stdio.h>
#include <string.h>

static int failures;

static void expect(int condition, const char* what) {
    if (!condition) {
        printf("broken: %s\n", what);
        ++failures;
    }
}

static DynamicLibrary library;

/* The callee removes its arguments: the stack pointer is the same before and after. */
#ifdef __i386__
#define STACK_POINTER(value) __asm__ volatile("movl %%esp, %0" : "=r"(value))
#else
#define STACK_POINTER(value) ((value) = NULL)
#endif
#define CALL(call)                                                                                                               \
    do {                                                                                                                         \
        void *before, *after;                                                                                                    \
        STACK_POINTER(before);                                                                                                   \
        call;                                                                                                                    \
        STACK_POINTER(after);                                                                                                    \
        expect(before == after, "stack after " #call);                                                                           \
    } while (0)

static void* find(const char* name) {
    void* found = find_symbol(library, name);
    if (found == NULL) {
        printf("broken: no export %s\n", name);
        ++failures;
    }
    return found;
}

/* Guarded on both sides, so that a write outside shows. */
static struct {
    unsigned char before[64];
    InfoRecord record;
    unsigned char after[64];
} guarded;

static struct {
    ZatDetails details;
    unsigned char after[64];
} guarded_details;

static int all(const unsigned char* bytes, size_t count, unsigned char value) {
    size_t i;
    for (i = 0; i < count && bytes[i] == value; ++i) {
    }
    return i == count;
}

int main(int argc, char** argv) {
    int32_t(ZAT_CALL * entry)(void*, uint32_t, void*);
    int32_t(ZAT_CALL * version)(void);
    int32_t(ZAT_CALL * unicode)(void);
    void(ZAT_CALL * init)(void);
    void(ZAT_CALL * init_free)(void);
    void(ZAT_CALL * comment)(char*);
    void(ZAT_CALL * set_path)(const char*);
    void(ZAT_CALL * nothing)(void*);
    void(ZAT_CALL * get_file_format)(InfoRecord*);
    void(ZAT_CALL * get_info)(InfoRecord*);
    uint32_t(ZAT_CALL * get_type_name)(uint32_t, char*, uint32_t);
    int32_t(ZAT_CALL * get_details)(InfoRecord*, ZatDetails*);
    void(ZAT_CALL * reform_full)(const InfoRecord*, char*);
    uint32_t(ZAT_CALL * reform_full_bounded)(const InfoRecord*, char*, uint32_t);
    static char report[ZAT_REPORT_SIZE];
    static char text[16] = "untouched";
    InfoRecord* record = &guarded.record;
    static InfoRecord untouched;
    static InfoRecord described;
    int32_t result = 0;
    uint32_t length = 0;

    if (argc != 3 || (library = open_library(argv[1])) == NULL) {
        printf("broken: the library does not load\n");
        return 1;
    }
    *(void**)&entry = find("DllEntryPoint");
    *(void**)&version = find("GetDllVersion");
    *(void**)&unicode = find("Unicode");
    *(void**)&init = find("Init");
    *(void**)&init_free = find("InitFree");
    *(void**)&comment = find("GetDllComment");
    *(void**)&set_path = find("SetPath");
    *(void**)&nothing = find("_GetFileFormat");
    *(void**)&get_file_format = find("GetFileFormat");
    *(void**)&get_info = find("GetInfo");
    *(void**)&get_type_name = find("GetTypeName");
    *(void**)&get_details = find("GetDetails");
    *(void**)&reform_full = find("ReFormFull");
    *(void**)&reform_full_bounded = find("ReFormFullBounded");
    if (failures != 0) {
        return 1;
    }

    CALL(init());
    CALL(result = version());
    expect(result == 161225, "GetDllVersion");
    CALL(result = unicode());
    expect(result == 0, "Unicode");
    CALL(result = entry(NULL, 99, NULL));
    expect(result == 1, "DllEntryPoint");
    CALL(comment(text));
    expect(strcmp(text, "untouched") == 0, "GetDllComment writes");
    CALL(set_path(""));
    CALL(length = get_type_name(FILETYPE_MATROSKA, text, 5));
    expect(length == 8 && strcmp(text, "MATR") == 0, "GetTypeName");

    memset(&guarded, 0, sizeof guarded);
    memset(guarded.before, 0x5A, sizeof guarded.before);
    memset(guarded.after, 0x5A, sizeof guarded.after);
    memset(record->reserved, 0xA5, sizeof record->reserved);
    memset(record->unused, 0xA5, sizeof record->unused);
    strncpy(record->path, argv[2], sizeof record->path - 1);
    untouched = *record;
    CALL(nothing(record));
    expect(memcmp(&untouched, record, sizeof untouched) == 0, "_GetFileFormat writes");
    CALL(get_file_format(record));
    expect(record->type_code == FILETYPE_MP3, "GetFileFormat: type of the sample");
    expect(record->file_size > 0 && record->audio_count == 0, "GetFileFormat: detection only");
    CALL(get_info(record));
    expect(record->audio_count == 1 && strncmp(record->audio[0], "MPEG", 4) == 0, "GetInfo: line");
    expect(record->play_time > 0, "GetInfo: play time");
    expect(strcmp(record->path, argv[2]) == 0, "the path changed");
    expect(all(record->reserved, sizeof record->reserved, 0xA5), "the reserved area was written");
    expect(all(record->unused, sizeof record->unused, 0xA5), "the unused area was written");
    expect(all(guarded.before, sizeof guarded.before, 0x5A) && all(guarded.after, sizeof guarded.after, 0x5A),
        "written outside the record");

    described = *record;
    *record = untouched;
    memset(&guarded_details, 0x5A, sizeof guarded_details);
    guarded_details.details.size = sizeof guarded_details.details - 1;
    CALL(result = get_details(record, &guarded_details.details));
    expect(result == -1, "GetDetails: a structure that is too small");
    expect(memcmp(&untouched, record, sizeof untouched) == 0, "GetDetails: the refused record was written");
    expect(all((unsigned char*)&guarded_details + 4, sizeof guarded_details - 4, 0x5A), "GetDetails: refused, but written");
    guarded_details.details.size = sizeof guarded_details.details;
    CALL(result = get_details(record, &guarded_details.details));
    expect(result == 1, "GetDetails");
    expect(memcmp(&described, record, sizeof described) == 0, "GetDetails: the record differs from GetInfo's");
    /* 231 frames of 1,152 samples at 44,100 Hz. */
    expect(guarded_details.details.duration > 6.034 && guarded_details.details.duration < 6.035, "GetDetails: duration");
    expect(guarded_details.details.size == sizeof guarded_details.details, "GetDetails: the size changed");
    expect(all(guarded_details.after, sizeof guarded_details.after, 0x5A), "GetDetails: written outside the structure");

    CALL(reform_full(record, report));
    expect(strstr(report, "Byte ") != NULL && strstr(report, "sec)\r\n") != NULL, "ReFormFull");
    CALL(length = reform_full_bounded(record, text, sizeof text));
    expect(length == strlen(report) && strlen(text) == sizeof text - 1, "ReFormFullBounded");
    CALL(init_free());

    printf(failures == 0 ? "the interface holds\n" : "the interface is broken\n");
    return failures != 0;
}
