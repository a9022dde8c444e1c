#pragma once

#include "fltcvt/EiselLemire.h"
#include "fltcvt/PowersOfTen.h"
#include "fltcvt/SwarDigits.h"

#include <algorithm>
#include <cassert>
#include <cstdint>

namespace tq::detail {

/// The significant digits of a decimal text, a decimal point among them or not.
template <class Char>
struct DigitSpan {
    const Char* first;         ///< The first digit that is not 0.
    const Char* end;           ///< After the last digit, or after the point that follows it.
    const Char* point;         ///< The point; null when there is none between the first and the last digit.
    std::int64_t lastExponent; ///< The last digit counts 10^lastExponent.

    /// From `begin` to `end` there are digits, at least one, and the point, unless that is null.
    static DigitSpan of(const Char* begin, const Char* end, const Char* point, std::int64_t lastExponent) noexcept {
        assert(end - begin > (point != nullptr ? 1 : 0));
        while (begin != end && (*begin == '0' || begin == point))
            ++begin;
        return {begin, end, point != nullptr && point > begin ? point : nullptr, lastExponent};
    }

    bool isZero() const noexcept { return first == end; }
    std::int64_t count() const noexcept { return end - first - (point != nullptr ? 1 : 0); }
};

/// The digits of a span from the first on, several at a time.
template <class Char>
class DigitsInOrder {
public:
    explicit DigitsInOrder(const DigitSpan<Char>& span) noexcept : m_next(span.first), m_span(span) {}

    /// The next `count`, up to 19, as a number; at least so many are left.
    std::uint64_t take(int count) noexcept {
        assert(count <= kLastSmallPower);
        std::uint64_t value = 0;
        while (count > 0) {
            const bool isBeforePoint = m_span.point != nullptr && m_next <= m_span.point;
            const std::int64_t run = (isBeforePoint ? m_span.point : m_span.end) - m_next;
            assert(isBeforePoint || run > 0);
            if (run == 0) {
                ++m_next;
            } else if (run < EightCharacters::kCount || count < EightCharacters::kCount) {
                value = value * 10 + static_cast<std::uint64_t>(*m_next++ - '0');
                --count;
            } else {
                value = value * kSmallPowersOfTen[EightCharacters::kCount] + EightCharacters(m_next).value();
                m_next += EightCharacters::kCount;
                count -= EightCharacters::kCount;
            }
        }
        return value;
    }

    /// Whether any of those not taken is not 0.
    bool hasMore() const noexcept {
        return std::any_of(m_next, m_span.end, [](Char c) { return c > '0'; });
    }

private:
    const Char* m_next;
    DigitSpan<Char> m_span;
};

/// How the number compares with the middle between the positive double of these bits and the next one: negative, 0 or
/// positive. Exact. The double is one of the two nearest to the number; the next one after the largest is taken as
/// 2^1024.
template <class Char>
int compareWithHalfway(const DigitSpan<Char>& number, std::uint64_t bits) noexcept;

/// Any number of so many digits fits 64 bits.
inline constexpr std::int64_t kSafeDigits = 19;

/// The bits of the double nearest to a number that is not zero, ties to even; infinity and 0 beyond the range. Inlined,
/// because its callers are rarely run themselves.
template <class Char>
[[gnu::always_inline]] inline std::uint64_t nearestBits(const DigitSpan<Char>& number) noexcept {
    assert(!number.isZero());
    const std::int64_t kept = std::min(number.count(), kSafeDigits);
    const std::int64_t cut = number.count() - kept;
    const std::uint64_t leading = DigitsInOrder<Char>(number).take(static_cast<int>(kept));
    const ReadResult lower = nearestDouble(leading, number.lastExponent + cut);
    bool isDecided = lower.isCertain;
    if (cut != 0) {
        // What is cut off makes less than one unit of the last digit.
        const ReadResult upper = nearestDouble(leading + 1, number.lastExponent + cut);
        isDecided = isDecided && upper.isCertain && lower.bits == upper.bits;
    }
    if (isDecided)
        return lower.bits;
    const int order = compareWithHalfway(number, lower.bits);
    return lower.bits + (order > 0 || (order == 0 && (lower.bits & 1) != 0) ? 1 : 0);
}

} // namespace tq::detail
