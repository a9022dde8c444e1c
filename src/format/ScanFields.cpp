#include "format/ScanFields.h"

#include "codepage/Escapes.h"
#include "fltcvt/EiselLemire.h"
#include "fltcvt/HalfwayComparison.h"
#include "fltcvt/Ieee754.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <limits>

namespace {

using tq::detail::ArgumentCursor;
using tq::detail::DigitSpan;
using tq::detail::IntegerField;
using tq::detail::StoreSize;

// Far beyond any exponent that the length of a text could balance, and far from overflow.
constexpr std::int64_t kExponentLimit = std::int64_t{1} << 56;

// The characters of one field, as far as its width reaches.
class FieldReader {
public:
    FieldReader(ScanfSourceBuf& source, unsigned width) : m_source(source), m_width(width) {}

    unsigned width() const { return m_width; }
    std::int32_t current() const { return m_width > 0 ? m_source.current : ScanfSourceBuf::kEnd; }
    bool take(std::int32_t lower, std::int32_t upper) {
        if (current() != lower && current() != upper)
            return false;
        take();
        return true;
    }
    bool take(std::int32_t c) { return take(c, c); }
    void take() {
        assert(m_width > 0);
        m_source.advance();
        --m_width;
    }
    void giveBack() {
        m_source.stepBack();
        ++m_width;
    }
    // The value of the look-ahead as a digit of `base`, -1 when it is none.
    int digit(unsigned base) const {
        const auto c = static_cast<std::uint32_t>(current());
        const int value = c < tq::detail::kHexValues.size() ? tq::detail::kHexValues[c] : -1;
        return value < static_cast<int>(base) ? value : -1;
    }

private:
    ScanfSourceBuf& m_source;
    unsigned m_width;
};

struct Integer {
    std::uint64_t magnitude = 0;
    bool negative = false;
    bool sawDigits = false;
};

void readDigits(FieldReader& reader, unsigned base, Integer& integer) {
    for (int digit = reader.digit(base); digit >= 0; digit = reader.digit(base)) {
        const auto value = static_cast<unsigned>(digit);
        const bool overflows = integer.magnitude > (UINT64_MAX - value) / base;
        integer.magnitude = overflows ? UINT64_MAX : integer.magnitude * base + value;
        integer.sawDigits = true;
        reader.take();
    }
}

// Reads the prefix that tells the base. A "0x" that no hexadecimal digit follows is backed off to the "0".
unsigned readPrefix(FieldReader& reader, unsigned base, Integer& integer) {
    if (!reader.take('0'))
        return base == 0 ? 10 : base;
    integer.sawDigits = true;
    if (reader.take('x', 'X')) {
        if (reader.digit(16) >= 0)
            return 16;
        reader.giveBack();
        return base == 0 ? 8 : base;
    }
    return base == 0 ? 8 : base;
}

Integer readInteger(FieldReader& reader, const IntegerField& field) {
    Integer integer;
    // A sign needs a digit after it.
    if (!field.isUnsigned && reader.width() >= 2) {
        integer.negative = reader.take('-');
        if (!integer.negative)
            reader.take('+');
    }
    unsigned base = field.base;
    if (base == 0 || base == 16)
        base = readPrefix(reader, base, integer);
    readDigits(reader, base, integer);
    return integer;
}

// The bits to store: saturated, a negative number as its two's complement.
template <class Signed, class Unsigned>
Unsigned saturate(const Integer& integer, const IntegerField& field) {
    if (integer.negative) {
        const auto limit = static_cast<std::uint64_t>(std::numeric_limits<Signed>::max()) + 1;
        return static_cast<Unsigned>(0 - std::min(integer.magnitude, limit));
    }
    const bool full = field.isUnsigned || field.wrapsNegative;
    const std::uint64_t limit = full ? std::uint64_t{std::numeric_limits<Unsigned>::max()}
                                     : static_cast<std::uint64_t>(std::numeric_limits<Signed>::max());
    return static_cast<Unsigned>(std::min(integer.magnitude, limit));
}

// Appends the digits at the look-ahead to `value`, which overflows when they are more than kSafeDigits.
void readDecimals(FieldReader& reader, std::uint64_t& value) {
    for (int digit = reader.digit(10); digit >= 0; digit = reader.digit(10)) {
        value = value * 10 + static_cast<unsigned>(digit);
        reader.take();
    }
}

// The double nearest to the digits; `value` is what they make when they are no more than kSafeDigits.
double nearestTo(const DigitSpan<wchar_t>& span, std::uint64_t value) {
    if (span.isZero())
        return 0;
    if (span.count() <= tq::detail::kSafeDigits) {
        const tq::detail::ReadResult result = tq::detail::nearestDouble(value, span.lastExponent);
        if (result.isCertain)
            return std::bit_cast<double>(result.bits);
    }
    return std::bit_cast<double>(tq::detail::nearestBits(span));
}

std::int64_t readExponent(FieldReader& reader) {
    const bool negative = reader.take('-');
    if (!negative)
        reader.take('+');
    std::int64_t exponent = 0;
    for (int digit = reader.digit(10); digit >= 0; digit = reader.digit(10)) {
        exponent = std::min<std::int64_t>(exponent * 10 + digit, kExponentLimit);
        reader.take();
    }
    return negative ? -exponent : exponent;
}

// The float nearest to a double of 0 or more, ties to even; on its bits, because the processor's own conversion follows
// the thread's rounding mode.
float nearestFloat(double magnitude) {
    constexpr int kLessBits = 29;      // a float has so many bits fewer
    constexpr int kMinExponent = -149; // a subnormal float is a multiple of 2^kMinExponent
    constexpr int kFloatFractionBits = 23;
    constexpr std::uint64_t kFloatInfinityBits = 0x7F800000;
    const tq::detail::DoubleParts parts(magnitude);
    const int exponent = std::max(parts.exponent + kLessBits, kMinExponent);
    const int drop = exponent - parts.exponent;
    if (drop > tq::detail::kFractionBits + 2) // 1e-60
        return 0;
    const std::uint64_t kept = parts.significand >> drop;
    const std::uint64_t half = std::uint64_t{1} << (drop - 1);
    const std::uint64_t rest = parts.significand & (2 * half - 1);
    // The hidden bit adds one to the exponent; so does a carry out of the significand.
    const std::uint64_t bits = (static_cast<std::uint64_t>(exponent - kMinExponent) << kFloatFractionBits) + kept +
                               (rest > half || (rest == half && kept % 2 != 0) ? 1 : 0);
    return std::bit_cast<float>(static_cast<std::uint32_t>(std::min(bits, kFloatInfinityBits)));
}

} // namespace

