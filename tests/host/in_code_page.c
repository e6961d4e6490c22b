/* in_code_page NUMBER PROGRAM FILE: runs the program in this console with the output code page set. */
#include <stdio.h>
#include <stdlib.h>
#include <windows.h>

int main(int argc, char** argv) {
    static char command[4096];
    STARTUPINFOA startup;
    PROCESS_INFORMATION process;
    DWORD status = 1;
    memset(&startup, 0, sizeof startup);
    startup.cb = sizeof startup;
    if (argc != 4 || SetConsoleOutputCP((UINT)atoi(argv[1])) == 0) {
        return 99;
    }
    snprintf(command, sizeof command, "\"%s\" \"%s\"", argv[2], argv[3]);
    if (CreateProcessA(NULL, command, NULL, NULL, TRUE, 0, NULL, NULL, &startup, &process) == 0) {
        return 98;
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &status);
    return (int)status;
}
