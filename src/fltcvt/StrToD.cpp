#include "fltcvt/DoubleBits.h"
#include "fltcvt/ExactRead.h"
#include "fltcvt/FastRead.h"

#include <TqOsBase/fltcvt/StrToD.h>

#include <bit>
#include <cerrno>
#include <type_traits>

namespace {

using tq::detail::DigitSpan;
using tq::detail::kInfinityBits;
using tq::detail::ReadResult;

/// Any number of so many digits fits 64 bits.
constexpr std::int64_t kSafeDigits = 19;
/// Far beyond any exponent that the length of a text could balance, and far from overflow.
constexpr std::int64_t kExponentLimit = std::int64_t{1} << 60;

template <class Char>
unsigned digitOf(Char c) {
    return static_cast<unsigned>(static_cast<std::make_unsigned_t<Char>>(c)) - '0';
}

template <class Char>
bool isSpace(Char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

template <class Char>
const Char* readDigits(const Char* p, std::uint64_t& value) {
    for (unsigned digit; (digit = digitOf(*p)) <= 9; ++p)
        value = value * 10 + digit;
    return p;
}

// The exponent behind `p`, which is at its "e"; moves `p` behind it when it has digits.
template <class Char>
std::int64_t readExponent(const Char*& p) {
    const Char* q = p + 1;
    const bool isNegative = *q == '-';
    if (isNegative || *q == '+')
        ++q;
    if (digitOf(*q) > 9)
        return 0;
    std::int64_t value = 0;
    for (unsigned digit; (digit = digitOf(*q)) <= 9; ++q)
        if (value < kExponentLimit / 16)
            value = value * 10 + digit;
    p = q;
    return isNegative ? -value : value;
}

// Reads at most kSafeDigits digits of the span.
template <class Char>
std::uint64_t leadingDigits(const DigitSpan<Char>& span) {
    std::uint64_t value = 0;
    std::int64_t left = kSafeDigits;
    for (const Char* p = span.first; p != span.end && left > 0; ++p)
        if (p != span.point) {
            value = value * 10 + digitOf(*p);
            --left;
        }
    return value;
}

template <class Char>
std::uint64_t decide(const DigitSpan<Char>& span, std::uint64_t lower) {
    const int order = tq::detail::compareWithMiddle(span, lower);
    return lower + (order > 0 || (order == 0 && (lower & 1) != 0) ? 1 : 0);
}

// The digits from the first that is not 0.
template <class Char>
DigitSpan<Char> significantDigits(const Char* begin, const Char* end, const Char* point, std::int64_t lastExponent) {
    while (begin != end && (*begin == '0' || begin == point))
        ++begin;
    return {begin, end, point != nullptr && point > begin ? point : nullptr, lastExponent};
}

// Numbers of many digits, and those that may lie halfway between two doubles.
template <class Char>
std::uint64_t readUncommon(const DigitSpan<Char>& span) {
    const std::int64_t count = span.end - span.first - (span.point != nullptr ? 1 : 0);
    const std::int64_t cut = count > kSafeDigits ? count - kSafeDigits : 0;
    const std::uint64_t leading = leadingDigits(span);
    const ReadResult lower = tq::detail::nearestDouble(leading, span.lastExponent + cut);
    if (cut == 0)
        return lower.isCertain ? lower.bits : decide(span, lower.bits);
    // What is cut off makes less than one unit of the last digit.
    const ReadResult upper = tq::detail::nearestDouble(leading + 1, span.lastExponent + cut);
    const bool isDecided = lower.isCertain && upper.isCertain && lower.bits == upper.bits;
    return isDecided ? lower.bits : decide(span, lower.bits);
}

double signedDouble(std::uint64_t bits, bool isNegative) {
    return std::bit_cast<double>(bits | (isNegative ? tq::detail::kSignBit : 0));
}

template <class Char>
double readNumber(const Char* text, Char** end) {
    const Char* p = text;
    while (isSpace(*p))
        ++p;
    const bool isNegative = *p == '-';
    if (isNegative || *p == '+')
        ++p;

    const Char* const begin = p;
    std::uint64_t significand = 0;
    p = readDigits(p, significand);
    const Char* point = nullptr;
    std::int64_t exponent = 0;
    if (*p == '.') {
        point = p;
        p = readDigits(p + 1, significand);
        exponent = point + 1 - p;
    }
    const std::int64_t count = p - begin - (point != nullptr ? 1 : 0);
    if (count == 0) {
        if (end != nullptr)
            *end = const_cast<Char*>(text);
        return 0.0;
    }
    const Char* const digitsEnd = p;
    if (*p == 'e' || *p == 'E')
        exponent += readExponent(p);
    if (end != nullptr)
        *end = const_cast<Char*>(p);

    ReadResult result{0, false};
    if (count <= kSafeDigits) [[likely]] {
        if (significand == 0)
            return signedDouble(0, isNegative);
        result = tq::detail::nearestDouble(significand, exponent);
    }
    if (!result.isCertain) [[unlikely]] {
        const DigitSpan<Char> span = significantDigits(begin, digitsEnd, point, exponent);
        if (span.first == span.end)
            return signedDouble(0, isNegative);
        result.bits = readUncommon(span);
    }
    if (result.bits == 0 || result.bits == kInfinityBits) [[unlikely]]
        errno = ERANGE;
    return signedDouble(result.bits, isNegative);
}

} // namespace

double tqStrToD(const char* text, char** end) {
    return readNumber(text, end);
}

double tqStrToD(const wchar_t* text, wchar_t** end) {
    return readNumber(text, end);
}