bool scanfIntegerFromBuf(const IntegerField& field, unsigned width, ScanfSourceBuf& source, bool assign,
                         ArgumentCursor& arguments, int& assigned) {
    FieldReader reader(source, width);
    const Integer integer = readInteger(reader, field);
    if (!integer.sawDigits)
        return true;
    if (!assign)
        return false;
    switch (field.store) {
    case StoreSize::kShort:
        *arguments.nextPointer<std::uint16_t>() = saturate<std::int16_t, std::uint16_t>(integer, field);
        break;
    case StoreSize::kInt:
        *arguments.nextPointer<std::uint32_t>() = saturate<std::int32_t, std::uint32_t>(integer, field);
        break;
    case StoreSize::kLong:
        *arguments.nextPointer<std::uint64_t>() = saturate<std::int64_t, std::uint64_t>(integer, field);
        break;
    }
    ++assigned;
    return false;
}

bool scanfDoubleFromBuf(unsigned width, ScanfSourceBuf& source, bool assign, bool isDouble, ArgumentCursor& arguments,
                        int& assigned) {
    FieldReader reader(source, width);
    const bool negative = reader.take('-');
    if (!negative)
        reader.take('+');
    const wchar_t* const begin = source.here();
    std::uint64_t value = 0;
    readDecimals(reader, value);
    const wchar_t* const point = reader.take('.') ? source.here() - 1 : nullptr;
    if (point != nullptr)
        readDecimals(reader, value);
    const wchar_t* const end = source.here();
    if (end - begin == (point != nullptr ? 1 : 0))
        return true;
    std::int64_t lastExponent = point != nullptr ? point + 1 - end : 0;
    if (reader.take('e', 'E'))
        lastExponent += readExponent(reader);
    if (!assign)
        return false;
    const double magnitude = nearestTo(DigitSpan<wchar_t>::of(begin, end, point, lastExponent), value);
    if (isDouble)
        *arguments.nextPointer<double>() = negative ? -magnitude : magnitude;
    else
        *arguments.nextPointer<float>() = negative ? -nearestFloat(magnitude) : nearestFloat(magnitude);
    ++assigned;
    return false;
}

bool scanfStringFromBuf(unsigned width, ScanfSourceBuf& source, bool assign, ArgumentCursor& arguments, int& assigned) {
    if (width == 0 || source.fromStream || source.atEnd() || source.atSpace())
        return true;
    wchar_t* out = assign ? arguments.nextPointer<wchar_t>() : nullptr;
    for (; width > 0 && !source.atEnd() && !source.atSpace(); --width, source.advance()) {
        if (assign)
            *out++ = static_cast<wchar_t>(source.current);
    }
    if (assign) {
        *out = L'\0';
        ++assigned;
    }
    return false;
}

bool scanfCharFromBuf(unsigned width, ScanfSourceBuf& source, bool assign, ArgumentCursor& arguments, int& assigned) {
    if (width == 0 || source.fromStream || source.atEnd())
        return true;
    wchar_t* out = assign ? arguments.nextPointer<wchar_t>() : nullptr;
    for (; width > 0 && !source.atEnd(); --width, source.advance()) {
        if (assign)
            *out++ = static_cast<wchar_t>(source.current);
    }
    if (assign)
        ++assigned;
    return width > 0;
}
