#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <thread>

#include "host/module_library.h"

// Every allocation of the process leaves a mark among the system calls that are traced: a write to
// nowhere. The C library's own names below are those that its documentation offers for this.

namespace {

void Mark() {
    const int before = errno;
    constexpr char Text[] = "allocation";
    syscall(SYS_write, -1, Text, sizeof(Text) - 1);
    errno = before;
}

}  // namespace

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

void* malloc(std::size_t size) {
    Mark();
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    Mark();
    return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
    Mark();
    return __libc_realloc(memory, size);
}
}

/// idle-host SECONDS: loads the module and lets it poll for so long, with nothing else to do.
int main(int argc, char** argv) {
    try {
        const std::chrono::seconds length(argc == 2 ? std::atoi(argv[1]) : 1);
        host_tool::ModuleLibrary module(OVISK_LIBRARY);
        const host_tool::RunningModule running(module, 0);
        std::this_thread::sleep_for(length);
        OviskData data;
        module.ZbOvisk_GetOviskData(data);
        return data.cposmr.x != 0 ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "idle-host: %s\n", error.what());
        return 2;
    }
}
