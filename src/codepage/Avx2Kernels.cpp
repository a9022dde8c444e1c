#include "codepage/Avx2Kernels.h"

#include "codepage/Avx2Text.h"
#include "codepage/BlockKernels.h"
#include "codepage/CharacterSteps.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstdint>
#include <cstring>

namespace tq::detail {

#if defined(__x86_64__)

namespace {

constexpr std::size_t kStep = kAvx2Step;
constexpr std::size_t kHalfStep = kHalfAvx2Step;
constexpr std::size_t kLanes = kAvx2Lanes;
// How far the end of a plain text is looked for. An escape that comes later makes the look useless.
constexpr std::size_t kMostShort = 2048;

// Where the characters of a step are written depends on the escapes in it. Where the next step begins does not, unless
// an escape runs across the border: so the processor can load the next step while this one is still being worked on.
__attribute__((target("avx2"))) TextProgress widen(const char* const begin, const char* end, wchar_t* const outBegin) {
    constexpr std::size_t kReadAfterBackslash = 2 * kStep + kMifEscapeLength;
    const __m256i backslash = _mm256_set1_epi8('\\');
    const char* src = begin;
    wchar_t* out = outBegin;
    while (distance(src, end) >= kStep) {
        const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src));
        auto mask = static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(bytes, backslash)));
        if (mask != 0 && distance(src, end) < kReadAfterBackslash)
            break;
        widenStep(src, out);
        const char* next = src + kStep;
        out += kStep; // Always the place of `next`.
        for (; mask != 0; mask &= mask - 1) {
            const char* const escape = src + std::countr_zero(mask);
            const char* after = escape;
            wchar_t* escapeOut = out - distance(escape, next);
            if (const int value = readableUnicodeEscapeValue(escape); value != kNoEscape) {
                *escapeOut++ = static_cast<wchar_t>(value);
                after += kUnicodeEscapeLength;
            } else {
                stepNarrowToWide(after, escapeOut);
            }
            if (after == escape + 1)
                continue; // a backslash that is in its place already
            widenStep(after, escapeOut);
            out -= distance(escape, after) - 1;
            if (after > next) [[unlikely]] { // as by an escape that begins at byte 30 of the step
                out += distance(next, after);
                next = after;
            }
        }
        src = next;
    }
    return {distance(begin, src), static_cast<std::size_t>(out - outBegin)};
}

struct EscapedForm {
    static std::size_t sizeOf(wchar_t c) { return c > kHighestAscii ? kUnicodeEscapeLength : 1; }
    static void step(const wchar_t*& src, char*& out) { stepWideToNarrow(src, out); }
};
using NarrowCursor = WideCursor<EscapedForm>;

// Writes the sixteen characters at `src`. `bytes` is their packed form, which is right for all but those of the set
// `special`: each of these is converted anew, and the packed bytes that follow it are then moved to follow the result.
// Returns the end of what was written; up to sixteen bytes of scratch may follow it.
__attribute__((target("avx2"))) inline char* narrowHalfStep(const wchar_t* src, __m128i bytes, std::uint32_t special,
                                                            char* out) {
    static constexpr char kMoveDown[2 * kHalfStep] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), bytes);
    char* end = out + kHalfStep;
    for (; special != 0; special &= special - 1) {
        const auto place = static_cast<std::size_t>(std::countr_zero(special));
        const wchar_t* character = src + place;
        char* to = end - (kHalfStep - place);
        stepWideToNarrow(character, to);
        const auto* down = reinterpret_cast<const __m128i*>(kMoveDown + place + 1);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_shuffle_epi8(bytes, _mm_loadu_si128(down)));
        end = to + (kHalfStep - place - 1);
    }
    return end;
}

// Register after register on its boundary, each looked into before the next one is read.
__attribute__((target("avx2"), no_sanitize("address", "thread"))) void narrowSteps(NarrowCursor& at) {
    for (;;) {
        const wchar_t* src = at.src;
        const wchar_t* const stop = src + std::min(at.left, at.room) / kStep * kStep;
        char* out = at.out;
        std::uint32_t special = 0;
        __m256i fourth = _mm256_setzero_si256();
        __m256i bytes = fourth;
        for (; src != stop; src += kStep, out += kStep) {
            const auto* from = reinterpret_cast<const __m256i*>(src);
            _mm_prefetch(reinterpret_cast<const char*>(src + kReadAhead), _MM_HINT_T0);
            _mm_prefetch(reinterpret_cast<const char*>(src + kReadAhead + kHalfStep), _MM_HINT_T0);
            const __m256i first = _mm256_load_si256(from);
            if (holdsZero(first))
                break;
            const __m256i second = _mm256_load_si256(from + 1);
            if (holdsZero(second))
                break;
            const __m256i third = _mm256_load_si256(from + 2);
            if (holdsZero(third))
                break;
            fourth = _mm256_load_si256(from + 3);
            bytes = packed(first, second, third, fourth);
            special = notPositive(bytes);
            if (special != 0)
                break;
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), bytes);
        }
        const auto done = static_cast<std::size_t>(src - at.src);
        at.advance(done, done);
        const auto escapes = static_cast<std::size_t>(std::popcount(special));
        if (escapes == 0 || holdsZero(fourth) || at.room < kStep + kHalfStep + escapes * (kUnicodeEscapeLength - 1))
            return;
        out = narrowHalfStep(src, _mm256_castsi256_si128(bytes), special & 0xFFFF, out);
        out = narrowHalfStep(src + kHalfStep, _mm256_extracti128_si256(bytes, 1), special >> kHalfStep, out);
        at.advance(kStep, static_cast<std::size_t>(out - at.out));
    }
}

