#include "codepage/BlockKernels.h"

#include "codepage/CharacterSteps.h"
#include "codepage/NeonBlock.h"
#include "codepage/Sse2Block.h"
#include "codepage/TextBlocks.h"
#include "codepage/TextMeasure.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tq::detail {

namespace {

template <class Char>
std::size_t charactersLeft(const Char* src, const Char* end) {
    return src < end ? static_cast<std::size_t>(end - src) : 0;
}

// The whole block is widened before its backslashes are looked at: one that begins no escape to decode is then already
// in place, and the others only move the point from which the next block is written.
template <class Block>
wchar_t* narrowToWideBlocks(const char* src, const char* end, wchar_t* out) noexcept {
    while (charactersLeft(src, end) >= Block::kSize) {
        const typename Block::Narrow block(src);
        block.widenTo(out);
        std::size_t taken = Block::kSize;
        const char* next = src + Block::kSize;
        wchar_t* nextOut = out + Block::kSize;
        for (auto mask = block.backslashes(); mask != 0; mask = Block::withoutFirst(mask)) {
            taken = Block::firstOf(mask);
            const char* escape = src + taken;
            wchar_t* escapeOut = out + taken;
            stepNarrowToWide(escape, escapeOut);
            if (escape != src + taken + 1) {
                next = escape;
                nextOut = escapeOut;
                break;
            }
        }
        src = next;
        out = nextOut;
    }
    return kPlainKernels.narrowToWide(src, end, out);
}

// Every character becomes at least one byte, so a block's worth of room is left wherever a whole block is.
template <class Block>
char* wideToNarrowBlocks(const wchar_t* src, const wchar_t* end, char* out) noexcept {
    while (charactersLeft(src, end) >= Block::kSize) {
        const typename Block::Wide block(src);
        block.narrowTo(out);
        const auto mask = block.notAscii();
        if (mask == 0) {
            src += Block::kSize;
            out += Block::kSize;
            continue;
        }
        src += Block::firstOf(mask);
        out += Block::firstOf(mask);
        do
            stepWideToNarrow(src, out);
        while (src < end && !isAscii(*src));
    }
    return kPlainKernels.wideToNarrow(src, end, out);
}

// East Asian text: characters of three bytes, as long as one follows the other. Four bytes are read at a time.
void takeThreeByteRun(const char*& src, const char* end, wchar_t*& out) {
    if constexpr (std::endian::native == std::endian::little) {
        std::uint32_t bytes = 0;
        for (; charactersLeft(src, end) >= sizeof bytes; src += 3) {
            std::memcpy(&bytes, src, sizeof bytes);
            if ((bytes & 0xC0C0F0U) != 0x8080E0U)
                break;
            *out++ = static_cast<wchar_t>((bytes & 0x0FU) << 12 | (bytes >> 2 & 0xFC0U) | (bytes >> 16 & 0x3FU));
        }
    }
}

template <class Block>
wchar_t* utf8ToWideBlocks(const char* src, const char* end, wchar_t* out) noexcept {
    while (charactersLeft(src, end) >= Block::kSize) {
        const typename Block::Narrow block(src);
        block.widenTo(out);
        const auto mask = block.aboveAscii();
        const std::size_t taken = mask == 0 ? Block::kSize : Block::firstOf(mask);
        src += taken;
        out += taken;
        takeThreeByteRun(src, end, out);
        while (src < end && !isAscii(byteOf(*src)))
            stepUtf8ToWide(src, out);
    }
    return kPlainKernels.utf8ToWide(src, end, out);
}

// Characters that are dropped need no room, so only a block that is ASCII throughout may be written whole.
template <class Block>
char* wideToUtf8Blocks(const wchar_t* src, const wchar_t* end, char* out) noexcept {
    while (charactersLeft(src, end) >= Block::kSize) {
        const typename Block::Wide block(src);
        if (block.notAscii() == 0) {
            block.narrowTo(out);
            out += Block::kSize;
        } else {
            out = block.toUtf8(out);
        }
        src += Block::kSize;
    }
    return kPlainKernels.wideToUtf8(src, end, out);
}

template <class Block>
std::size_t wideToNarrowSize(const wchar_t* src, std::size_t count) noexcept {
    return count + std::size_t{Block::countAbove(src, count, kHighestAscii)} * (kUnicodeEscapeLength - 1);
}

template <class Block>
std::size_t wideToUtf8Size(const wchar_t* src, std::size_t count) noexcept {
    return count + Block::countAbove(src, count, kHighestAscii) + Block::countAbove(src, count, 0x7FF) -
           std::size_t{Block::countAbove(src, count, 0xFFFF)} * 3;
}

template <class Block>
constexpr TextKernels kBlockKernels = {narrowToWideBlocks<Block>,
                                       wideToNarrowBlocks<Block>,
                                       utf8ToWideBlocks<Block>,
                                       wideToUtf8Blocks<Block>,
                                       wideToNarrowSize<Block>,
                                       utf8ToWideSize,
                                       wideToUtf8Size<Block>,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr};

} // namespace

constinit const TextKernels kPortableKernels = kBlockKernels<WordBlock>;

const TextKernels* sse2Kernels() noexcept {
#if defined(__SSE2__)
    return &kBlockKernels<Sse2Block>;
#else
    return nullptr;
#endif
}

const TextKernels* neonKernels() noexcept {
#if defined(__aarch64__)
    return &kBlockKernels<NeonBlock>;
#else
    return nullptr;
#endif
}

} // namespace tq::detail
