/* dump_record LIBRARY CATALOGUE FILE...: prints what the library leaves in the record of each file,
 * all bytes behind the path as a hash and the texts as hexadecimal, and both reports. The output of
 * two builds is equal when their records and reports are. */
#include "dynamic_library.h"
#include "zat/zat.h"

#include <stdio.h>
#include <string.h>

static InfoRecord record;
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

int main(int argc, char** argv) {
    int i;
    DynamicLibrary library = open_library(argv[1]);
    void(ZAT_CALL * set_path)(const char*);
    void(ZAT_CALL * get_info)(InfoRecord*);
    void(ZAT_CALL * reform_full)(const InfoRecord*, char*);
    uint32_t(ZAT_CALL * reform_full_bounded)(const InfoRecord*, char*, uint32_t);
    if (argc < 4 || library == NULL) {
        fprintf(stderr, "dump_record: the library %s cannot be loaded\n", argc > 1 ? argv[1] : "");
        return 1;
    }
    *(void**)&set_path = find_symbol(library, "SetPath");
    *(void**)&get_info = find_symbol(library, "GetInfo");
    *(void**)&reform_full = find_symbol(library, "ReFormFull");
    *(void**)&reform_full_bounded = find_symbol(library, "ReFormFullBounded");
    set_path(argv[2]);
    for (i = 3; i < argc; ++i) {
        unsigned long long value;
        memset(&record, 0, sizeof record);
        memset(record.reserved, 0xA5, sizeof record.reserved);
        memset(record.unused, 0xA5, sizeof record.unused);
        strncpy(record.path, argv[i], sizeof record.path - 1);
        get_info(&record);
        value = hash((const char*)&record + sizeof record.path, sizeof record - sizeof record.path);
        memset(report, 0, sizeof report);
        reform_full(&record, report);
        reform_full_bounded(&record, whole_report, sizeof whole_report);
        printf("%s\n  record %08lx%08lx\n  report ", argv[i], (unsigned long)(value >> 32), (unsigned long)(value & 0xFFFFFFFF));
        print_hex(report);
        printf("  whole  ");
        print_hex(whole_report);
    }
    return 0;
}
