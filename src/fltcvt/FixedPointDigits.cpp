// Integer and fraction of everyday numbers each fit a word. Multiplied by 10^16, the fraction shows its next 16 digits
// above the binary point.

#include "fltcvt/FixedPointDigits.h"

#include "fltcvt/DoubleBits.h"
#include "fltcvt/RoundDigits.h"
#include "fltcvt/WideMath.h"

#include <bit>

namespace tq::detail {

namespace {

constexpr int kMaxFractionBits = 63;
constexpr int kStep = 16;
constexpr std::uint64_t kStepFactor = kSmallPowersOfTen[kStep];

struct FixedPoint {
    std::uint64_t integer = 0;
    std::uint64_t fraction = 0; ///< Multiple of 2^-bits.
    int bits = 0;

    bool tryFrom(double v) noexcept {
        const DoubleParts parts(v);
        const int zeros = std::countr_zero(parts.significand);
        const std::uint64_t odd = parts.significand >> zeros;
        const int exponent = parts.exponent + zeros;
        if (exponent >= 0) {
            integer = odd << (exponent & 63);
            return exponent + bitWidth(odd) <= 64;
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

} // namespace

bool tryFixedPointDigits(double v, const DigitRequest& request, char* out, DigitLayout& layout) noexcept {
    FixedPoint number;
    if (request.kind == DigitRequest::eShortest || !number.tryFrom(v))
        return false;
    // The integer has 20 digits at most.
    SixteenDigits(number.integer / kStepFactor).store(out);
    SixteenDigits(number.integer % kStepFactor).store(out + kStep);
    const char* begin = out;
    char* end = out + 2 * kStep;
    layout.point = 2 * kStep;
    for (;; end += kStep) {
        for (; begin != end && *begin == '0'; ++begin)
            --layout.point;
        const bool isEnough = begin != end && end - begin > wantedDigits(request, layout.point);
        if (number.fraction == 0 || isEnough)
            break;
        number.writeStep(end);
    }
    layout.count = static_cast<int>(end - begin);
    std::memmove(out, begin, static_cast<std::size_t>(layout.count));
    roundDigits(out, number.fraction != 0, wantedDigits(request, layout.point), layout);
    return true;
}

} // namespace tq::detail
