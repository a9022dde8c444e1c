#pragma once

#include "fltcvt/NarrowDigits.h"
#include "fltcvt/Schubfach.h"
#include "fltcvt/UInt128.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tq::detail {

/// Narrow text straight from the value: the text of FloatText.h, or false with nothing written where another way has to
/// be taken. Counts are 0 or more. The long forms take what the others leave, all numbers but those that are not normal
/// and a few whose rounding is in doubt: "%.16e" of random numbers in 237 instructions in place of 528.
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
        writeExponent(p + 2 + nfrac, exponent, expChar);
        return true;
    }

    /// With 8 to 16 places.
    static bool tryLongE(char* out, double d, int nfrac, int expChar) noexcept {
        Digits digits;
        if (nfrac < kWordDigits || nfrac >= kMaxFastDigits || !digits.tryFrom(magnitude(d), nfrac + 1))
            return false;
        char* p = writeSign(out, d);
        p[0] = digits.first;
        p[1] = '.';
        storeSome(p + 2, digits.others, nfrac);
        writeExponent(p + 2 + nfrac, digits.exponent, expChar);
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
        char* const p = writeSign(out, d);
        *writeWithPoint(p, words.upperText(), words.significant(), exponent + 1) = '\0';
        return true;
    }

    /// With 1 to 17 digits and `style` 0 or less.
    static bool tryLongG(char* out, double d, int nsig, int expChar, int style) noexcept {
        constexpr int kLeastExponent = -4; // that is written without one
        Digits digits;
        if (style > 0 || nsig < 1 || nsig > kMaxFastDigits || !digits.tryFrom(magnitude(d), nsig))
            return false;
        char* p = writeSign(out, d);
        if (digits.exponent < kLeastExponent || digits.exponent >= nsig) {
            *p++ = digits.first;
            p = writeFraction(p, digits, 1);
            writeExponent(p, digits.exponent, expChar);
            return true;
        }
        if (digits.exponent >= 0) {
            const int whole = digits.exponent + 1;
            if (digits.count <= kMostAtOnce && whole < kWordDigits) [[likely]] {
                p = writeWithPoint(p, digits.others << 8 | static_cast<unsigned char>(digits.first), digits.count,
                                   whole);
            } else {
                *p++ = digits.first;
                storeSome(p, digits.others, digits.exponent);
                p = writeFraction(p + digits.exponent, digits, whole);
            }
        } else {
            store<std::uint32_t>(p, 0x30302E30); // 0.00; the text has four characters with its terminator
            if (digits.exponent == kLeastExponent)
                p[4] = '0';
            p += 1 - digits.exponent;
            *p++ = digits.first;
            storeSome(p, digits.others, digits.count - 1);
            p += digits.count - 1;
        }
        *p = '\0';
        return true;
    }

private:
    static constexpr int kWordDigits = 8;
    static constexpr int kMostAtOnce = 15; // digits that are stored at once, with a point among them

    // A number rounded to some digits, with zeros after them to make seventeen.
    struct Digits {
        char first;
        UInt128 others;
        int count; // up to the last that is not 0
        int exponent;

        bool tryFrom(double v, int wanted) noexcept {
            constexpr std::uint64_t kFirstDigit = smallPowerOfTen(kMaxFastDigits - 1);
            std::uint64_t digits = 0;
            if (!isNormal(v) || !tryRoundedDigits(v, wanted, Rule::kToEven, digits, exponent))
                return false;
            const std::uint64_t filled = digits * smallPowerOfTen(kMaxFastDigits - wanted);
            const std::uint64_t upper = filled / kFirstDigit;
            const SixteenDigits lower(filled - upper * kFirstDigit);
            first = static_cast<char>('0' + upper);
            others = UInt128{lower.lowerText()} << 64 | lower.upperText();
            count = 1 + lower.significant();
            return true;
        }
    };

    // Digits, the first in the lowest byte: the first `whole`, and after a point those up to number `count`, if there
    // are any; at most kMostAtOnce then, and the point among the first eight characters. It is put in before the text
    // is stored, all at once: how many digits are before and after it varies, the length of the text less.
    static char* writeWithPoint(char* out, UInt128 digits, int count, int whole) noexcept {
        int length = whole;
        if (count > whole) {
            const auto head = static_cast<std::uint64_t>(digits);
            const std::uint64_t atPoint = std::uint64_t{1} << (8 * whole);
            const std::uint64_t start = (head & (atPoint - 1)) | atPoint * '.' | (head & (0 - atPoint)) << 8;
            digits = (digits >> 64 << 72) | UInt128{head >> 56} << 64 | start;
            length = count + 1;
        }
        storeSome(out, digits, length);
        return out + length;
    }

    // The point and the digits after the first `whole`, if there are any.
    static char* writeFraction(char* out, const Digits& digits, int whole) noexcept {
        if (digits.count <= whole)
            return out;
        *out++ = '.';
        storeSome(out, digits.others >> (8 * (whole - 1)), digits.count - whole);
        return out + digits.count - whole;
    }

    // With the terminator.
    static void writeExponent(char* out, int exponent, int expChar) noexcept {
        out[0] = static_cast<char>(expChar);
        out[1] = exponent < 0 ? '-' : '+';
        store<std::uint32_t>(out + 2, kExponentTexts[static_cast<std::size_t>(exponent < 0 ? -exponent : exponent)]);
    }

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

    // The first `count` characters of sixteen.
    static void storeSome(char* out, UInt128 text, int count) noexcept {
        if (count <= kWordDigits) {
            storeSome(out, static_cast<std::uint64_t>(text), count);
            return;
        }
        store<std::uint64_t>(out, static_cast<std::uint64_t>(text));
        store<std::uint64_t>(out + count - kWordDigits,
                             static_cast<std::uint64_t>(text >> (8 * (count - kWordDigits))));
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
