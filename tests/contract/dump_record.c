/* dump_record LIBRARY CATALOGUE FILE...: prints what the library leaves in the record and the typed
 * details of each file, all bytes as hashes and the texts in hexadecimal, and both reports. The
 * output of two builds is equal when all of it is. */
#include "dynamic_library.h"
#include "zat/details.h"

#include <stdio.h>
#include <string.h>

static InfoRecord record;
static ZatDetails details;
static char report[ZAT_REPORT_SIZE];
static char whole_report[65536];

static unsigned long long hash(const void* bytes, size_t count) {
    const unsigned char* p = (const unsigned char*)bytes;
    unsigned long long value = 14695981039346656037ULL; /* FNV-1a */
    size_t i;
    for (i = 0; i < count; ++i) {
        value = (value ^ p[i]) * 1099511628211ULL;
    }
    return value;
}

static void print_hex(const char* text) {
    for (; *text != '\0'; ++text) {
        if (*text >= ' ' && *text < 127) {
            putchar(*text);
        } else {
            printf("<%02x>", (unsigned char)*text);
        }
    }
    putchar('\n');
}

static void print_hash(const char* name, const void* bytes, size_t count) {
    const unsigned long long value = hash(bytes, count);
    printf("  %s %08lx%08lx ", name, (unsigned long)(value >> 32), (unsigned long)(value & 0xFFFFFFFF));
}

/* Hosts of other compilers keep the stack at multiples of 4 bytes, vector registers want 16. */
static void describe(void(ZAT_CALL* get_info)(InfoRecord*)) {
#ifdef __i386__
    __asm__ volatile("movl %%esp, %%esi\n\t"
                     "andl $-16, %%esp\n\t"
                     "subl $8, %%esp\n\t"
                     "pushl %1\n\t"
                     "call *%0\n\t"
                     "movl %%esi, %%esp"
                     : "+a"(get_info)
                     : "b"(&record)
                     : "ecx", "edx", "esi", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "cc", "memory");
#else
    get_info(&record);
#endif
}

static void clear_record(const char* path) {
    memset(&record, 0, sizeof record);
    memset(record.reserved, 0xA5, sizeof record.reserved);
    memset(record.unused, 0xA5, sizeof record.unused);
    strncpy(record.path, path, sizeof record.path - 1);
}

/* All but the path, which each platform may write in its own way. */
static void print_record(const char* name) {
    print_hash(name, (const char*)&record + sizeof record.path, sizeof record - sizeof record.path);
    putchar('\n');
}

/* What helps to see where two builds differ. */
static void print_details(void) {
    uint32_t i;
    print_hash("details", &details, sizeof details);
    printf("%u streams, ", details.stream_count);
    print_hex(details.format);
    for (i = 0; i < details.stream_count && i < ZAT_STREAM_SLOTS; ++i) {
        const ZatStream* stream = &details.streams[i];
        print_hash("stream ", stream, sizeof *stream);
        printf("%u %ux%u %u Hz %u ch ", stream->kind, stream->width, stream->height, stream->sample_rate, stream->channels);
        print_hex(stream->codec);
    }
}

int main(int argc, char** argv) {
    int i;
    DynamicLibrary library = open_library(argv[1]);
    void(ZAT_CALL * set_path)(const char*);
    void(ZAT_CALL * get_info)(InfoRecord*);
    int32_t(ZAT_CALL * get_details)(InfoRecord*, ZatDetails*);
    void(ZAT_CALL * reform_full)(const InfoRecord*, char*);
    uint32_t(ZAT_CALL * reform_full_bounded)(const InfoRecord*, char*, uint32_t);
    if (argc < 4 || library == NULL) {
        fprintf(stderr, "dump_record: the library %s cannot be loaded\n", argc > 1 ? argv[1] : "");
        return 1;
    }
    *(void**)&set_path = find_symbol(library, "SetPath");
    *(void**)&get_info = find_symbol(library, "GetInfo");
    *(void**)&get_details = find_symbol(library, "GetDetails");
    *(void**)&reform_full = find_symbol(library, "ReFormFull");
    *(void**)&reform_full_bounded = find_symbol(library, "ReFormFullBounded");
    set_path(argv[2]);
    for (i = 3; i < argc; ++i) {
        clear_record(argv[i]);
        describe(get_info);
        memset(report, 0, sizeof report);
        reform_full(&record, report);
        reform_full_bounded(&record, whole_report, sizeof whole_report);
        printf("%s\n", argv[i]);
        print_record("record");
        printf("  report ");
        print_hex(report);
        printf("  whole  ");
        print_hex(whole_report);
        clear_record(argv[i]);
        details.size = sizeof details;
        get_details(&record, &details);
        print_record("same  ");
        print_details();
    }
    return 0;
}
