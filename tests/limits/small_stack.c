/* small_stack LIBRARY FILE...: describes the files in a thread whose stack is as small as the guide
 * allows. A call that takes more ends the program. */
#include "contract/dynamic_library.h"
#include "zat/details.h"

#include <stdio.h>
#include <string.h>

#define STACK_SIZE 131072

static void(ZAT_CALL* get_details)(InfoRecord*, ZatDetails*);
static uint32_t(ZAT_CALL* report_of)(const InfoRecord*, char*, uint32_t);

static InfoRecord record;
static ZatDetails details;
static char report[65536];

static DWORD WINAPI describe(LPVOID path) {
    memset(&record, 0, sizeof record);
    strncpy(record.path, (const char*)path, sizeof record.path - 1);
    details.size = sizeof details;
    get_details(&record, &details);
    report_of(&record, report, sizeof report);
    return 0;
}

int main(int argc, char** argv) {
    int i;
    int described = 0;
    DynamicLibrary library = argc < 3 ? NULL : open_library(argv[1]);
    if (library == NULL) {
        fprintf(stderr, "small_stack: the library cannot be loaded\n");
        return 1;
    }
    *(void**)&get_details = find_symbol(library, "GetDetails");
    *(void**)&report_of = find_symbol(library, "ReFormFullBounded");
    for (i = 2; i < argc; ++i) {
        HANDLE thread = CreateThread(NULL, STACK_SIZE, describe, argv[i], STACK_SIZE_PARAM_IS_A_RESERVATION, NULL);
        if (thread == NULL || WaitForSingleObject(thread, 60000) != WAIT_OBJECT_0) {
            fprintf(stderr, "small_stack: no thread for %s\n", argv[i]);
            return 1;
        }
        CloseHandle(thread);
        described += record.type_code >= FILETYPE_MEDIA;
    }
    printf("%d files described\n", described);
    return described > 90 ? 0 : 1;
}
