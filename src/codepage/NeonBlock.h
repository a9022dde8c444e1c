#pragma once

#include "base/NeonMask.h"
#include "codepage/CharacterSteps.h"
#include "codepage/TextBlocks.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__aarch64__)

namespace tq::detail {

/// Sixteen characters in NEON registers.
struct NeonBlock {
    static constexpr std::size_t kSize = 16;
    using Mask = std::uint64_t; // as neonMask() gives it

    static std::size_t firstOf(Mask mask) { return static_cast<std::size_t>(std::countr_zero(mask)) / 4; }
    static Mask withoutFirst(Mask mask) { return mask & (mask - 1); }

    struct Narrow {
        explicit Narrow(const char* p) : m_bytes(vld1q_u8(reinterpret_cast<const std::uint8_t*>(p))) {}

        Mask backslashes() const { return neonMask(vceqq_u8(m_bytes, vdupq_n_u8('\\'))); }
        Mask aboveAscii() const { return neonMask(m_bytes); }
        void widenTo(wchar_t* out) const {
            const uint16x8_t low = vmovl_u8(vget_low_u8(m_bytes));
            const uint16x8_t high = vmovl_high_u8(m_bytes);
            store(out, vmovl_u16(vget_low_u16(low)));
            store(out + 4, vmovl_high_u16(low));
            store(out + 8, vmovl_u16(vget_low_u16(high)));
            store(out + 12, vmovl_high_u16(high));
        }

    private:
        uint8x16_t m_bytes;
    };

    // Narrowed with saturation in two steps, a character above ASCII becomes a byte above it and a negative one becomes
    // 0, which the text itself does not hold.
    struct Wide {
        explicit Wide(const wchar_t* p) : m_characters(p) {
            const int16x8_t low = vqmovn_high_s32(vqmovn_s32(quad(p)), quad(p + 4));
            const int16x8_t high = vqmovn_high_s32(vqmovn_s32(quad(p + 8)), quad(p + 12));
            m_bytes = vqmovun_high_s16(vqmovun_s16(low), high);
        }

        Mask notAscii() const { return neonMask(vorrq_u8(m_bytes, vceqzq_u8(m_bytes))); }
        void narrowTo(char* out) const { vst1q_u8(reinterpret_cast<std::uint8_t*>(out), m_bytes); }
        char* toUtf8(char* out) const {
            for (const wchar_t* p = m_characters; p < m_characters + kSize;) {
                if (takesThreeBytes(quad(p))) {
                    writeThreeBytes(vreinterpretq_u32_s32(quad(p)), out);
                    p += 4;
                    out += 12;
                } else {
                    for (int i = 0; i < 4; ++i)
                        stepWideToUtf8(p, out);
                }
            }
            return out;
        }

    private:
        static bool takesThreeBytes(int32x4_t characters) {
            return vminvq_s32(characters) > 0x7FF && vmaxvq_s32(characters) < 0x10000;
        }

        // Four characters of three bytes each: first every one in its own four bytes, then together.
        static void writeThreeBytes(uint32x4_t characters, char* out) {
            static constexpr std::uint8_t kTogether[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 15, 15, 15, 15};
            const uint32x4_t first = vshrq_n_u32(characters, 12);
            const uint32x4_t second = vandq_u32(vshlq_n_u32(characters, 2), vdupq_n_u32(0x3F00));
            const uint32x4_t third = vandq_u32(vshlq_n_u32(characters, 16), vdupq_n_u32(0x3F0000));
            const uint32x4_t apart = vorrq_u32(vorrq_u32(first, second), vorrq_u32(third, vdupq_n_u32(0x8080E0)));
            const uint8x16_t bytes = vqtbl1q_u8(vreinterpretq_u8_u32(apart), vld1q_u8(kTogether));
            vst1_u8(reinterpret_cast<std::uint8_t*>(out), vget_low_u8(bytes));
            const std::uint32_t lastFour = vgetq_lane_u32(vreinterpretq_u32_u8(bytes), 2);
            std::memcpy(out + 8, &lastFour, sizeof lastFour);
        }

        const wchar_t* m_characters;
        uint8x16_t m_bytes;
    };

    static std::uint32_t countAbove(const wchar_t* p, std::size_t count, std::int32_t limit) {
        const int32x4_t limits = vdupq_n_s32(limit);
        uint32x4_t first = vdupq_n_u32(0); // Two chains of additions, each lane counting up.
        uint32x4_t second = first;
        std::size_t i = 0;
        for (; i + 8 <= count; i += 8) {
            first = vsubq_u32(first, vcgtq_s32(quad(p + i), limits));
            second = vsubq_u32(second, vcgtq_s32(quad(p + i + 4), limits));
        }
        return vaddvq_u32(vaddq_u32(first, second)) + WordBlock::countAbove(p + i, count - i, limit);
    }

private:
    static int32x4_t quad(const wchar_t* p) {
        return vreinterpretq_s32_u8(vld1q_u8(reinterpret_cast<const std::uint8_t*>(p)));
    }
    static void store(wchar_t* out, uint32x4_t characters) {
        vst1q_u8(reinterpret_cast<std::uint8_t*>(out), vreinterpretq_u8_u32(characters));
    }
};

static_assert(sizeof(wchar_t) == 4);

} // namespace tq::detail

#endif
