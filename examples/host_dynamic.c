/* Prints the report of one file: host_dynamic zat.dll|libzat.so CATALOGUE_DIRECTORY/ FILE */
#include <stdio.h>
#include <string.h>
#include <zat/zat.h>
#ifdef _WIN32
#include <windows.h>
#define load(path) ((void*)LoadLibraryA(path))
#define find(library, name) ((void*)GetProcAddress((HMODULE)(library), name))
#else
#include <dlfcn.h>
#define load(path) dlopen(path, RTLD_NOW)
#define find(library, name) dlsym(library, name)
#endif

int main(int argc, char** argv) {
    static InfoRecord record;
    static char report[ZAT_REPORT_SIZE];
    void* library = argc == 4 ? load(argv[1]) : NULL;
    void(ZAT_CALL * set_path)(const char*);
    void(ZAT_CALL * get_info)(InfoRecord*);
    void(ZAT_CALL * reform_full)(const InfoRecord*, char*);
    if (library == NULL || strlen(argv[3]) >= sizeof record.path) {
        return 1;
    }
    *(void**)&set_path = find(library, "SetPath");
    *(void**)&get_info = find(library, "GetInfo");
    *(void**)&reform_full = find(library, "ReFormFull");
    set_path(argv[2]);
    strcpy(record.path, argv[3]);
    get_info(&record);
    reform_full(&record, report);
    fputs(report, stdout);
    return record.type_code < FILETYPE_MEDIA;
}
