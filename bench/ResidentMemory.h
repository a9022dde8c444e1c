#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

/// Bytes of this process that are in memory, as Linux counts them.
inline double residentBytes() {
    std::FILE* const file = std::fopen("/proc/self/statm", "r");
    if (file == nullptr)
        throw std::runtime_error("/proc/self/statm cannot be read");
    long pages = 0;
    const int read = std::fscanf(file, "%*d %ld", &pages);
    std::fclose(file);
    if (read != 1)
        throw std::runtime_error("/proc/self/statm is not understood");
    return static_cast<double>(pages) * static_cast<double>(::sysconf(_SC_PAGESIZE));
}

/// Brings all pages of the mapped files into memory. A child begins without them, and would seem to grow by those that
/// it merely uses.
inline void populateMappings() {
    std::FILE* const file = std::fopen("/proc/self/maps", "r");
    if (file == nullptr)
        throw std::runtime_error("/proc/self/maps cannot be read");
    unsigned long begin = 0;
    unsigned long end = 0;
    while (std::fscanf(file, "%lx-%lx %*[^\n]", &begin, &end) == 2)
        ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_POPULATE_READ); // refused where nothing is to read
    std::fclose(file);
}

/// By how many bytes `work` makes a process grow. It runs in a child, which ends without undoing anything.
template <class Work>
double growth(Work work) {
    int ends[2];
    if (::pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    const ::pid_t child = ::fork();
    if (child == 0) {
        populateMappings();
        const double before = residentBytes();
        work();
        const double bytes = residentBytes() - before;
        ::_exit(::write(ends[1], &bytes, sizeof bytes) == sizeof bytes ? 0 : 1);
    }
    ::close(ends[1]);
    double bytes = 0;
    const bool isWhole = ::read(ends[0], &bytes, sizeof bytes) == sizeof bytes;
    ::close(ends[0]);
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || status != 0 || !isWhole)
        throw std::runtime_error("the measured process failed");
    return bytes;
}

} // namespace bench
