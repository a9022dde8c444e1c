#pragma once

#include "codepage/CharacterSteps.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

// A block of neighbouring characters in registers. All kinds, this one and those of Sse2Block.h and NeonBlock.h, answer
// the same questions; a set of positions in the block is a mask that only firstOf and withoutFirst look into.

namespace tq::detail {

/// Eight characters, for any processor.
struct WordBlock {
    static constexpr std::size_t kSize = 8;
    using Mask = std::uint64_t; // The highest bit of byte i stands for position i.

    static std::size_t firstOf(Mask mask) { return static_cast<std::size_t>(std::countr_zero(mask)) / 8; }
    static Mask withoutFirst(Mask mask) { return mask & (mask - 1); }

    struct Narrow {
        explicit Narrow(const char* p) {
            for (std::size_t i = 0; i < kSize; ++i)
                m_bytes |= std::uint64_t{byteOf(p[i])} << (8 * i);
        }

        Mask backslashes() const {
            const std::uint64_t difference = m_bytes ^ (kOnes * '\\');
            // Exact for every byte: the sum of seven bits never carries into the next one.
            return ~(((difference & ~kHighs) + ~kHighs) | difference) & kHighs;
        }
        Mask aboveAscii() const { return m_bytes & kHighs; }
        void widenTo(wchar_t* out) const {
            for (std::size_t i = 0; i < kSize; ++i)
                out[i] = static_cast<wchar_t>((m_bytes >> (8 * i)) & 0xFF);
        }

    private:
        static constexpr std::uint64_t kOnes = 0x0101010101010101;
        static constexpr std::uint64_t kHighs = 0x8080808080808080;

        std::uint64_t m_bytes = 0;
    };

    struct Wide {
        explicit Wide(const wchar_t* p) : m_characters(p) {
            for (std::size_t i = 0; i < kSize; ++i) {
                m_bytes |= (static_cast<std::uint64_t>(p[i]) & 0xFF) << (8 * i);
                m_notAscii |= std::uint64_t{!isAscii(p[i])} << (8 * i + 7);
            }
        }

        Mask notAscii() const { return m_notAscii; }
        void narrowTo(char* out) const {
            for (std::size_t i = 0; i < kSize; ++i)
                out[i] = static_cast<char>(m_bytes >> (8 * i));
        }
        char* toUtf8(char* out) const {
            const wchar_t* p = m_characters;
            for (std::size_t i = 0; i < kSize; ++i)
                stepWideToUtf8(p, out);
            return out;
        }

    private:
        const wchar_t* m_characters;
        std::uint64_t m_bytes = 0;
        Mask m_notAscii = 0;
    };

    static std::uint32_t countAbove(const wchar_t* p, std::size_t count, std::int32_t limit) {
        std::uint32_t above = 0;
        for (std::size_t i = 0; i < count; ++i)
            above += signedCodeOf(p[i]) > limit ? 1U : 0U;
        return above;
    }
};

} // namespace tq::detail
