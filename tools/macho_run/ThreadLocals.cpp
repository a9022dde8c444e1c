#include "ThreadLocals.h"

#include <array>
#include <cstdlib>
#include <cstring>

namespace macho {

namespace {

struct Descriptor {
    void (*thunk)();
    std::uint64_t key;
    std::uint64_t offset;
};

struct Contents {
    const std::uint8_t* bytes;
    std::size_t size;
};

constexpr std::size_t kMostImages = 16;
constexpr std::size_t kAlignment = 64;

std::array<Contents, kMostImages> g_contents;
std::uint64_t g_imageCount;
thread_local std::array<std::uint8_t*, kMostImages> t_blocks;

} // namespace

// Called by the thunk alone.
extern "C" void* machoThreadLocalAddress(const Descriptor* descriptor) {
    std::uint8_t*& block = t_blocks[descriptor->key];
    if (block == nullptr) {
        const Contents& contents = g_contents[descriptor->key];
        const std::size_t size = (contents.size + kAlignment - 1) / kAlignment * kAlignment;
        block = static_cast<std::uint8_t*>(std::aligned_alloc(kAlignment, size));
        std::memcpy(block, contents.bytes, contents.size);
    }
    return block + descriptor->offset;
}

extern "C" void machoThreadLocalThunk();

// All registers but that of the result are the caller's.
#if defined(__aarch64__)
__asm__(R"(
.text
.globl machoThreadLocalThunk
machoThreadLocalThunk:
  stp x29, x30, [sp, #-16]!
  mov x29, sp
  stp x1, x2, [sp, #-16]!
  stp x3, x4, [sp, #-16]!
  stp x5, x6, [sp, #-16]!
  stp x7, x8, [sp, #-16]!
  stp x9, x10, [sp, #-16]!
  stp x11, x12, [sp, #-16]!
  stp x13, x14, [sp, #-16]!
  stp x15, x16, [sp, #-16]!
  stp x17, x18, [sp, #-16]!
  sub sp, sp, #512
  stp q0, q1, [sp, #0]
  stp q2, q3, [sp, #32]
  stp q4, q5, [sp, #64]
  stp q6, q7, [sp, #96]
  stp q16, q17, [sp, #128]
  stp q18, q19, [sp, #160]
  stp q20, q21, [sp, #192]
  stp q22, q23, [sp, #224]
  stp q24, q25, [sp, #256]
  stp q26, q27, [sp, #288]
  stp q28, q29, [sp, #320]
  stp q30, q31, [sp, #352]
  bl machoThreadLocalAddress
  ldp q0, q1, [sp, #0]
  ldp q2, q3, [sp, #32]
  ldp q4, q5, [sp, #64]
  ldp q6, q7, [sp, #96]
  ldp q16, q17, [sp, #128]
  ldp q18, q19, [sp, #160]
  ldp q20, q21, [sp, #192]
  ldp q22, q23, [sp, #224]
  ldp q24, q25, [sp, #256]
  ldp q26, q27, [sp, #288]
  ldp q28, q29, [sp, #320]
  ldp q30, q31, [sp, #352]
  add sp, sp, #512
  ldp x17, x18, [sp], #16
  ldp x15, x16, [sp], #16
  ldp x13, x14, [sp], #16
  ldp x11, x12, [sp], #16
  ldp x9, x10, [sp], #16
  ldp x7, x8, [sp], #16
  ldp x5, x6, [sp], #16
  ldp x3, x4, [sp], #16
  ldp x1, x2, [sp], #16
  ldp x29, x30, [sp], #16
  ret
)");
#else
__asm__(R"(
.text
.globl machoThreadLocalThunk
machoThreadLocalThunk:
  pushq %rbp
  movq %rsp, %rbp
  pushq %rcx
  pushq %rdx
  pushq %rsi
  pushq %rdi
  pushq %r8
  pushq %r9
  pushq %r10
  pushq %r11
  subq $528, %rsp
  andq $-16, %rsp
  fxsave 16(%rsp)
  call machoThreadLocalAddress
  fxrstor 16(%rsp)
  leaq -64(%rbp), %rsp
  popq %r11
  popq %r10
  popq %r9
  popq %r8
  popq %rdi
  popq %rsi
  popq %rdx
  popq %rcx
  popq %rbp
  ret
)");
#endif

ThreadLocals::ThreadLocals(const std::uint8_t* contents, std::size_t size) : m_key(g_imageCount++) {
    g_contents.at(m_key) = {contents, size};
}

void ThreadLocals::prepare(std::uint8_t* section, std::uint64_t size) const {
    for (std::uint64_t at = 0; at < size; at += sizeof(Descriptor)) {
        Descriptor descriptor;
        std::memcpy(&descriptor, section + at, sizeof descriptor);
        descriptor.thunk = machoThreadLocalThunk;
        descriptor.key = m_key;
        std::memcpy(section + at, &descriptor, sizeof descriptor);
    }
}

} // namespace macho
