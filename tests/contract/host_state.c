/* host_state LIBRARY CATALOGUE FILE...: loading, calling and freeing the library leaves the host as it
 * was. Prints what was changed or leaked, and fails. */
#include "dynamic_library.h"
#include "zat/details.h"

#include <fenv.h>
#include <locale.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#ifdef _WIN32
#define close_library(library) FreeLibrary(library)
#define is_loaded(path) (GetModuleHandleA(path) != NULL)
#else
#include <dirent.h>
#include <unistd.h>
#define close_library(library) dlclose(library)
#define is_loaded(path) (dlopen(path, RTLD_NOW | RTLD_NOLOAD) != NULL)
#endif

/* A library without a heap of its own leaks none; what is left are the caches of loader and system. */
enum { warm_up = 50, loads = 1000, tolerated_bytes = 256 * 1024 };

typedef struct {
    char directory[1024];
    char locale[256];
    int rounding;
    unsigned x87_control; /* precision, rounding and masks of exceptions */
    unsigned sse_control; /* without the flags of exceptions that arose */
    long output_position;
#ifdef _WIN32
    unsigned error_mode;
    HANDLE output;
    unsigned code_page;
#endif
} HostState;

static HostState host_state(void) {
    HostState state;
    unsigned short x87 = 0;
    memset(&state, 0, sizeof state);
    __asm__ volatile("fnstcw %0" : "=m"(x87));
    __asm__ volatile("stmxcsr %0" : "=m"(state.sse_control));
    state.x87_control = x87;
    state.sse_control &= ~0x3FU;
    state.rounding = fegetround();
    strncpy(state.locale, setlocale(LC_ALL, NULL), sizeof state.locale - 1);
    fflush(stdout);
    state.output_position = ftell(stdout);
#ifdef _WIN32
    GetCurrentDirectoryA(sizeof state.directory, state.directory);
    state.error_mode = GetErrorMode();
    state.output = GetStdHandle(STD_OUTPUT_HANDLE);
    state.code_page = GetConsoleOutputCP();
#else
    if (getcwd(state.directory, sizeof state.directory) == NULL) {
        state.directory[0] = '\0';
    }
#endif
    return state;
}

/* Anything but what a program starts with. */
static void make_state_unusual(void) {
    /* Rounding up, 53 bits of precision, and exceptions that stop the program where a number is divided
     * by zero, is none or becomes too large: compilers set these by themselves. */
    unsigned short x87 = 0x0A72;
    unsigned sse = 0x5900;
    setlocale(LC_ALL, "ja_JP.UTF-8");
    __asm__ volatile("fldcw %0" : : "m"(x87));
    __asm__ volatile("ldmxcsr %0" : : "m"(sse));
#ifdef _WIN32
    SetErrorMode(SEM_NOOPENFILEERRORBOX);
#endif
}

/* Where the system does not count them, the number of a new one: the first that is free. */
static unsigned long open_handles(void) {
#ifdef _WIN32
    DWORD count = 0;
    if (!GetProcessHandleCount(GetCurrentProcess(), &count) || count == 0) {
        const HANDLE event = CreateEventA(NULL, FALSE, FALSE, NULL);
        count = (DWORD)(ULONG_PTR)event;
        CloseHandle(event);
    }
    return count;
#else
    unsigned long count = 0;
    DIR* directory = opendir("/proc/self/fd");
    while (directory != NULL && readdir(directory) != NULL) {
        ++count;
    }
    closedir(directory);
    return count;
#endif
}

/* Committed memory that is the process's own and no program file. */
static long long private_bytes(void) {
    long long bytes = 0;
#ifdef _WIN32
    MEMORY_BASIC_INFORMATION region;
    const char* at = NULL;
    for (; VirtualQuery(at, &region, sizeof region) != 0; at = (const char*)region.BaseAddress + region.RegionSize) {
        bytes += region.State == MEM_COMMIT && region.Type == MEM_PRIVATE ? (long long)region.RegionSize : 0;
    }
#else
    FILE* file = fopen("/proc/self/statm", "r"); /* in pages, the sixth is data and stack */
    if (file == NULL || fscanf(file, "%*d %*d %*d %*d %*d %lld", &bytes) != 1) {
        bytes = 0;
    }
    fclose(file);
    bytes *= sysconf(_SC_PAGESIZE);
#endif
    return bytes;
}

/* Appends the reports of all files to `said`. */
static int use_library(char** arguments, char* said, size_t size) {
    static InfoRecord record;
    static ZatDetails details;
    size_t used = 0;
    DynamicLibrary library = open_library(arguments[0]);
    void(ZAT_CALL * set_path)(const char*);
    int32_t(ZAT_CALL * get_details)(InfoRecord*, ZatDetails*);
    uint32_t(ZAT_CALL * reform_full_bounded)(const InfoRecord*, char*, uint32_t);
    char** file;
    int lines = 0;
    if (library == NULL) {
        return 0;
    }
    *(void**)&set_path = find_symbol(library, "SetPath");
    *(void**)&get_details = find_symbol(library, "GetDetails");
    *(void**)&reform_full_bounded = find_symbol(library, "ReFormFullBounded");
    set_path(arguments[1]);
    for (file = arguments + 2; *file != NULL; ++file) {
        memset(&record, 0, sizeof record);
        strncpy(record.path, *file, sizeof record.path - 1);
        details.size = sizeof details;
        lines += get_details(&record, &details) > 0;
        used += reform_full_bounded(&record, said + used, (uint32_t)(size - used));
        used = used < size ? used : size - 1;
    }
    close_library(library);
    return lines;
}

int main(int argc, char** argv) {
    static char said[65536], said_unusually[65536];
    HostState before, after;
    unsigned long handles;
    long long bytes;
    int i, failures = 0;
    if (argc < 4) {
        fprintf(stderr, "usage: host_state LIBRARY CATALOGUE FILE...\n");
        return 2;
    }
    make_state_unusual();
    before = host_state();
    use_library(argv + 1, said_unusually, sizeof said_unusually);
    after = host_state();
    fesetenv(FE_DFL_ENV);
    i = use_library(argv + 1, said, sizeof said);
    if (strcmp(said, said_unusually) != 0) {
        printf("said %s\nnot %s\n", said_unusually, said);
        ++failures;
    }
    if (i != argc - 3) {
        printf("%d of %d files told anything\n", i, argc - 3);
        ++failures;
    }
    if (memcmp(&before, &after, sizeof before) != 0) {
        printf("changed: directory %s %s, locale %s %s, rounding %d %d, x87 %x %x, SSE %x %x, output %ld %ld\n", before.directory,
            after.directory, before.locale, after.locale, before.rounding, after.rounding, before.x87_control, after.x87_control,
            before.sse_control, after.sse_control, before.output_position, after.output_position);
        ++failures;
    }
    if (is_loaded(argv[1])) {
        printf("the library stays loaded\n");
        ++failures;
    }

    argv[4] = NULL; /* one file from here on */
    for (i = 0; i < warm_up; ++i) {
        use_library(argv + 1, said, sizeof said);
    }
    handles = open_handles();
    bytes = private_bytes();
    for (i = 0; i < loads; ++i) {
        use_library(argv + 1, said, sizeof said);
    }
    printf("%d loads: %lu handles, then %lu; %lld bytes, then %lld\n", loads, handles, open_handles(), bytes, private_bytes());
    if (handles == 0 || open_handles() > handles) {
        printf("handles leaked\n");
        ++failures;
    }
    if (bytes == 0 || private_bytes() > bytes + tolerated_bytes) {
        printf("memory leaked\n");
        ++failures;
    }
    return failures != 0;
}
