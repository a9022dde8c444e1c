#include "format/ScanFields.h"

#include "codepage/Escapes.h"
#include "platform/Exp10.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <climits>
#include <cstdlib>
#include <limits>

namespace {

using tq::detail::IntegerField;
using tq::detail::StoreSize;
using tq::platform::ArgumentCursor;

// Exponents beyond this leave no double but 0 and infinity, however many digits are in front of them.
constexpr int kExponentLimit = 100000;
// Digits beyond this magnitude no longer change a double; they only count.
constexpr double kMantissaLimit = 1e300;

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

struct Decimal {
    double mantissa = 0;
    int exponent = 0;
    bool sawDigits = false;
};

void readMantissa(FieldReader& reader, int exponentStep, Decimal& decimal) {
    for (int digit = reader.digit(10); digit >= 0; digit = reader.digit(10)) {
        if (decimal.mantissa < kMantissaLimit) {
            decimal.mantissa = decimal.mantissa * 10 + digit;
            decimal.exponent -= exponentStep;
        } else {
            decimal.exponent += 1 - exponentStep;
        }
        decimal.sawDigits = true;
        reader.take();
    }
}

int readExponent(FieldReader& reader) {
    const bool negative = reader.take('-');
    if (!negative)
        reader.take('+');
    int exponent = 0;
    for (int digit = reader.digit(10); digit >= 0; digit = reader.digit(10)) {
        exponent = std::min(exponent * 10 + digit, kExponentLimit);
        reader.take();
    }
    return negative ? -exponent : exponent;
}

// Powers of ten that are doubles themselves: with them, up to 15 digits give the nearest double.
constexpr std::array<double, 23> kExactPowers = [] {
    std::array<double, 23> powers{};
    double power = 1;
    for (double& slot : powers) {
        slot = power;
        power *= 10;
    }
    return powers;
}();

double timesPowerOfTen(double value, int exponent) {
    const auto magnitude = static_cast<std::size_t>(std::abs(exponent));
    if (magnitude < kExactPowers.size())
        return exponent < 0 ? value / kExactPowers[magnitude] : value * kExactPowers[magnitude];
    return value * tq::platform::exp10(exponent);
}

double scale(const Decimal& decimal) {
    if (decimal.mantissa == 0)
        return 0;
    // In two steps where one power would leave the range that the product stays in.
    const int first = std::clamp(decimal.exponent, -DBL_MAX_10_EXP, DBL_MAX_10_EXP);
    return timesPowerOfTen(timesPowerOfTen(decimal.mantissa, first), decimal.exponent - first);
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
    Decimal decimal;
    readMantissa(reader, 0, decimal);
    if (reader.take('.'))
        readMantissa(reader, 1, decimal);
    if (!decimal.sawDigits)
        return true;
    if (reader.take('e', 'E'))
        decimal.exponent += readExponent(reader);
    if (!assign)
        return false;
    const double magnitude = scale(decimal);
    const double value = negative ? -magnitude : magnitude;
    if (isDouble)
        *arguments.nextPointer<double>() = value;
    else
        *arguments.nextPointer<float>() = static_cast<float>(value);
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
    source.seenInput = true;
    wchar_t* out = assign ? arguments.nextPointer<wchar_t>() : nullptr;
    for (; width > 0 && !source.atEnd(); --width, source.advance()) {
        if (assign)
            *out++ = static_cast<wchar_t>(source.current);
    }
    if (assign)
        ++assigned;
    return width > 0;
}
