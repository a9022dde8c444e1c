// Digit generation with integers of any size, after D. M. Gay, "Correctly rounded binary-decimal and decimal-binary
// conversions" (1990), which improves on G. L. Steele and J. L. White, "How to print floating-point numbers accurately"
// (1990).

#include "fltcvt/ExactDigits.h"

#include "fltcvt/BigNumber.h"
#include "fltcvt/DigitWriter.h"
#include "fltcvt/DoubleBits.h"
#include "fltcvt/RoundDigits.h"
#include "fltcvt/WideMath.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace tq::detail {

namespace {

constexpr int kWordBits = 32;

// floor(log10(v)), or one more: the tangent of log10 at 1.5, where the significand is between 1 and 2.
int estimateLog10(const DoubleParts& parts) noexcept {
    const int width = bitWidth(parts.significand);
    const double x = std::ldexp(static_cast<double>(parts.significand), 1 - width);
    const int exponent = parts.exponent + width - 1;
    return static_cast<int>(std::floor((x - 1.5) * 0.289529654602168 + 0.1760912590558 + exponent * 0.301029995663981));
}

int bitCount(const BigNumber& number) {
    return kWordBits * number->used - TqGdImpl::hi0bits(number->words[number->used - 1]);
}

// The digits of v one by one. Between two of them, with u the place of the last one:
//   what is left of v == value / scale * u,   0 <= value < scale
//   numbers less than below / scale * u under v, or above / scale * u over it, read back to v
class DigitSource {
public:
    DigitSource(double v, bool withInterval);

    /// Where the decimal point stands, seen from before the first digit.
    int point() const noexcept { return m_point; }
    bool isExhausted() const noexcept { return m_value.isZero(); }

    char next() {
        if (!m_isFirst)
            multiplyByTen();
        m_isFirst = false;
        return static_cast<char>('0' + TqGdImpl::quorem(m_value.get(), m_scale.get()));
    }
    /// Whether the digits so far, as they are, read back to v.
    bool readsBack() const {
        const int order = m_value.compare(m_below);
        return order < 0 || (order == 0 && m_isEven);
    }
    /// Whether they do with one more in the last place.
    bool readsBackAbove() const {
        const BigNumber limit(TqGdImpl::diff(m_scale.get(), m_above.get()));
        const int order = limit->sign != 0 ? 1 : m_value.compare(limit);
        return order > 0 || (order == 0 && m_isEven);
    }
    /// Whether one more in the last place is nearer to v; of two as near the even one.
    bool isNearerAbove(char last) {
        m_value.shiftLeft(1);
        const int order = m_value.compare(m_scale);
        return order > 0 || (order == 0 && (last & 1) != 0);
    }

private:
    void multiplyByTen() {
        m_value.multiplyAdd(10, 0);
        if (m_withInterval) {
            m_below.multiplyAdd(10, 0);
            m_above.multiplyAdd(10, 0);
        }
    }

    int m_point;
    bool m_isEven;
    bool m_withInterval;
    bool m_isFirst = true;
    BigNumber m_value, m_scale, m_below, m_above;
};

DigitSource::DigitSource(double v, bool withInterval) : m_isEven((bitsOf(v) & 1) == 0), m_withInterval(withInterval) {
    const DoubleParts parts(v);
    const int log10 = estimateLog10(parts);
    // Scaled so that the interval, half a unit of the significand up and as much or half of that down, is in integers.
    const int extraBits = parts.isLowerNeighbourCloser() ? 2 : 1;
    int intervalBits = std::max(parts.exponent, 0) + std::max(-log10, 0);
    int scaleBits = extraBits + std::max(-parts.exponent, 0) + std::max(log10, 0);
    const int common = std::min(intervalBits, scaleBits);

    m_scale = BigNumber(TqGdImpl::i2b(1));
    m_scale.multiplyByPowerOfFive(log10);
    // Four clear bits in the highest word of the scale, so that the highest words alone give a good guess at a digit.
    const int clear = (2 * kWordBits - 4 - (bitCount(m_scale) + scaleBits - common) % kWordBits) % kWordBits;
    intervalBits += clear - common;
    scaleBits += clear - common;
    m_scale.shiftLeft(scaleBits);

    int exponent = 0;
    int bits = 0;
    m_value = BigNumber(TqGdImpl::d2b(v, &exponent, &bits));
    m_value.multiplyByPowerOfFive(-log10);
    m_value.shiftLeft(intervalBits + extraBits + exponent - parts.exponent);
    if (withInterval) {
        m_below = BigNumber(TqGdImpl::i2b(1));
        m_below.multiplyByPowerOfFive(-log10);
        m_below.shiftLeft(intervalBits);
        m_above = BigNumber(TqGdImpl::i2b(1 << (extraBits - 1)));
        m_above.multiplyByPowerOfFive(-log10);
        m_above.shiftLeft(intervalBits);
    }
    const bool isTooLarge = m_value.compare(m_scale) < 0;
    m_point = log10 + (isTooLarge ? 0 : 1);
    if (isTooLarge)
        multiplyByTen();
}

} // namespace

DigitLayout exactDigits(double v, DigitRequest request, char* out) {
    const bool isShortest = request.kind == DigitRequest::eShortest;
    const bool withInterval = isShortest || request.orShorter;
    DigitSource source(v, withInterval);
    DigitLayout layout{0, source.point()};
    const std::int64_t wanted = isShortest ? kMaxFastDigits : wantedDigits(request, layout.point);
    // One digit more than wanted, then what is left says how to round; nothing is left behind the last one of all.
    while (layout.count <= wanted && (layout.count == 0 || !source.isExhausted())) {
        const char digit = source.next();
        out[layout.count++] = digit;
        if (!withInterval || layout.count > wanted)
            continue;
        const bool readsBack = source.readsBack();
        const bool readsBackAbove = source.readsBackAbove();
        if (!readsBack && !readsBackAbove)
            continue;
        if (readsBackAbove && (!readsBack || source.isNearerAbove(digit)))
            addOneInLastPlace(out, layout);
        return layout;
    }
    roundDigits(out, !source.isExhausted(), wanted, layout);
    return layout;
}

} // namespace tq::detail
