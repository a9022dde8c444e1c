#pragma once

#include <cstddef>

// The inner loops of the text conversions, each in three forms that give the same characters: the plain one walks
// character by character and is what the others must agree with, the word form takes stretches of ASCII in steps of
// 64-bit words, and the wide one in steps of 16 with the processor's vector registers, where it has them that this
// knows (else it is the word form).
//
// All convert [src, end), which holds no 0 and, for the escaped form, ends behind every escape that it begins (see
// endBehindLastEscape); they return the end of what they wrote and write no terminator. The caller's room:
//   narrowToWide, utf8ToWide   one element per source byte, and one more
//   wideToNarrow, wideToUtf8   the size of the same name, and one more
// Up to that room they may write scratch behind their result.

namespace tq::detail {

struct TextKernels {
    wchar_t* (*narrowToWide)(const char* src, const char* end, wchar_t* out) noexcept;
    char* (*wideToNarrow)(const wchar_t* src, const wchar_t* end, char* out) noexcept;
    wchar_t* (*utf8ToWide)(const char* src, const char* end, wchar_t* out) noexcept;
    char* (*wideToUtf8)(const wchar_t* src, const wchar_t* end, char* out) noexcept;
};

extern const TextKernels kPlainKernels;
extern const TextKernels kWordKernels;
extern const TextKernels kWideKernels;

/// The bytes that wideToNarrow writes for `count` characters, at most INT_MAX of them.
std::size_t wideToNarrowSize(const wchar_t* src, std::size_t count) noexcept;
/// The bytes that wideToUtf8 writes for `count` characters, at most INT_MAX of them.
std::size_t wideToUtf8Size(const wchar_t* src, std::size_t count) noexcept;

} // namespace tq::detail