__attribute__((target("avx2"))) inline __m128i packedEight(__m256i characters) {
    const __m128i words = _mm_packs_epi32(_mm256_castsi256_si128(characters), _mm256_extracti128_si256(characters, 1));
    return _mm_packus_epi16(words, words);
}

// The plain characters from `src` to the end of the register that it lies in. False where there are none, and where
// there may be no room for eight. Where the next register begins does not depend on the text, as long as it is plain.
__attribute__((target("avx2"), no_sanitize("address", "thread"))) inline bool narrowRegister(NarrowCursor& at) {
    if (at.room < kLanes)
        return false;
    const std::size_t before = reinterpret_cast<std::uintptr_t>(at.src) / sizeof(wchar_t) % kLanes;
    const __m128i bytes = packedEight(_mm256_load_si256(reinterpret_cast<const __m256i*>(at.src - before)));
    const auto ours = static_cast<std::uint64_t>(_mm_cvtsi128_si64(bytes)) >> (8 * before);
    // Nothing depends on what follows the text, which may have no value.
    const std::size_t present = std::min(kLanes - before, at.left);
    const std::uint32_t special = notPositive(_mm256_castsi128_si256(bytes)) >> before & ((1U << present) - 1);
    const std::size_t plain = special == 0 ? present : static_cast<std::size_t>(std::countr_zero(special));
    std::memcpy(at.out, &ours, kLanes);
    if (plain >= present) [[likely]]
        at.advance(present, present);
    else
        at.advance(plain, plain);
    return plain != 0;
}

__attribute__((target("avx2"))) TextProgress narrow(const wchar_t* src, std::size_t limit, char* out,
                                                    std::size_t room) noexcept {
    if (reinterpret_cast<std::uintptr_t>(src) % sizeof(wchar_t) != 0)
        return {};
    NarrowCursor at{src, limit, out, room};
    bool goesOn = true;
    while (goesOn && !isOnBoundary(at.src))
        goesOn = at.left != 0 && (narrowRegister(at) || at.step());
    if (at.left >= kStep && goesOn)
        narrowSteps(at);
    while (goesOn)
        goesOn = at.left != 0 && (narrowRegister(at) || at.step());
    return {static_cast<std::size_t>(at.src - src), static_cast<std::size_t>(at.out - out)};
}

__attribute__((target("avx2"), no_sanitize("address", "thread"))) inline std::uint32_t
endsAndBackslashes(const char* boundary) {
    const __m256i bytes = _mm256_load_si256(reinterpret_cast<const __m256i*>(boundary));
    const __m256i ends = _mm256_cmpeq_epi8(bytes, _mm256_setzero_si256());
    const __m256i backslashes = _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8('\\'));
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_or_si256(ends, backslashes)));
}

// The characters 0 to `count` - 1, eight at a time; the last eight overlap those before them.
template <class Eight, class One>
__attribute__((target("avx2"))) inline void inOverlappingSteps(std::size_t count, Eight eight, One one) {
    if (count < kLanes) {
        for (std::size_t i = 0; i < count; ++i)
            one(i);
        return;
    }
    for (std::size_t i = 0; i + kLanes < count; i += kLanes)
        eight(i);
    eight(count - kLanes);
}

__attribute__((target("avx2"))) inline void widenShort(const char* src, std::size_t count, wchar_t* out) {
    const auto eight = [&](std::size_t i) __attribute__((target("avx2"))) {
        const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src + i));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), _mm256_cvtepu8_epi32(bytes));
    };
    inOverlappingSteps(count, eight, [&](std::size_t i) { out[i] = byteOf(src[i]); });
}

