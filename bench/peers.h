// Other libraries that tell what a media file is, called as their documents say. Each opens the
// file from its path and reads what it reads by default.
#pragma once

#include <cstddef>
#include <string>

struct Peer {
    const char* name;
    bool (*describe)(const std::string& path); // false: the library does not know the file
};

// The libraries that this program was built with.
extern const Peer peers[];
extern const size_t peer_count;

void set_up_peers();
