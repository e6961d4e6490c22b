/* A host that is linked with the import library instead of loading the DLL by hand. */
#include "zat/details.h"

#include <stdio.h>

int main(void) {
    static InfoRecord record;
    static ZatDetails details; /* of size 0: refused */
    static char report[ZAT_REPORT_SIZE];
    Init();
    _GetFileFormat(NULL);
    SetPath("");
    record.path[0] = '?';
    GetFileFormat(&record);
    GetInfo(&record);
    GetDetails(&record, &details);
    GetTypeName(FILETYPE_AVI, report, sizeof report);
    ReFormFull(&record, report);
    ReFormFullBounded(&record, report, sizeof report);
    GetDllComment(report);
    InitFree();
    printf("%d %d %d\n", GetDllVersion(), Unicode(), DllEntryPoint(NULL, 0, NULL));
    return GetDllVersion() != 161225 || record.type_code != FILETYPE_OPENFAILED;
}
