#pragma once

#include "fltcvt/NarrowDigits.h"
#include "fltcvt/Schubfach.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tq::detail {

/// Narrow text of everyday numbers straight from their value: the text of FloatText.h, or false with nothing written
/// where another way has to be taken. Counts are 0 or more.
class FastText {
public:
    /// Numbers below 10^7 with 1 to 8 places.
    static bool tryF(char* out, double d, int nfrac) noexcept {
        constexpr double kLimit = 1e7; // with 8 places no more than the 17 digits that rounding gives
        const double v = magnitude(d);
        std::uint64_t scaled = 0;
        if (nfrac < 1 || nfrac > kWordDigits || !(v < kLimit) || !isNormal(v) ||
            !tryRoundedAt<roundedByUpperHalf>(v, nfrac, Rule::kToEven, scaled))
            return false;
        // The integer part without a division; rounding may have carried into it.
        auto integer = static_cast<std::uint32_t>(v);
        auto fraction = static_cast<std::uint32_t>(scaled - std::uint64_t{integer} * power(nfrac));
        const bool isCarry = fraction == power(nfrac);
        integer += isCarry ? 1 : 0;
        fraction = isCarry ? 0 : fraction;

        const SixteenDigits digits(integer, fraction * power(kWordDigits - nfrac));
        const int length = digitCount(integer | 1);
        char* p = writeSign(out, d);
        storeSome(p, digits.upperText() >> (8 * (kWordDigits - length)), length);
        p += length;
        *p++ = '.';
        storeSome(p, digits.lowerText(), nfrac);
        p[nfrac] = '\0';
        return true;
    }

    /// With 2 to 7 places.
    static bool tryE(char* out, double d, int nfrac, int expChar) noexcept {
        const double v = magnitude(d);
        std::uint64_t digits = 0;
        int exponent = 0;
        if (nfrac < 2 || nfrac >= kWordDigits || !isNormal(v) ||
            !tryRoundedDigits<roundedByUpperHalf>(v, nfrac + 1, Rule::kToEven, digits, exponent))
            return false;
        const SixteenDigitsInWords words(static_cast<std::uint32_t>(digits) * power(kWordDigits - 1 - nfrac), 0);
        char* p = writeSign(out, d);
        const std::uint64_t text = words.upperText();
        p[0] = static_cast<char>(text);
        p[1] = '.';
        store<std::uint64_t>(p + 2, text >> 8); // what is too much lies within the room of the exponent
        p += 2 + nfrac;
        p[0] = static_cast<char>(expChar);
        p[1] = exponent < 0 ? '-' : '+';
        store<std::uint32_t>(p + 2, kExponentTexts[static_cast<std::size_t>(exponent < 0 ? -exponent : exponent)]);
        return true;
    }

    /// With 1 to 8 digits and `style` 0 or less, numbers of 1 or more that are not written with an exponent.
    static bool tryG(char* out, double d, int nsig, int style) noexcept {
        const double v = magnitude(d);
        std::uint64_t digits = 0;
        int exponent = 0;
        if (style > 0 || nsig < 1 || nsig > kWordDigits || !(v >= 1) || !isNormal(v) ||
            !tryRoundedDigits<roundedByUpperHalf>(v, nsig, Rule::kToEven, digits, exponent) || exponent >= nsig)
            return false;
        const SixteenDigits words(static_cast<std::uint32_t>(digits) * power(kWordDigits - nsig), 0);
        const int whole = exponent + 1;
        const int count = words.significant();
        const std::uint64_t text = words.upperText();
        char* p = writeSign(out, d);
        storeSome(p, text, whole);
        p += whole;
        if (count > whole) {
            *p++ = '.';
            storeSome(p, text >> (8 * whole), count - whole);
            p += count - whole;
        }
        *p = '\0';
        return true;
    }

private:
    static constexpr int kWordDigits = 8;

    template <class Word>
    static void store(char* out, std::uint64_t text) noexcept {
        const auto word = static_cast<Word>(text);
        std::memcpy(out, &word, sizeof word);
    }

    // The first `count` characters of eight, in two moves that overlap; nothing beyond them is written.
    static void storeSome(char* out, std::uint64_t text, int count) noexcept {
        if (count >= 4) {
            store<std::uint32_t>(out, text);
            store<std::uint32_t>(out + count - 4, text >> (8 * (count - 4)));
        } else if (count >= 2) {
            store<std::uint16_t>(out, text);
            store<std::uint16_t>(out + count - 2, text >> (8 * (count - 2)));
        } else if (count == 1) {
            *out = static_cast<char>(text);
        }
    }

    static std::uint32_t power(int k) noexcept { return static_cast<std::uint32_t>(smallPowerOfTen(k)); }

    // True for the numbers that all these notations treat alike.
    static bool isNormal(double v) noexcept {
        return static_cast<unsigned>(exponentField(v) - 1) < static_cast<unsigned>(kExponentMask - 1);
    }

    // Of normal numbers, either way.
    static constexpr int kLargestNormalExponent = 308;

    // The three digits of an exponent without its sign, and the terminator.
    static constexpr std::array<std::uint32_t, kLargestNormalExponent + 1> kExponentTexts = [] {
        std::array<std::uint32_t, kLargestNormalExponent + 1> texts{};
        for (std::uint32_t i = 0; i <= kLargestNormalExponent; ++i)
            texts[i] = 0x303030 + (i / 100 | i / 10 % 10 << 8 | i % 10 << 16);
        return texts;
    }();

    static char* writeSign(char* out, double d) noexcept {
        *out = '-';
        return out + (bitsOf(d) >> 63);
    }

    static double magnitude(double d) noexcept { return std::bit_cast<double>(bitsOf(d) & ~kSignBit); }
};

} // namespace tq::detail
