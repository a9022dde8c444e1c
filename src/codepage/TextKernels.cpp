#include "codepage/TextKernels.h"

#include "codepage/Avx2Kernels.h"
#include "codepage/BlockKernels.h"
#include "platform/Processor.h"

#include <atomic>
#include <initializer_list>

namespace tq::detail {

namespace {

// Null until the first conversion. Any thread may find the choice or make it again: it is always the same.
constinit std::atomic<const TextKernels*> g_current = nullptr;

[[gnu::noinline]] const TextKernels& choose() noexcept {
    const TextKernels* best = &kPortableKernels;
    for (const KernelSet set : {KernelSet::kSse2, KernelSet::kNeon, KernelSet::kAvx2}) {
        if (const TextKernels* kernels = textKernels(set))
            best = kernels;
    }
    g_current.store(best, std::memory_order_relaxed);
    return *best;
}

} // namespace

const TextKernels* textKernels(KernelSet set) noexcept {
    switch (set) {
    case KernelSet::kPortable:
        return &kPortableKernels;
    case KernelSet::kSse2:
        return sse2Kernels();
    case KernelSet::kNeon:
        return neonKernels();
    case KernelSet::kAvx2:
        return platform::hasAvx2() ? avx2Kernels() : nullptr;
    }
    return nullptr;
}

const TextKernels& currentKernels() noexcept {
    const TextKernels* const current = g_current.load(std::memory_order_relaxed);
    return current != nullptr ? *current : choose();
}

void useKernels(const TextKernels& kernels) noexcept {
    g_current.store(&kernels, std::memory_order_relaxed);
}

} // namespace tq::detail
