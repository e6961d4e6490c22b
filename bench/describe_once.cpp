// describe_once FILE...: one GetDetails for each file, for tools that count what a call does.
#include "zat/details.h"
#include "zat/zat.h"

#include <cstring>

int main(int argc, char** argv) {
    static InfoRecord record;
    static ZatDetails details;
    SetPath(ZAT_SOURCE_DIR "catalogue/");
    for (int i = 1; i < argc; ++i) {
        if (std::strlen(argv[i]) < sizeof record.path) {
            std::memset(&record, 0, sizeof record);
            std::strcpy(record.path, argv[i]);
            details.size = sizeof details;
            GetDetails(&record, &details);
        }
    }
    return 0;
}
