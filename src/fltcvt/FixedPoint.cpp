// Integer and fraction of everyday numbers each fit a word, or two. Multiplied by 10^16, the fraction shows its next 16
// digits above the binary point.

#include "fltcvt/DigitRequest.h"
#include "fltcvt/Ieee754.h"
#include "fltcvt/NarrowDigits.h"
#include "fltcvt/RoundDigits.h"
#include "fltcvt/UInt128.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace tq::detail {

namespace {

constexpr int kMaxFractionBits = 63;
constexpr int kStep = 16;
constexpr std::uint64_t kStepFactor = smallPowerOfTen(kStep);

struct ExactFixedPoint {
    std::uint64_t integer = 0; ///< Times 2^shift.
    int shift = 0;
    std::uint64_t fraction = 0; ///< Multiple of 2^-bits, at first an odd one or 0.
    int bits = 0;

    bool tryFrom(double v) noexcept {
        const DoubleParts parts(v);
        const int zeros = std::countr_zero(parts.significand);
        const std::uint64_t odd = parts.significand >> zeros;
        const int exponent = parts.exponent + zeros;
        if (exponent >= 0) {
            integer = odd;
            shift = exponent;
            return exponent + static_cast<int>(std::bit_width(odd)) <= 128;
        }
        if (exponent < -kMaxFractionBits)
            return false;
        bits = -exponent;
        integer = odd >> bits;
        fraction = odd & ((std::uint64_t{1} << bits) - 1);
        return true;
    }

    /// The next digits of the fraction, zeros before them included.
    void writeStep(char* out) noexcept {
        const UInt128 product = UInt128{fraction} * kStepFactor;
        SixteenDigits(static_cast<std::uint64_t>(product >> bits)).store(out);
        fraction = static_cast<std::uint64_t>(product) & ((std::uint64_t{1} << bits) - 1);
    }
};

// Digits to `out`, none for 0; returns their end. Writes up to kStep characters beyond it.
char* writeInteger(char* out, std::uint64_t integer) noexcept {
    const std::uint64_t upper = integer / kStepFactor; // 4 digits at most
    if (upper != 0) {
        out = writeInteger(out, upper);
        SixteenDigits(integer % kStepFactor).store(out);
        return out + kStep;
    }
    if (integer == 0)
        return out;
    const int length = digitCount(integer);
    writeUpToSixteen(out, integer, length);
    return out + length;
}

char* writeLargeInteger(char* out, UInt128 integer) noexcept {
    if (integer >> 64 == 0)
        return writeInteger(out, static_cast<std::uint64_t>(integer));
    out = writeLargeInteger(out, integer / kStepFactor);
    SixteenDigits(static_cast<std::uint64_t>(integer % kStepFactor)).store(out);
    return out + kStep;
}

} // namespace

bool tryFixedPointDigits(double v, DigitRequest request, char* out, DigitLayout& layout) noexcept {
    ExactFixedPoint number;
    if (request.kind == DigitRequest::kShortest || !number.tryFrom(v))
        return false;
    char* end = number.shift == 0 ? writeInteger(out, number.integer)
                                  : writeLargeInteger(out, UInt128{number.integer} << number.shift);
    layout.point = static_cast<int>(end - out);
    while (number.fraction != 0 && (end == out || end - out <= wantedDigits(request, layout.point))) {
        number.writeStep(end);
        if (end == out) {
            const auto zeros = std::find_if(out, out + kStep, [](char c) { return c != '0'; }) - out;
            std::memmove(out, out + zeros, static_cast<std::size_t>(kStep - zeros));
            layout.point -= static_cast<int>(zeros);
            end -= zeros;
        }
        end += kStep;
    }
    // An odd multiple of 2^-bits has as many places as bits, the last of which is 5.
    layout.count = number.fraction != 0 ? static_cast<int>(end - out) : layout.point + number.bits;
    roundDigits(out, number.fraction != 0, request, layout);
    return true;
}

} // namespace tq::detail
