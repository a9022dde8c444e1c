// Digit generation with exact integers, after G. L. Steele and J. L. White, "How to print floating-point numbers
// accurately" (1990), as improved by D. M. Gay, "Correctly rounded binary-decimal and decimal-binary conversions"
// (1990).

#include "fltcvt/BigInteger.h"
#include "fltcvt/DigitRequest.h"
#include "fltcvt/Ieee754.h"
#include "fltcvt/RoundDigits.h"
#include "fltcvt/Schubfach.h"

#include <algorithm>

namespace tq::detail {

namespace {

// The digits of v one by one. Between two of them, with u the place of the last one:
//   what is left of v == value / scale * u,   0 <= value < scale
//   numbers less than below / scale * u under v, or above / scale * u over it, read back to v
class DigitSource {
public:
    DigitSource(double v, bool withInterval) noexcept;

    /// The place of the decimal point: v = 0.d1d2d3... * 10^point.
    int point() const noexcept { return m_point; }
    bool isExhausted() const noexcept { return m_value.isZero(); }

    char next() noexcept {
        if (!m_isFirst)
            multiplyByTen();
        m_isFirst = false;
        return static_cast<char>('0' + m_value.takeDigit(m_scale));
    }
    /// Whether the digits so far, as they are, read back to v.
    bool readsBack() const noexcept { return isInside(m_below.compare(m_value)); }
    /// Whether they do with one more in the last place.
    bool readsBackAbove() const noexcept {
        BigInteger sum = m_value;
        sum.add(m_above);
        return isInside(sum.compare(m_scale));
    }
    /// Whether one more in the last place is nearer to v, or as near and even. Nothing can be asked after this.
    bool isNearerAbove(char last) noexcept {
        m_value.shiftLeft(1);
        const int order = m_value.compare(m_scale);
        return order > 0 || (order == 0 && (last & 1) != 0);
    }

private:
    // The ends of the interval read back to an even significand.
    bool isInside(int order) const noexcept { return order > 0 || (order == 0 && m_isEven); }

    void multiplyByTen() noexcept {
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
    BigInteger m_value, m_scale, m_below, m_above;
};

DigitSource::DigitSource(double v, bool withInterval) noexcept
    : m_isEven((bitsOf(v) & 1) == 0), m_withInterval(withInterval), m_value(0), m_scale(1), m_below(0), m_above(0) {
    const DoubleParts parts(v);
    const int log10 = floorLog10(Normalised(v));
    m_point = log10 + 1;
    // Scaled so that the interval, half a unit of the significand up and as much or half of that down, is in integers.
    const int extraBits = parts.isLowerNeighbourCloser() ? 2 : 1;
    int intervalBits = std::max(parts.exponent, 0) + std::max(-log10, 0);
    int scaleBits = extraBits + std::max(-parts.exponent, 0) + std::max(log10, 0);
    const int common = std::min(intervalBits, scaleBits);

    m_scale.multiplyByPowerOfFive(log10);
    // Four clear bits in the highest word of the scale: ten times as much has no more words, and the highest words
    // alone give a good guess at a digit.
    const int clear = (2 * 64 - 4 - (m_scale.bitCount() + scaleBits - common) % 64) % 64;
    intervalBits += clear - common;
    scaleBits += clear - common;
    m_scale.shiftLeft(scaleBits);

    m_value = BigInteger(parts.significand);
    m_value.multiplyByPowerOfFive(-log10);
    m_value.shiftLeft(intervalBits + extraBits);
    if (withInterval) {
        m_below = BigInteger(1);
        m_below.multiplyByPowerOfFive(-log10);
        m_below.shiftLeft(intervalBits);
        m_above = m_below;
        m_above.shiftLeft(extraBits - 1);
    }
}

} // namespace

DigitLayout exactDigits(double v, DigitRequest request, char* out) noexcept {
    const bool isShortest = request.kind == DigitRequest::kShortest;
    const bool withInterval = isShortest || request.rule == Rule::kOrShorter;
    DigitSource source(v, withInterval);
    DigitLayout layout{0, source.point()};
    const std::int64_t wanted = isShortest ? kMaxFastDigits : wantedDigits(request, layout.point);
    // One digit more than wanted: it says how to round, together with whether anything is left after it. A number with
    // fewer digits ends before.
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
    roundDigits(out, !source.isExhausted(), request, layout);
    return layout;
}

} // namespace tq::detail
