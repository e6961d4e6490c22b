#include "description.h"
#include "files.h"
#include "library.h"
#include "options.h"
#include "run.h"
#include "terminal.h"

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

using namespace host;

// Beside the program, else where it is installed.
std::string default_catalogue() {
    std::string directory = program_directory();
    for (const std::string& candidate : {directory, directory + "../share/zat/"}) {
        if (file_exists(candidate + "zat-codec.ini")) {
            return candidate;
        }
    }
    return directory;
}

// The library joins the file's name directly.
std::string with_separator(std::string directory) {
    if (!directory.empty() && directory.find_last_of("/\\") != directory.size() - 1) {
        directory += '/';
    }
    return directory;
}

int run_with(const std::vector<std::string>& arguments) {
    Options options;
    const int status = parse_options(arguments, &options);
    if (status >= 0) {
        return status;
    }
    Library library;
    std::string problem;
    if (!load_library(&library, &problem)) {
        write_message(problem);
        return exit_failures;
    }
    if (options.version) {
        write_output(
            "zat " ZAT_VERSION " (library build " + std::to_string(library.get_version()) + ")\n",
            true);
        return exit_described;
    }
    const std::string catalogue =
        with_separator(options.catalogue.empty() ? default_catalogue() : options.catalogue);
    library.set_path(with_separator(path_for_library(catalogue)).c_str());
    return run(library, options);
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run_with(program_arguments(argc, argv));
    } catch (const std::exception& error) { // mostly of memory that is not there
        std::fprintf(stderr, "zat: %s\n", error.what());
        return exit_failures;
    }
}
