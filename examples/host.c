/* Prints the report of one file: host CATALOGUE_DIRECTORY/ FILE */
#include <stdio.h>
#include <string.h>
#include <zat/zat.h>

int main(int argc, char** argv) {
    static InfoRecord record; /* cleared to zero */
    static char report[ZAT_REPORT_SIZE];
    if (argc != 3 || strlen(argv[2]) >= sizeof record.path) {
        return 1;
    }
    SetPath(argv[1]);
    strcpy(record.path, argv[2]);
    GetInfo(&record);
    ReFormFull(&record, report);
    fputs(report, stdout);
    return record.type_code < FILETYPE_MEDIA;
}
