#pragma once

#include <cstdint>

namespace tq::detail {

/// The significant digits of a decimal text, a decimal point among them or not.
template <class Char>
struct DigitSpan {
    const Char* first;         ///< The first digit that is not 0.
    const Char* end;           ///< Behind the last digit, or the point behind it.
    const Char* point;         ///< The point; null when there is none between the first and the last digit.
    std::int64_t lastExponent; ///< The last digit counts 10^lastExponent.
};

/// How the number compares with the middle between the positive double of these bits and the next one: negative, 0 or
/// positive. Exact, by big integers; the next double of the largest is taken as 2^1024. Takes its blocks from the digit
/// allocator and gives them all back. Throws std::bad_alloc.
template <class Char>
int compareWithMiddle(const DigitSpan<Char>& number, std::uint64_t bits);

} // namespace tq::detail
