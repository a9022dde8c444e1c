// Preloaded into a program, makes the system's memory calls behave as where a page has the TQ_PAGE_BYTES bytes of the
// environment, a power of two: they refuse addresses in the middle of a page, act on whole pages, place mappings at the
// start of one, and tell that size to whoever asks for it.

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/auxv.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::size_t truePageBytes() {
    return ::getauxval(AT_PAGESZ);
}

std::size_t pageBytes() {
    static const std::size_t bytes = [] {
        const char* const text = std::getenv("TQ_PAGE_BYTES");
        return std::max<std::size_t>(text == nullptr ? 0 : std::strtoul(text, nullptr, 10), truePageBytes());
    }();
    return bytes;
}

std::size_t offsetInPage(const void* address) {
    return reinterpret_cast<std::uintptr_t>(address) % pageBytes();
}

std::size_t wholePages(std::size_t size) {
    return (size + pageBytes() - 1) / pageBytes() * pageBytes();
}

template <class... Rest>
long onWholePages(long call, void* address, std::size_t size, Rest... rest) {
    if (offsetInPage(address) != 0) {
        errno = EINVAL;
        return -1;
    }
    return ::syscall(call, address, wholePages(size), rest...);
}

void* map(void* address, std::size_t size, int rights, int flags, int file, off_t offset) {
    return reinterpret_cast<void*>(::syscall(SYS_mmap, address, size, rights, flags, file, offset));
}

// Where the system likes, as far as the start of a page lies there. What is too much at both ends stays without rights.
void* mapAnywhere(std::size_t size, int rights, int flags, int file, off_t offset) {
    void* const room = map(nullptr, size + pageBytes(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (room == MAP_FAILED)
        return room;
    char* const start = static_cast<char*>(room) + wholePages(offsetInPage(room)) - offsetInPage(room);
    return map(start, size, rights, flags | MAP_FIXED, file, offset);
}

} // namespace

// Under names of their own here: what the declarations of these calls promise differs between the C libraries.
extern "C" {

void* mapPages(void* address, std::size_t size, int rights, int flags, int file, off_t offset) __asm__("mmap");
int unmapPages(void* address, std::size_t size) __asm__("munmap");
int protectPages(void* address, std::size_t size, int rights) __asm__("mprotect");
int advisePages(void* address, std::size_t size, int advice) __asm__("madvise");
int tellResidence(void* address, std::size_t size, unsigned char* states) __asm__("mincore");
long tellSetting(int name) __asm__("sysconf");

void* mapPages(void* address, std::size_t size, int rights, int flags, int file, off_t offset) {
    const bool isFixed = (flags & (MAP_FIXED | MAP_FIXED_NOREPLACE)) != 0;
    if (size == 0 || (isFixed && offsetInPage(address) != 0) || static_cast<std::size_t>(offset) % pageBytes() != 0) {
        errno = EINVAL;
        return MAP_FAILED;
    }
    const std::size_t whole = wholePages(size);
    if (isFixed)
        return map(address, whole, rights, flags, file, offset);
    void* const hint = static_cast<char*>(address) - offsetInPage(address);
    if (hint != nullptr) {
        void* const mapping = map(hint, whole, rights, flags, file, offset);
        if (mapping == hint || mapping == MAP_FAILED)
            return mapping;
        ::syscall(SYS_munmap, mapping, whole);
    }
    return mapAnywhere(whole, rights, flags, file, offset);
}

int unmapPages(void* address, std::size_t size) {
    return static_cast<int>(onWholePages(SYS_munmap, address, size));
}

int protectPages(void* address, std::size_t size, int rights) {
    return static_cast<int>(onWholePages(SYS_mprotect, address, size, rights));
}

int advisePages(void* address, std::size_t size, int advice) {
    return static_cast<int>(onWholePages(SYS_madvise, address, size, advice));
}

int tellResidence(void* address, std::size_t size, unsigned char* states) {
    unsigned char parts[64];
    const std::size_t count = pageBytes() / truePageBytes();
    for (std::size_t done = 0; done < size; done += pageBytes()) {
        if (onWholePages(SYS_mincore, static_cast<char*>(address) + done, pageBytes(), parts) != 0)
            return -1;
        *states++ = std::any_of(parts, parts + count, [](unsigned char state) { return (state & 1) != 0; });
    }
    return 0;
}

long tellSetting(int name) {
    using Sysconf = long (*)(int);
    static const auto real = reinterpret_cast<Sysconf>(::dlsym(RTLD_NEXT, "sysconf"));
    return name == _SC_PAGESIZE ? static_cast<long>(pageBytes()) : real(name);
}

} // extern "C"
