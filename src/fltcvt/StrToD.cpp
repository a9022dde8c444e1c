#include "fltcvt/EiselLemire.h"
#include "fltcvt/HalfwayComparison.h"
#include "fltcvt/Ieee754.h"
#include "fltcvt/SwarDigits.h"

#include <TqOsBase/fltcvt/StrToD.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <type_traits>

namespace {

using tq::detail::DigitSpan;
using tq::detail::EightCharacters;
using tq::detail::kInfinityBits;
using tq::detail::kSafeDigits;
using tq::detail::kSmallPowersOfTen;
using tq::detail::ReadResult;

/// Beyond any exponent that the digits of a text could make up for, and far from overflow.
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
struct DigitRun {
    const Char* end; ///< The first character that is not a digit.
    std::uint64_t value;
};

// Appends the digits at `p` to `value`, with a branch for each digit: best where the processor can predict their
// number, as it mostly can for the integer parts of the numbers of a text.
template <class Char>
DigitRun<Char> readDigits(const Char* p, std::uint64_t value) {
    for (unsigned digit; (digit = digitOf(*p)) <= 9; ++p)
        value = value * 10 + digit;
    return {p, value};
}

// The same without branches for the number of digits: best where that cannot be predicted, as after the point.
template <class Char>
[[gnu::always_inline]] inline DigitRun<Char> readFraction(const Char* p, std::uint64_t value) {
    for (; EightCharacters::mayStartAt(p); p += EightCharacters::kCount) {
        const EightCharacters characters(p);
        if (!characters.areDigits()) {
            const int count = characters.digitCount();
            return {p + count, value * kSmallPowersOfTen[static_cast<std::size_t>(count)] + characters.value(count)};
        }
        value = value * kSmallPowersOfTen[EightCharacters::kCount] + characters.value();
    }
    return readDigits(p, value);
}

// The exponent whose "e" is at `p`; steps past it when it has digits.
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

[[gnu::noinline]] double outOfRange(std::uint64_t bits) {
    errno = ERANGE;
    return std::bit_cast<double>(bits);
}

double signedDouble(std::uint64_t bits, std::uint64_t signBit) {
    if (bits == 0 || bits == kInfinityBits) [[unlikely]]
        return outOfRange(bits | signBit);
    return std::bit_cast<double>(bits | signBit);
}

// Numbers of more than 19 digits, zeros among them, and those that the quick product leaves undecided:
// 4503599627370496.5.
template <class Char>
[[gnu::noinline]] double readUncommon(const Char* begin, const Char* end, const Char* point, std::int64_t lastExponent,
                                      std::uint64_t signBit) {
    const auto span = DigitSpan<Char>::of(begin, end, point, lastExponent);
    return span.isZero() ? std::bit_cast<double>(signBit) : signedDouble(tq::detail::nearestBits(span), signBit);
}

template <class Char>
double readNumber(const Char* text, Char** end) {
    const Char* p = text;
    while (isSpace(*p))
        ++p;
    const std::uint64_t signBit = *p == '-' ? tq::detail::kSignBit : 0;
    if (*p == '-' || *p == '+')
        ++p;

    DigitRun<Char> run = readDigits(p, 0);
    const Char* point = nullptr;
    std::int64_t exponent = 0;
    if (*run.end == '.') {
        point = run.end;
        run = readFraction(point + 1, run.value);
        exponent = point + 1 - run.end;
    }
    const std::int64_t count = run.end - p - (point != nullptr ? 1 : 0);
    if (count == 0) {
        if (end != nullptr)
            *end = const_cast<Char*>(text);
        return 0.0;
    }
    const Char* numberEnd = run.end;
    if (*numberEnd == 'e' || *numberEnd == 'E')
        exponent += readExponent(numberEnd);
    if (end != nullptr)
        *end = const_cast<Char*>(numberEnd);

    // Zeros, and integers that a double holds: exact whatever the rounding mode, in 91 instructions instead of 143.
    if (count <= kSafeDigits && (exponent == 0 ? run.value >> (tq::detail::kFractionBits + 1) : run.value) == 0) {
        const auto magnitude = static_cast<double>(static_cast<std::int64_t>(run.value));
        return std::bit_cast<double>(tq::detail::bitsOf(magnitude) | signBit);
    }
    if (count <= kSafeDigits) [[likely]] {
        const ReadResult result = tq::detail::nearestDouble(run.value, exponent);
        if (result.isCertain) [[likely]]
            return signedDouble(result.bits, signBit);
    }
    return readUncommon(p, run.end, point, exponent, signBit);
}

} // namespace

double tqStrToD(const char* text, char** end) {
    return readNumber(text, end);
}

double tqStrToD(const wchar_t* text, wchar_t** end) {
    return readNumber(text, end);
}
