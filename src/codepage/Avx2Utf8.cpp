#include "codepage/Avx2Kernels.h"
#include "codepage/Avx2Text.h"
#include "codepage/BlockKernels.h"
#include "codepage/CharacterSteps.h"
#include "codepage/TextMeasure.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__)

namespace tq::detail {

namespace {

__attribute__((target("avx2"))) inline __m256i field(__m256i lanes, int mask) {
    return _mm256_and_si256(lanes, _mm256_set1_epi32(mask));
}

__attribute__((target("avx2"))) inline __m256i matches(__m256i lanes, int mask, int value) {
    return _mm256_cmpeq_epi32(field(lanes, mask), _mm256_set1_epi32(value));
}

__attribute__((target("avx2"))) inline __m256i isAbove(__m256i lanes, int limit) {
    return _mm256_cmpgt_epi32(lanes, _mm256_set1_epi32(limit));
}

__attribute__((target("avx2"))) inline std::uint32_t maskOf(__m256i bytes) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes));
}

// --- UTF-8 to wide ---

// For a set of places in eight bytes: these places, ascending.
constexpr auto kPlaces = [] {
    std::array<std::array<std::uint8_t, 8>, 256> table{};
    for (unsigned set = 0; set < table.size(); ++set) {
        std::size_t count = 0;
        for (std::uint8_t place = 0; place < 8; ++place) {
            if ((set >> place & 1) != 0)
                table[set][count++] = place;
        }
    }
    return table;
}();

// The lanes' lowest three bytes, read from a place where a character begins, as that character.
__attribute__((target("avx2"))) inline __m256i decoded(__m256i bytes) {
    const __m256i one = field(bytes, 0xFF);
    const __m256i two =
        _mm256_or_si256(field(_mm256_slli_epi32(bytes, 6), 0x7C0), field(_mm256_srli_epi32(bytes, 8), 0x3F));
    const __m256i three = _mm256_or_si256(
        _mm256_or_si256(field(_mm256_slli_epi32(bytes, 12), 0xF000), field(_mm256_srli_epi32(bytes, 2), 0xFC0)),
        field(_mm256_srli_epi32(bytes, 16), 0x3F));
    const __m256i atMostTwo = _mm256_blendv_epi8(one, two, matches(bytes, 0xC0C0, 0x80C0));
    return _mm256_blendv_epi8(atMostTwo, three, matches(bytes, 0xC0C0E0, 0x8080E0));
}

// The characters that begin at these places in the eight bytes at `src`. Reads sixteen bytes.
__attribute__((target("avx2"))) inline void decodeEightBytes(const char* src, std::uint32_t starts, wchar_t* out) {
    const __m256i toFour = _mm256_setr_epi8(0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12, //
                                            0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12);
    const __m128i places = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(kPlaces[starts].data()));
    const __m256i firsts = _mm256_shuffle_epi8(_mm256_cvtepu8_epi32(places), toFour);
    const __m256i order = _mm256_add_epi8(firsts, _mm256_set1_epi32(0x03020100));
    const __m256i bytes = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(src)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), decoded(_mm256_shuffle_epi8(bytes, order)));
}

// Eight characters of three bytes each. False where there are others.
__attribute__((target("avx2"))) inline bool decodeThreeByteRun(const char* src, wchar_t* out) {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 12));
    // The bytes of a character from the last to the first, so that their bits lie in the order of their worth.
    const __m256i order = _mm256_setr_epi8(2, 1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9, -1, 2, 1, 0, -1, 5, 4, 3,
                                           -1, 8, 7, 6, -1, 11, 10, 9, -1);
    const __m256i bytes = _mm256_shuffle_epi8(_mm256_set_m128i(high, low), order);
    if (~maskOf(matches(bytes, 0xE0C0C0, 0xE08080)) != 0)
        return false;
    const __m256i third = field(bytes, 0x3F);
    const __m256i second = field(_mm256_srli_epi32(bytes, 2), 0xFC0);
    const __m256i first = field(_mm256_srli_epi32(bytes, 4), 0xF000);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm256_or_si256(_mm256_or_si256(first, second), third));
    return true;
}

// A kind of bytes among those of a step, which begins at bit 2, and the last two bytes before it.
class StepMask {
public:
    // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): it does not know comparisons of registers
    void next(std::uint32_t mask) { m_bits = m_bits >> kAvx2Step | std::uint64_t{mask} << 2; }
    void clear() { m_bits = 0; }
    std::uint64_t previous() const { return m_bits << 1; }
    std::uint64_t beforePrevious() const { return m_bits << 2; }

private:
    std::uint64_t m_bits = 0;
};

