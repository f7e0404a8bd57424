#include "bench/PeakMemory.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <fstream>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

namespace bench {

namespace {

long PeakResident()
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == "VmHWM:") {
            long kib = 0;
            status >> kib;
            return kib;
        }
    }
    throw std::runtime_error("this system does not tell the peak of resident memory");
}

} // namespace

void InChild(const std::function<void()>& task)
{
    const pid_t child = fork();
    if (child == 0) {
        int code = 1;
        try {
            task();
            code = 0;
        } catch (const std::exception& e) {
            std::fprintf(stderr, "qvbench: %s\n", e.what());
        }
        // Nothing of the parent's, its temporary files above all, is to be cleaned up here.
        _exit(code);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw std::runtime_error("a child process failed");
    }
}

long PeakGrowth(const std::function<std::function<void()>()>& prepare)
{
    void* shared = mmap(nullptr, sizeof(long), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) {
        throw std::bad_alloc();
    }
    const auto unmap = [](long* kib) { munmap(kib, sizeof(long)); };
    const std::unique_ptr<long, decltype(unmap)> growth(new (shared) long(0), unmap);
    InChild([&] {
        const auto task = prepare();
        const long before = PeakResident();
        task();
        *growth = PeakResident() - before;
    });
    return *growth;
}

} // namespace bench
