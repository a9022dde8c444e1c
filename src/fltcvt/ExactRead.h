#pragma once

#include "fltcvt/EightCharacters.h"
#include "fltcvt/PowersOfTen.h"

#include <algorithm>
#include <cstdint>

namespace tq::detail {

/// The significant digits of a decimal text, a decimal point among them or not.
template <class Char>
struct DigitSpan {
    const Char* first;         ///< The first digit that is not 0.
    const Char* end;           ///< Behind the last digit, or the point behind it.
    const Char* point;         ///< The point; null when there is none between the first and the last digit.
    std::int64_t lastExponent; ///< The last digit counts 10^lastExponent.

    std::int64_t count() const noexcept { return end - first - (point != nullptr ? 1 : 0); }
};

/// The digits of a span from the first on, several at a time.
template <class Char>
class DigitsInOrder {
public:
    explicit DigitsInOrder(const DigitSpan<Char>& span) noexcept : m_next(span.first), m_span(span) {}

    /// The next `count` as a number; there are so many, and they fit 64 bits.
    std::uint64_t take(int count) noexcept {
        std::uint64_t value = 0;
        while (count > 0) {
            const bool isBeforePoint = m_span.point != nullptr && m_next <= m_span.point;
            const std::int64_t run = (isBeforePoint ? m_span.point : m_span.end) - m_next;
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
/// positive. Exact; the next double of the largest is taken as 2^1024. The double is one of the two nearest to the
/// number.
template <class Char>
int compareWithMiddle(const DigitSpan<Char>& number, std::uint64_t bits) noexcept;

} // namespace tq::detail