// Step after step of 32 bytes. A continuation byte belongs to the lead before it, or to that of three bytes of which it
// is the third; every other byte begins a character. What a step ends with is carried into the next one, whose place so
// depends on no byte. Stops after a whole character where fewer bytes are left than a step may read.
__attribute__((target("avx2"))) TextProgress decodeSteps(const char* const begin, const char* end,
                                                         wchar_t* const outBegin) {
    constexpr std::size_t kRead = kAvx2Step - 8 + 16;
    constexpr std::uint32_t kRunStarts = 0x249249; // of eight characters of three bytes
    constexpr std::size_t kRunBytes = 24;
    const char* src = begin;
    wchar_t* out = outBegin;
    StepMask leads, longLeads, continuations;
    std::uint32_t starts = 0;
    while (distance(src, end) >= kRead) {
        const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src));
        const std::uint32_t aboveAscii = maskOf(bytes);
        const std::uint32_t continuation = maskOf(_mm256_cmpgt_epi8(_mm256_set1_epi8(-64), bytes));
        leads.next(aboveAscii & ~continuation);
        longLeads.next(aboveAscii & maskOf(_mm256_cmpgt_epi8(bytes, _mm256_set1_epi8(-33))));
        continuations.next(continuation);
        if (aboveAscii == 0) {
            widenStep(src, out);
            starts = ~0U;
            src += kAvx2Step;
            out += kAvx2Step;
            continue;
        }
        const std::uint64_t reached = leads.previous() | (longLeads.beforePrevious() & continuations.previous());
        starts = ~(continuation & static_cast<std::uint32_t>(reached >> 2));
        if (starts << (kAvx2Step - kRunBytes) == kRunStarts << (kAvx2Step - kRunBytes)) {
            for (; distance(src, end) >= kRead && decodeThreeByteRun(src, out); src += kRunBytes)
                out += kAvx2Lanes;
            starts = kRunStarts << (kAvx2Step - kRunBytes);
            leads.clear();
            longLeads.clear();
            continue;
        }
        for (std::size_t i = 0; i < kAvx2Step; i += 8) {
            const std::uint32_t here = starts >> i & 0xFF;
            decodeEightBytes(src + i, here, out);
            out += std::popcount(here);
        }
        src += kAvx2Step;
    }
    if (src != begin) { // the last character may end in the next step
        src -= 1 + std::countl_zero(starts);
        --out;
        stepUtf8ToWide(src, out);
    }
    return {distance(begin, src), static_cast<std::size_t>(out - outBegin)};
}

// --- wide to UTF-8 ---

struct Utf8Form {
    static std::size_t sizeOf(wchar_t c) {
        const std::int32_t code = signedCodeOf(c);
        return code <= kHighestAscii ? 1 : code <= 0x7FF ? 2 : code <= 0xFFFF ? 3 : 0;
    }
    static void step(const wchar_t*& src, char*& out) { stepWideToUtf8(src, out); }
};
using Utf8Cursor = WideCursor<Utf8Form>;

// Four characters, each in its own four bytes, put together; by the set of those that take more than one byte and, from
// bit 4, of those that take more than two.
struct Together {
    alignas(16) std::array<std::array<std::int8_t, 16>, 256> order{};
    std::array<std::uint8_t, 256> size{};
};

constexpr Together kTogether = [] {
    Together table;
    for (unsigned set = 0; set < 256; ++set) {
        std::size_t size = 0;
        table.order[set].fill(-1);
        for (unsigned i = 0; i < 4; ++i) {
            const unsigned bytes = 1 + (set >> i & 1) + (set >> (4 + i) & 1);
            for (unsigned byte = 0; byte < bytes; ++byte)
                table.order[set][size++] = static_cast<std::int8_t>(4 * i + byte);
        }
        table.size[set] = static_cast<std::uint8_t>(size);
    }
    return table;
}();

__attribute__((target("avx2"))) inline char* putTogether(__m128i apart, std::uint32_t set, char* out) {
    const __m128i order = _mm_load_si128(reinterpret_cast<const __m128i*>(kTogether.order[set].data()));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(apart, order));
    return out + kTogether.size[set];
}

constexpr std::size_t kMostBytes = 3 * kAvx2Lanes;    // of a register
constexpr std::size_t kRegisterRoom = kMostBytes + 4; // with the scratch after it

