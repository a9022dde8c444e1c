// Loads the shared library, whose path it is given, under conditions that a test program cannot set up for itself.
// Usage: memory_load_probe <library> plain|taken|limit. Ends with 0 when the library behaves.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <type_traits>

namespace {

const auto kFirstHint = std::uintptr_t{64} << 30;
constexpr std::uintptr_t kLargestSystemPage = 65536;
constexpr std::size_t kReservation = std::size_t{8} << 30;

struct Library {
    void* (*allocate)(std::size_t);
    void* (*allocatePage)();
    void (*release)(void*);
    std::size_t (*sizeOf)(void*);
};

void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "failed: %s\n", what);
        std::_Exit(1);
    }
}

Library load(const char* path) {
    void* const handle = ::dlopen(path, RTLD_NOW);
    require(handle != nullptr, "the library is loaded");
    Library library{};
    const auto find = [handle](const char* name, auto& function) {
        function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(::dlsym(handle, name));
        require(function != nullptr, name);
    };
    find("tqMalloc", library.allocate);
    find("tqAllocPage", library.allocatePage);
    find("tqFree", library.release);
    find("tqMsize", library.sizeOf);
    return library;
}

void useEverySize(const Library& library, bool pooled) {
    for (std::size_t size = 1; size <= 4200; ++size) {
        void* const block = library.allocate(size);
        std::memset(block, 1, size);
        // 16 bytes for 9 come from a pool, from no one else
        require(size != 9 || (library.sizeOf(block) == 16) == pooled, "served by the pools, or not");
        library.release(block);
    }
    void* const page = library.allocatePage();
    require(!pooled || reinterpret_cast<std::uintptr_t>(page) % 0x100000 == 0, "alignment of a segment");
    library.release(std::memset(page, 1, 0x100000));
}

// What someone else has mapped in the middle of the first choice stays there, and the heap goes elsewhere.
void withTheHintTaken(const char* path) {
    void* const wanted = reinterpret_cast<void*>(kFirstHint + 12345 * kLargestSystemPage);
    auto* const mine =
        static_cast<char*>(::mmap(wanted, 8192, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    require(mine == wanted, "a mapping in the way");
    std::memset(mine, 'm', 8192);
    const Library library = load(path);
    useEverySize(library, true);
    const auto address = reinterpret_cast<std::uintptr_t>(library.allocate(8));
    require(address - kFirstHint >= kReservation, "a reservation elsewhere");
    require(std::count(mine, mine + 8192, 'm') == 8192, "the mapping untouched");
}

void withAnAddressSpaceLimit(const char* path) {
    constexpr rlimit kLimit{std::size_t{1} << 30, RLIM_INFINITY};
    require(::setrlimit(RLIMIT_AS, &kLimit) == 0, "a limit");
    useEverySize(load(path), false);
}

} // namespace

int main(int argc, char** argv) {
    require(argc == 3, "two arguments");
    const std::string mode = argv[2];
    mode == "plain"   ? useEverySize(load(argv[1]), true)
    : mode == "taken" ? withTheHintTaken(argv[1])
                      : withAnAddressSpaceLimit(argv[1]);
}
