// Virtual memory with the page size and the manners of macOS: pages of 16 KiB on arm64, whatever the system here has.

#include "shims/Imports.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace macho {

namespace {

#if defined(__aarch64__)
constexpr std::uintptr_t kPageBytes = 16384;
#else
constexpr std::uintptr_t kPageBytes = 4096;
#endif

// macOS's numbers.
constexpr int kSharedOrPrivateOrFixed = 0x13; // the same as here
constexpr int kNoReserve = 0x40;
constexpr int kAnonymous = 0x1000;
constexpr int kFree = 5;
constexpr int kFreeReusable = 7;

std::uintptr_t numberOf(const void* address) {
    return reinterpret_cast<std::uintptr_t>(address);
}

bool isPageStart(const void* address) {
    return numberOf(address) % kPageBytes == 0;
}

std::size_t wholePages(std::size_t size) {
    return (size + kPageBytes - 1) / kPageBytes * kPageBytes;
}

int refuse(int error) {
    errno = error;
    return -1;
}

// Without a fixed address: at a start of a page of macOS's, which the system here may not know.
void* mapAnywhere(void* hint, std::size_t size, int rights, int flags, int descriptor, off_t offset) {
    void* const direct = ::mmap(hint, size, rights, flags, descriptor, offset);
    if (direct == MAP_FAILED || isPageStart(direct))
        return direct;
    ::munmap(direct, size);
    const std::size_t room = size + kPageBytes;
    void* const reserved = ::mmap(nullptr, room, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (reserved == MAP_FAILED)
        return reserved;
    const std::uintptr_t start = wholePages(numberOf(reserved));
    void* const result = ::mmap(reinterpret_cast<void*>(start), size, rights, flags | MAP_FIXED, descriptor, offset);
    const std::uintptr_t end = start + size;
    if (start > numberOf(reserved))
        ::munmap(reserved, start - numberOf(reserved));
    if (numberOf(reserved) + room > end)
        ::munmap(reinterpret_cast<void*>(end), numberOf(reserved) + room - end);
    return result;
}

void* mapMemory(void* address, std::size_t size, int rights, int flags, int descriptor, off_t offset) {
    const bool isFixed = (flags & MAP_FIXED) != 0;
    if (size == 0 || (isFixed && !isPageStart(address)) || offset % static_cast<off_t>(kPageBytes) != 0) {
        errno = EINVAL;
        return MAP_FAILED;
    }
    int here = flags & kSharedOrPrivateOrFixed;
    if ((flags & kAnonymous) != 0) {
        here |= MAP_ANONYMOUS;
        descriptor = -1;
        size = wholePages(size);
    }
    if ((flags & kNoReserve) != 0)
        here |= MAP_NORESERVE;
    return isFixed ? ::mmap(address, size, rights, here, descriptor, offset)
                   : mapAnywhere(address, size, rights, here, descriptor, offset);
}

int unmapMemory(void* address, std::size_t size) {
    return isPageStart(address) ? ::munmap(address, wholePages(size)) : refuse(EINVAL);
}

int protectMemory(void* address, std::size_t size, int rights) {
    return isPageStart(address) ? ::mprotect(address, wholePages(size), rights) : refuse(EINVAL);
}

// Advice acts on all pages that the range touches. Memory that a program says it does not want is taken at once, so
// that a program that still wants it shows.
int adviseMemory(void* address, std::size_t size, int advice) {
    const std::uintptr_t start = numberOf(address) / kPageBytes * kPageBytes;
    const std::uintptr_t end = wholePages(numberOf(address) + size);
    auto* const from = reinterpret_cast<void*>(start);
    if (advice == kFree || advice == kFreeReusable)
        return ::madvise(from, end - start, MADV_DONTNEED);
    return advice <= MADV_DONTNEED ? ::madvise(from, end - start, advice) : refuse(EINVAL);
}

int residentPages(void* address, std::size_t size, unsigned char* states) {
    const auto systemPage = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    std::vector<unsigned char> system(wholePages(size) / systemPage);
    // One by one: qemu refuses a range with an inaccessible page in it.
    for (std::size_t i = 0; i < system.size(); ++i)
        ::mincore(static_cast<char*>(address) + i * systemPage, systemPage, &system[i]);
    const std::size_t perPage = std::max<std::size_t>(1, kPageBytes / systemPage);
    for (std::size_t page = 0; page < wholePages(size) / kPageBytes; ++page) {
        states[page] = 0;
        for (std::size_t i = 0; i < perPage && page * perPage + i < system.size(); ++i)
            states[page] = static_cast<unsigned char>(states[page] | (system[page * perPage + i] & 1));
    }
    return 0;
}

long systemValue(int name) {
    enum { kOpenFiles = 5, kPageSize = 29, kProcessors = 57, kProcessorsOnline = 58 };
    switch (name) {
    case kPageSize:
        return static_cast<long>(kPageBytes);
    case kOpenFiles:
        return ::sysconf(_SC_OPEN_MAX);
    case kProcessors:
        return ::sysconf(_SC_NPROCESSORS_CONF);
    case kProcessorsOnline:
        return ::sysconf(_SC_NPROCESSORS_ONLN);
    default:
        return refuse(EINVAL);
    }
}

int pageSize() {
    return static_cast<int>(kPageBytes);
}

std::size_t usableSize(void* block) {
    return ::malloc_usable_size(block);
}

void zero(void* bytes, std::size_t size) {
    std::memset(bytes, 0, size);
}

template <std::size_t Period>
void fillWithPattern(char* bytes, const char* pattern, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = pattern[i % Period];
}

} // namespace

void addMemoryShims(ImportTable& table) {
    table.add("_mmap", mapMemory);
    table.add("_munmap", unmapMemory);
    table.add("_mprotect", protectMemory);
    table.add("_madvise", adviseMemory);
    table.add("_mincore", residentPages);
    table.add("_sysconf", systemValue);
    table.add("_getpagesize", pageSize);
    table.add("_malloc_size", usableSize);
    table.add("___bzero", zero);
    table.add("_bzero", zero);
    table.add("_memset_pattern4", fillWithPattern<4>);
    table.add("_memset_pattern8", fillWithPattern<8>);
    table.add("_memset_pattern16", fillWithPattern<16>);
}

} // namespace macho