// The eight characters of a register, none above U+FFFF. Of a negative one the low byte is written.
__attribute__((target("avx2"))) inline char* encodeRegister(__m256i characters, char* out) {
    const __m256i isLong = isAbove(characters, kHighestAscii);
    const __m256i isLongest = isAbove(characters, 0x7FF);
    const __m256i two = _mm256_or_si256(
        _mm256_or_si256(_mm256_srli_epi32(characters, 6), field(_mm256_slli_epi32(characters, 8), 0x3F00)),
        _mm256_set1_epi32(0x80C0));
    const __m256i three = _mm256_or_si256(
        _mm256_or_si256(_mm256_srli_epi32(characters, 12), field(_mm256_slli_epi32(characters, 2), 0x3F00)),
        _mm256_or_si256(field(_mm256_slli_epi32(characters, 16), 0x3F0000), _mm256_set1_epi32(0x8080E0)));
    const __m256i apart = _mm256_blendv_epi8(_mm256_blendv_epi8(characters, two, isLong), three, isLongest);
    const auto longs = static_cast<std::uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(isLong)));
    const auto longests = static_cast<std::uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(isLongest)));
    out = putTogether(_mm256_castsi256_si128(apart), (longs & 0xF) | (longests & 0xF) << 4, out);
    return putTogether(_mm256_extracti128_si256(apart, 1), longs >> 4 | (longests & 0xF0), out);
}

__attribute__((target("avx2"))) inline bool isAnyAboveBasicPlane(__m256i characters) {
    return _mm256_movemask_epi8(isAbove(characters, 0xFFFF)) != 0;
}

// Eight characters on a boundary. False where the text ends among them.
__attribute__((target("avx2"), no_sanitize("address", "thread"))) inline bool load(const wchar_t* src,
                                                                                   __m256i& characters) {
    characters = _mm256_load_si256(reinterpret_cast<const __m256i*>(src));
    return !holdsZero(characters);
}

// Register after register on its boundary, each looked into before the next one is read; four at a time while they are
// ASCII. Stops at the end of the text, at a character above U+FFFF and where there may be no room for a register.
__attribute__((target("avx2"), no_sanitize("address", "thread"))) void encodeRegisters(Utf8Cursor& at) {
    const wchar_t* src = at.src;
    char* out = at.out;
    const wchar_t* const end = src + at.left;
    const char* const outEnd = out + at.room;
    const auto hasNext = [&](std::size_t registers) {
        return end - src >= static_cast<std::ptrdiff_t>(registers * kAvx2Lanes) &&
               distance(out, outEnd) >= (registers - 1) * kMostBytes + kRegisterRoom;
    };
    __m256i first, second, third, fourth;
    while (hasNext(4) && load(src, first) && load(src + kAvx2Lanes, second) && load(src + 2 * kAvx2Lanes, third) &&
           load(src + 3 * kAvx2Lanes, fourth)) {
        const __m256i bytes = packed(first, second, third, fourth);
        if (notPositive(bytes) == 0) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), bytes);
            out += kAvx2Step;
        } else {
            if (isAnyAboveBasicPlane(
                    _mm256_max_epi32(_mm256_max_epi32(first, second), _mm256_max_epi32(third, fourth))))
                break;
            // Loaded again: a list of registers would lie on the stack, which not every compiler aligns for them.
            for (std::size_t i = 0; i < 4; ++i)
                out = encodeRegister(_mm256_load_si256(reinterpret_cast<const __m256i*>(src + i * kAvx2Lanes)), out);
        }
        src += kAvx2Step;
    }
    while (hasNext(1) && load(src, first) && !isAnyAboveBasicPlane(first)) {
        out = encodeRegister(first, out);
        src += kAvx2Lanes;
    }
    at.advance(static_cast<std::size_t>(src - at.src), static_cast<std::size_t>(out - at.out));
}

} // namespace

wchar_t* avx2Utf8ToWide(const char* src, const char* end, wchar_t* out) noexcept {
    const TextProgress start = decodeSteps(src, end, out);
    return sse2Kernels()->utf8ToWide(src + start.taken, end, out + start.written);
}

__attribute__((target("avx2"))) std::size_t avx2Utf8ToWideSize(const char* src, std::size_t count) noexcept {
    return countUtf8Characters(src, count);
}

__attribute__((target("avx2"))) TextProgress avx2WideToUtf8(const wchar_t* src, std::size_t limit, char* out,
                                                            std::size_t room) noexcept {
    if (reinterpret_cast<std::uintptr_t>(src) % sizeof(wchar_t) != 0)
        return {};
    Utf8Cursor at{src, limit, out, room};
    bool goesOn = true;
    while (goesOn) {
        if (isOnBoundary(at.src))
            encodeRegisters(at);
        do
            goesOn = at.step();
        while (goesOn && !isOnBoundary(at.src));
    }
    return {static_cast<std::size_t>(at.src - src), static_cast<std::size_t>(at.out - out)};
}

} // namespace tq::detail

#endif
