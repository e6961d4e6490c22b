// bench_peers [--each] [--delay MILLISECONDS] FILE...: a table of kinds of files: how long
// GetDetails and the report take, what they ask of the file layer, and how many times as long the
// other libraries take in the same process on a warm cache. A kind is a type and a file name's
// extension; its figures are the medians of its files. With --each every file is a row of its own.
// With
// --delay (0 will do) every read of ours takes so much longer, and the others do not run.
#include "io_counters.h"
#include "peers.h"
#include "zat/details.h"
#include "zat/zat.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr size_t most_peers = 3;
constexpr double no_figure = 0;

struct Measured {
    double microseconds = no_figure;
    double reads = 0;
    double seeks = 0;
    double bytes = 0;
    std::array<double, most_peers> ratios{}; // to our time; no_figure: does not know the file
};

double median(std::vector<double> values) {
    if (values.empty()) {
        return no_figure;
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The median of as many runs as fit into 20 ms, at least three, behind one that warms up.
template <typename Run>
double median_microseconds(const Run& run) {
    using Clock = std::chrono::steady_clock;
    run();
    std::vector<double> runs;
    const auto end = Clock::now() + std::chrono::milliseconds(20);
    do {
        const auto start = Clock::now();
        run();
        runs.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    } while (runs.size() < 3 || Clock::now() < end);
    return median(runs);
}

std::string kind_of(const std::string& path, uint32_t type) {
    char name[32];
    GetTypeName(type, name, sizeof name);
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
        [](char c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c); });
    return std::string(name) + " " + extension;
}

// Some damaged files make some libraries throw.
bool describe_by(const Peer& peer, const std::string& path) {
    try {
        return peer.describe(path);
    } catch (const std::exception&) {
        return false;
    }
}

Measured measure(const std::string& path, std::string* kind, bool with_peers) {
    static const auto record = std::make_unique<InfoRecord>();
    static const auto details = std::make_unique<ZatDetails>();
    static const auto report = std::make_unique<char[]>(ZAT_REPORT_SIZE);
    const auto describe = [&] {
        std::memset(record.get(), 0, sizeof *record);
        std::memcpy(record->path, path.c_str(), path.size() + 1);
        details->size = sizeof *details;
        GetDetails(record.get(), details.get());
        ReFormFull(record.get(), report.get());
    };
    io_counters = {};
    describe();
    const IoCounters once = io_counters;
    Measured result;
    result.reads = static_cast<double>(once.reads);
    result.seeks = static_cast<double>(once.seeks);
    result.bytes = static_cast<double>(once.bytes_read);
    result.microseconds = median_microseconds(describe);
    *kind = kind_of(path, record->type_code);
    for (size_t i = 0; with_peers && i < peer_count; ++i) {
        if (describe_by(peers[i], path)) {
            result.ratios[i] =
                median_microseconds([&] { describe_by(peers[i], path); }) / result.microseconds;
        }
    }
    return result;
}

// The median of what `figure` takes from each, those without a figure left out.
template <typename Figure>
double median_of(const std::vector<Measured>& all, const Figure& figure, bool may_be_zero = true) {
    std::vector<double> values;
    for (const Measured& one : all) {
        if (may_be_zero || figure(one) != no_figure) {
            values.push_back(figure(one));
        }
    }
    return median(values);
}

Measured median_measured(const std::vector<Measured>& all) {
    Measured result;
    result.microseconds = median_of(all, [](const Measured& m) { return m.microseconds; });
    result.reads = median_of(all, [](const Measured& m) { return m.reads; });
    result.seeks = median_of(all, [](const Measured& m) { return m.seeks; });
    result.bytes = median_of(all, [](const Measured& m) { return m.bytes; });
    for (size_t i = 0; i < most_peers; ++i) {
        result.ratios[i] = median_of(
            all, [i](const Measured& m) { return m.ratios[i]; }, false);
    }
    return result;
}

void print_row(const std::string& kind, size_t files, const Measured& row) {
    std::printf("%-26s %5zu %9.1f %6.0f %6.0f %9.0f", kind.c_str(), files, row.microseconds,
        row.reads, row.seeks, row.bytes);
    for (size_t i = 0; i < peer_count; ++i) {
        if (row.ratios[i] == no_figure) {
            std::printf(" %12s", "-");
        } else {
            std::printf(" %12.1f", row.ratios[i]);
        }
    }
    std::printf("\n");
}

} // namespace

int main(int argc, char** argv) {
    bool each = false;
    bool with_peers = true;
    int first = 1;
    for (; first < argc; ++first) {
        if (std::strcmp(argv[first], "--each") == 0) {
            each = true;
        } else if (std::strcmp(argv[first], "--delay") == 0 && first + 1 < argc) {
            with_peers = false;
            io_read_delay = static_cast<unsigned>(std::atoi(argv[++first])) * 1000;
        } else {
            break;
        }
    }
    SetPath(ZAT_SOURCE_DIR "catalogue/");
    set_up_peers();
    std::map<std::string, std::vector<Measured>> kinds;
    for (int i = first; i < argc; ++i) {
        if (std::strlen(argv[i]) < ZAT_LINE_SIZE) {
            std::string kind;
            const Measured one = measure(argv[i], &kind, with_peers);
            kinds[each ? std::filesystem::path(argv[i]).filename().string() : kind].push_back(one);
        }
    }
    std::printf("%-26s %5s %9s %6s %6s %9s", "kind", "files", "us", "reads", "seeks", "bytes");
    for (size_t i = 0; i < peer_count; ++i) {
        std::printf(" %12s", peers[i].name);
    }
    std::printf("\n");
    std::vector<Measured> rows;
    for (const auto& [kind, files] : kinds) {
        rows.push_back(median_measured(files));
        print_row(kind, files.size(), rows.back());
    }
    print_row("median kind", rows.size(), median_measured(rows));
    return 0;
}
