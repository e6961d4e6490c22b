#include <stdio.h>
#include <string.h>
#include <zat/zat.h>

int main(int argc, char** argv) {
    static InfoRecord record;
    static char report[ZAT_REPORT_SIZE];
    if (argc != 3) {
        return 1;
    }
    SetPath(argv[1]);
    strncpy(record.path, argv[2], sizeof record.path - 1);
    GetInfo(&record);
    ReFormFull(&record, report);
    fputs(report, stdout);
    return 0;
}
