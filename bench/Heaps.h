#pragma once

#include "bench/Registration.h"

#include <TqOsBase/memory/Allocation.h>

#include <cstddef>
#include <cstdlib>
#include <dlfcn.h>
#include <string>

// The contenders of the heap benchmarks.
namespace bench {

inline constexpr std::size_t kMegabyte = std::size_t{1} << 20;

struct Ours {
    static constexpr const char* kName = "ours";
    static void* allocate(std::size_t size) { return tqMalloc(size); }
    static void release(void* block) { tqFree(block); }
    static void* allocateMegabyte() { return tqAllocPage(); }
};

struct Malloc {
    static constexpr const char* kName = "malloc";
    static void* allocate(std::size_t size) { return std::malloc(size); }
    static void release(void* block) { std::free(block); }
    static void* allocateMegabyte() { return std::aligned_alloc(kMegabyte, kMegabyte); }
};

// Loaded at run time: linked, it would take the place of the C library's malloc. A call through a pointer costs what a
// call into a shared library does.
template <class Names>
struct Loaded {
    static constexpr const char* kName = Names::kName;
    template <class Function>
    static Function* find(const char* name) {
        static void* const library = ::dlopen(Names::kLibrary, RTLD_NOW | RTLD_LOCAL);
        return library == nullptr ? nullptr : reinterpret_cast<Function*>(::dlsym(library, name));
    }
    static inline void* (*const s_allocate)(std::size_t) = find<void*(std::size_t)>(Names::kAllocate);
    static inline void (*const s_release)(void*) = find<void(void*)>(Names::kRelease);
    // Asked while static objects are built, those above perhaps not yet.
    static bool isMissing() { return find<void*(std::size_t)>(Names::kAllocate) == nullptr; }
    static inline void* (*const s_align)(std::size_t,
                                         std::size_t) = find<void*(std::size_t, std::size_t)>(Names::kAlign);
    static void* allocate(std::size_t size) { return s_allocate(size); }
    static void release(void* block) { s_release(block); }
    static void* allocateMegabyte() { return s_align(kMegabyte, kMegabyte); }
};

struct Mimalloc {
    static constexpr const char* kName = "mimalloc";
    static constexpr const char* kLibrary = "libmimalloc.so.2";
    static constexpr const char* kAllocate = "mi_malloc";
    static constexpr const char* kAlign = "mi_aligned_alloc";
    static constexpr const char* kRelease = "mi_free";
};

struct Jemalloc {
    static constexpr const char* kName = "jemalloc";
    static constexpr const char* kLibrary = "libjemalloc.so.2";
    static constexpr const char* kAllocate = "malloc";
    static constexpr const char* kAlign = "aligned_alloc";
    static constexpr const char* kRelease = "free";
};

struct Tcmalloc {
    static constexpr const char* kName = "tcmalloc";
    static constexpr const char* kLibrary = "libtcmalloc_minimal.so.4";
    static constexpr const char* kAllocate = "tc_malloc";
    static constexpr const char* kAlign = "tc_memalign";
    static constexpr const char* kRelease = "tc_free";
};

/// Registers the benchmark of one heap, which says "missing" where that heap is not installed.
template <class Heap, class Run>
benchmark::internal::Benchmark* addHeap(const std::string& name, Run run) {
    const std::string full = name + "/" + Heap::kName;
    if constexpr (requires { Heap::isMissing(); }) {
        if (Heap::isMissing())
            return addMissing(full);
    }
    return add(full, run);
}

} // namespace bench
