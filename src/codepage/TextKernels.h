#pragma once

#include <cstddef>
#include <cstdint>

// The inner loops of the text conversions. Every set gives the same characters:
//   plain      character by character: what the others must agree with, and what they leave the ends of texts to
//   portable   stretches of ASCII in steps of 64-bit words, on any processor
//   SSE2       in steps of 16 characters, on every x86-64 processor
//   NEON       the same on every arm64 processor
//   AVX2       in steps of 32 characters where the text allows it, else as SSE2
// Conversions run through the best set that the processor has.

namespace tq::detail {

/// How far a conversion has come: both count from the beginning.
struct TextProgress {
    std::size_t taken = 0;   ///< Characters read.
    std::size_t written = 0; ///< Elements that they became.
};

/// What the conversions of short texts return for a text that they leave to the others.
inline constexpr std::size_t kNotShort = SIZE_MAX;

/// Elements of scratch that utf8ToWide may write after a result whose size was measured.
inline constexpr std::size_t kUtf8Scratch = 32;

/// The four conversions take [src, end), which holds no 0 and, for the escaped form, ends after every escape that it
/// begins (see endAfterLastEscape). They return the end of what they wrote and write no terminator. The caller's room:
///   narrowToWide               one element per source byte, and one more
///   utf8ToWide                 the same, or utf8ToWideSize and kUtf8Scratch
///   wideToNarrow, wideToUtf8   the size of the same name, and one more
/// Up to that room they may write scratch after their result.
struct TextKernels {
    wchar_t* (*narrowToWide)(const char* src, const char* end, wchar_t* out) noexcept;
    char* (*wideToNarrow)(const wchar_t* src, const wchar_t* end, char* out) noexcept;
    wchar_t* (*utf8ToWide)(const char* src, const char* end, wchar_t* out) noexcept;
    char* (*wideToUtf8)(const wchar_t* src, const wchar_t* end, char* out) noexcept;

    /// What the conversion of the same name writes for `count` elements, at most INT_MAX of them.
    std::size_t (*wideToNarrowSize)(const wchar_t* src, std::size_t count) noexcept;
    std::size_t (*utf8ToWideSize)(const char* src, std::size_t count) noexcept;
    std::size_t (*wideToUtf8Size)(const wchar_t* src, std::size_t count) noexcept;

    /// @{
    /// The conversion of the same name of the text at `src` up to its first 0, at most `limit` characters of it, into
    /// `room` bytes, without measuring it first. Null where the set has no way to do that. Unless it runs out of room
    /// it takes the text to its end, which it finds itself: it reads nothing after the 32 bytes, on a boundary of 32,
    /// in which the text ends.
    using Unmeasured = TextProgress (*)(const wchar_t* src, std::size_t limit, char* out, std::size_t room) noexcept;
    Unmeasured wideToNarrowUnmeasured;
    Unmeasured wideToUtf8Unmeasured;
    /// @}

    /// @{
    /// The conversion of such a text into `room` elements, if it is short (at most 2,048 narrow or 32 wide characters),
    /// all of it plain and none a backslash, and it fits: what most texts of a drawing are. Returns its length, or
    /// kNotShort with nothing written; shortWideToNarrow always does for a higher limit. Null where the set has no way
    /// to do that. Reads as far as the unmeasured ones do.
    std::size_t (*shortNarrowToWide)(const char* src, std::size_t limit, wchar_t* out, std::size_t room) noexcept;
    std::size_t (*shortWideToNarrow)(const wchar_t* src, std::size_t limit, char* out, std::size_t room) noexcept;
    /// @}
};

extern const TextKernels kPlainKernels;

enum class KernelSet { kPortable, kSse2, kNeon, kAvx2 };

/// The set, or null where this processor or this build has none of that name.
const TextKernels* textKernels(KernelSet set) noexcept;

/// The set in use: the best one there is, chosen at the first call.
const TextKernels& currentKernels() noexcept;

/// Makes `kernels` the set in use from now on. For tests and benchmarks, which so reach every set on one machine.
void useKernels(const TextKernels& kernels) noexcept;

} // namespace tq::detail