// A text of more than 32 characters, of which the first `seen` are plain; `src + seen` is on a boundary.
__attribute__((target("avx2"), noinline)) std::size_t
longerNarrowToWide(const char* src, std::size_t seen, std::size_t limit, wchar_t* out, std::size_t room) noexcept {
    const std::size_t most = std::min(limit, kMostShort);
    std::size_t count = seen;
    std::uint32_t stops = 0;
    for (; stops == 0 && most - count >= kStep; count += kStep)
        stops = endsAndBackslashes(src + count);
    if (stops != 0)
        count -= kStep - static_cast<std::size_t>(std::countr_zero(stops));
    else if (count < most) // Nothing depends on what follows the text.
        count += static_cast<std::size_t>(
            std::countr_zero(endsAndBackslashes(src + count) | ~std::uint32_t{0} << (most - count)));
    if (count > room || (count < limit && src[count] != 0))
        return kNotShort;
    assert(count > kStep);
    for (std::size_t i = 0; i < count - kStep; i += kStep)
        widenStep(src + i, out + i);
    widenStep(src + count - kStep, out + count - kStep); // overlaps the step before
    return count;
}

__attribute__((target("avx2"))) std::size_t shortNarrowToWide(const char* src, std::size_t limit, wchar_t* out,
                                                              std::size_t room) noexcept {
    const std::size_t before = reinterpret_cast<std::uintptr_t>(src) % kStep;
    const std::size_t seen = kStep - before;
    // Nothing depends on what follows the text, which may have no value.
    const std::uint64_t wanted = limit < 2 * kStep ? (std::uint64_t{1} << limit) - 1 : ~std::uint64_t{0};
    std::uint64_t stops = endsAndBackslashes(src - before) >> before & wanted;
    if (stops == 0 && limit > seen)
        stops = std::uint64_t{endsAndBackslashes(src + seen)} << seen & wanted;
    const std::size_t count = std::min(limit, static_cast<std::size_t>(std::countr_zero(stops)));
    if (count > kStep)
        return longerNarrowToWide(src, seen, limit, out, room);
    if (count > room || (count < limit && src[count] != 0))
        return kNotShort;
    widenShort(src, count, out);
    return count;
}

// Of eight characters on a boundary those that are not plain, and the backslashes.
__attribute__((target("avx2"), no_sanitize("address", "thread"))) inline std::uint64_t
specialsAndBackslashes(const wchar_t* boundary) {
    const __m128i bytes = packedEight(_mm256_load_si256(reinterpret_cast<const __m256i*>(boundary)));
    const __m128i special = _mm_cmplt_epi8(bytes, _mm_set1_epi8(1));
    const __m128i backslashes = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'));
    return static_cast<std::uint64_t>(_mm_movemask_epi8(_mm_or_si128(special, backslashes))) % (1U << kLanes);
}

__attribute__((target("avx2"))) inline void narrowShort(const wchar_t* src, std::size_t count, char* out) {
    const auto eight = [&](std::size_t i) __attribute__((target("avx2"))) {
        const __m256i characters = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + i));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + i), packedEight(characters));
    };
    inOverlappingSteps(count, eight, [&](std::size_t i) { out[i] = static_cast<char>(src[i]); });
}

__attribute__((target("avx2"))) std::size_t shortWideToNarrow(const wchar_t* src, std::size_t limit, char* out,
                                                              std::size_t room) noexcept {
    if (limit > kStep || reinterpret_cast<std::uintptr_t>(src) % sizeof(wchar_t) != 0)
        return kNotShort;
    const std::size_t before = reinterpret_cast<std::uintptr_t>(src) / sizeof(wchar_t) % kLanes;
    const std::uint64_t wanted = (std::uint64_t{1} << limit) - 1;
    std::uint64_t stops = specialsAndBackslashes(src - before) >> before & wanted;
    for (std::size_t seen = kLanes - before; stops == 0 && seen < limit; seen += kLanes)
        stops = specialsAndBackslashes(src + seen) << seen & wanted;
    const std::size_t count = std::min(limit, static_cast<std::size_t>(std::countr_zero(stops)));
    if (count > room || (count < limit && src[count] != 0))
        return kNotShort;
    narrowShort(src, count, out);
    return count;
}

wchar_t* narrowToWide(const char* src, const char* end, wchar_t* out) noexcept {
    const TextProgress start = widen(src, end, out);
    return sse2Kernels()->narrowToWide(src + start.taken, end, out + start.written);
}

} // namespace

const TextKernels* avx2Kernels() noexcept {
    static const TextKernels kernels = [] {
        TextKernels set = *sse2Kernels();
        set.narrowToWide = narrowToWide;
        set.wideToNarrowUnmeasured = narrow;
        set.shortNarrowToWide = shortNarrowToWide;
        set.shortWideToNarrow = shortWideToNarrow;
        set.utf8ToWide = avx2Utf8ToWide;
        set.utf8ToWideSize = avx2Utf8ToWideSize;
        set.wideToUtf8Unmeasured = avx2WideToUtf8;
        return set;
    }();
    return &kernels;
}

#else

const TextKernels* avx2Kernels() noexcept {
    return nullptr;
}

#endif

} // namespace tq::detail
