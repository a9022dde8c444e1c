#include "platform/PageReads.h"

namespace tq::platform {

namespace {

#if defined(__x86_64__)

// Rotations that come to nothing by themselves; valgrind takes them for a question, and its answer is 1 or more.
bool asksValgrind() noexcept {
    constexpr std::uint64_t kRunningOnValgrind = 0x1001;
    const volatile std::uint64_t question[6] = {kRunningOnValgrind};
    std::uint64_t answer = 0;
    __asm__ volatile("rolq $3, %%rdi; rolq $13, %%rdi; rolq $61, %%rdi; rolq $51, %%rdi; xchgq %%rbx, %%rbx"
                     : "+d"(answer)
                     : "a"(question)
                     : "cc", "memory");
    return answer != 0;
}

#else

bool asksValgrind() noexcept {
    return false;
}

#endif

} // namespace

const bool kRunsInValgrind = asksValgrind();

} // namespace tq::platform
