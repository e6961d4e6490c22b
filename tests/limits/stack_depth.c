/* stack_depth LIBRARY FILE...: how much stack the library takes to describe the files. Wine gives every
 * thread a mebibyte, however small a stack is asked for: so it is painted, and looked at afterwards. */
#include "contract/dynamic_library.h"
#include "zat/details.h"

#include <stdio.h>
#include <string.h>

enum {
    painted = 512 * 1024,
    most = 120 * 1024 /* of 128 KiB, with what the start of a thread takes */
};

static void(ZAT_CALL* get_details)(InfoRecord*, ZatDetails*);
static uint32_t(ZAT_CALL* report_of)(const InfoRecord*, char*, uint32_t);

static InfoRecord record;
static ZatDetails details;
static char report[65536];

static void describe(const char* path) {
    memset(&record, 0, sizeof record);
    strncpy(record.path, path, sizeof record.path - 1);
    details.size = sizeof details;
    get_details(&record, &details);
    report_of(&record, report, sizeof report);
}

/* The lowest address of what was painted below the caller. */
static volatile unsigned char* __attribute__((noinline)) paint_stack(void) {
    volatile unsigned char bytes[painted];
    volatile unsigned char* volatile low = bytes;
    size_t i;
    for (i = 0; i < painted; ++i) {
        low[i] = 0xA5;
    }
    return low;
}

static size_t __attribute__((noinline)) depth_of(const char* path) {
    volatile unsigned char* low = paint_stack();
    size_t untouched = 0;
    describe(path);
    while (untouched < painted && low[untouched] == 0xA5) {
        ++untouched;
    }
    return painted - untouched;
}

int main(int argc, char** argv) {
    int i;
    int described = 0;
    size_t deepest = 0;
    DynamicLibrary library = argc < 3 ? NULL : open_library(argv[1]);
    if (library == NULL) {
        fprintf(stderr, "stack_depth: the library cannot be loaded\n");
        return 1;
    }
    *(void**)&get_details = find_symbol(library, "GetDetails");
    *(void**)&report_of = find_symbol(library, "ReFormFullBounded");
    for (i = 2; i < argc; ++i) {
        const size_t depth = depth_of(argv[i]);
        described += record.type_code >= FILETYPE_MEDIA;
        deepest = depth > deepest ? depth : deepest;
        if (depth > most) {
            printf("%s: %lu bytes of stack\n", argv[i], (unsigned long)depth);
        }
    }
    printf("%d files described, %lu bytes of stack at the most\n", described, (unsigned long)deepest);
    return described > 90 && deepest <= most ? 0 : 1;
}
