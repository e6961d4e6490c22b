#include "limits/measured_call.h"

#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <pthread.h>
#include <sys/mman.h>

namespace zat::test {

namespace {

// More than any call may take, so that what is too deep is measured instead of killed.
constexpr size_t stack_size = 1048576;
constexpr uint8_t paint = 0xA5;

decltype(&SetPath) set_path;
decltype(&GetDetails) get_details;
decltype(&ReFormFullBounded) report_of;

struct Call {
    InfoRecord record = {};
    ZatDetails details = {};
    char report[65536] = {};
    double milliseconds = 0;
};

double processor_milliseconds() {
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

void* run(void* argument) {
    auto* call = static_cast<Call*>(argument);
    const double start = processor_milliseconds();
    get_details(&call->record, &call->details);
    report_of(&call->record, call->report, sizeof call->report);
    call->milliseconds = processor_milliseconds() - start;
    return nullptr;
}

uint8_t* painted_stack() {
    static auto* stack =
        static_cast<uint8_t*>(mmap(nullptr, stack_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    std::memset(stack, paint, stack_size);
    return stack;
}

uint64_t bytes_used(const uint8_t* stack) {
    size_t untouched = 0;
    while (untouched < stack_size && stack[untouched] == paint) {
        ++untouched;
    }
    return stack_size - untouched;
}

} // namespace

bool load_library(const char* path, const char* catalogue_directory) {
    void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        return false;
    }
    set_path = reinterpret_cast<decltype(set_path)>(dlsym(library, "SetPath"));
    get_details = reinterpret_cast<decltype(get_details)>(dlsym(library, "GetDetails"));
    report_of = reinterpret_cast<decltype(report_of)>(dlsym(library, "ReFormFullBounded"));
    if (set_path == nullptr || get_details == nullptr || report_of == nullptr) {
        return false;
    }
    set_path(catalogue_directory);
    return true;
}

Cost measure(const VirtualFile& file, uint32_t options, uint32_t scan_budget) {
    static Call call;
    call = {};
    virtual_path.copy(call.record.path, virtual_path.size());
    call.record.options = options;
    call.record.scan_budget = scan_budget;
    call.details.size = sizeof call.details;
    serve(&file);
    uint8_t* stack = painted_stack();
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, stack, stack_size);
    reset_costs();
    pthread_t thread = {};
    pthread_create(&thread, &attributes, run, &call);
    pthread_join(thread, nullptr);
    const SystemCosts costs = system_costs;
    pthread_attr_destroy(&attributes);
    return {call.milliseconds, bytes_used(stack), costs.peak_memory, costs.bytes_read, costs.reads, call.record.type_code,
        call.report};
}

} // namespace zat::test
