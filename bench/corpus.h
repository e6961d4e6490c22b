// Files to measure on, made anew for each run.
#pragma once

#include <string>
#include <vector>

struct BenchFile {
    std::string name;
    std::string path;
};

// Writes the built files below `directory` and adds the real ones of the repository.
std::vector<BenchFile> make_corpus(const std::string& directory);
