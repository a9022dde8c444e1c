#pragma once

#include "reference/Testing.h"

/// Doubles to try, and decimal and binary numbers by the plainest exact arithmetic: digit strings. Slow; shares nothing
/// with the library.
namespace reference {

/// 0.d1d2d3... * 10^point, without zeros at either end; no digits for 0.
struct Decimal {
    std::string digits;
    int point = 0;

    bool operator==(const Decimal&) const = default;

    void trim() {
        const std::size_t zeros = std::min(digits.find_first_not_of('0'), digits.size());
        digits.erase(0, zeros);
        point -= static_cast<int>(zeros);
        digits.erase(digits.find_last_not_of('0') + 1);
        if (digits.empty())
            point = 0;
    }
};

/// significand * 2^exponent.
inline Decimal exactDecimal(std::uint64_t significand, int exponent) {
    constexpr std::uint64_t kLimb = 1000000000;
    std::vector<std::uint64_t> limbs;
    for (; significand != 0; significand /= kLimb)
        limbs.push_back(significand % kLimb);
    // One factor of 2 each, or of 5 where the decimal point then moves instead.
    for (int step = 0; step < std::abs(exponent); ++step) {
        std::uint64_t carry = 0;
        for (std::uint64_t& limb : limbs) {
            carry += limb * (exponent < 0 ? 5 : 2);
            limb = carry % kLimb;
            carry /= kLimb;
        }
        if (carry != 0)
            limbs.push_back(carry);
    }
    Decimal result;
    for (std::size_t i = limbs.size(); i-- > 0;) {
        const std::string limb = std::to_string(limbs[i]);
        result.digits += std::string(9 - limb.size(), '0') + limb;
    }
    result.point = static_cast<int>(result.digits.size()) + std::min(exponent, 0);
    result.trim();
    return result;
}

/// Negative, 0 or positive.
inline int compare(const Decimal& a, const Decimal& b) {
    if (a.digits.empty() || b.digits.empty())
        return static_cast<int>(!a.digits.empty()) - static_cast<int>(!b.digits.empty());
    return a.point != b.point ? a.point - b.point : a.digits.compare(b.digits);
}

/// The digits in front of position `keep`, cut off, plus `add` in the last place.
inline Decimal cut(const Decimal& value, int keep, int add) {
    Decimal result{value.digits.substr(0, static_cast<std::size_t>(keep)), value.point};
    result.digits.resize(static_cast<std::size_t>(keep), '0');
    result.digits.insert(0, 1, '0');
    ++result.point;
    for (std::size_t i = result.digits.size(); add != 0 && i-- > 0;) {
        add = result.digits[i] == '9' ? 1 : 0;
        result.digits[i] = static_cast<char>(add != 0 ? '0' : result.digits[i] + 1);
    }
    result.trim();
    return result;
}

/// Rounded to `keep` digits, ties to the even digit; nothing is left when `keep` is negative.
inline Decimal rounded(const Decimal& value, int keep) {
    const auto count = static_cast<std::size_t>(keep);
    if (keep < 0)
        return {};
    if (count >= value.digits.size())
        return value;
    const int order = value.digits.compare(count, std::string::npos, "5"); // digits do not end with 0
    const bool isOdd = keep > 0 && (value.digits[count - 1] & 1) != 0;
    return cut(value, keep, order > 0 || (order == 0 && isOdd) ? 1 : 0);
}

/// A positive double as an integer times a power of two.
struct Binary {
    std::uint64_t significand;
    int exponent;

    explicit Binary(std::uint64_t bits) {
        const auto field = static_cast<int>(bits >> 52);
        significand = (bits & 0xFFFFFFFFFFFFF) + (field != 0 ? 0x10000000000000 : 0);
        exponent = (field != 0 ? field : 1) - 1075;
    }
    Decimal exact() const { return exactDecimal(significand, exponent); }
    Decimal middleAbove() const { return exactDecimal(2 * significand + 1, exponent - 1); }
    Decimal middleBelow() const {
        const bool isCloser = significand == 0x10000000000000 && exponent > -1074;
        return isCloser ? exactDecimal(4 * significand - 1, exponent - 2)
                        : exactDecimal(2 * significand - 1, exponent - 1);
    }
};

/// The shortest decimal that reads back to `v`, above 0; of several the closest, of two as close the even one.
inline Decimal shortest(double v) {
    const Binary binary(std::bit_cast<std::uint64_t>(v));
    const Decimal exact = binary.exact(), low = binary.middleBelow(), high = binary.middleAbove();
    const int slack = (binary.significand & 1) == 0 ? 0 : 1;
    for (int keep = 1;; ++keep) {
        const Decimal down = cut(exact, keep, 0), up = cut(exact, keep, 1);
        const bool isDown = compare(down, low) >= slack, isUp = compare(up, high) <= -slack;
        if (isDown && isUp)
            return rounded(exact, keep);
        if (isDown || isUp)
            return isDown ? down : up;
    }
}

/// As the output engine rounds: halves up, and what comes after 16 digits is cut off.
inline Decimal shownDigits(const Decimal& exact, int keep) {
    if (keep < 0 || exact.digits.empty())
        return {};
    const auto count = static_cast<std::size_t>(keep);
    const bool isUp = count < exact.digits.size() && exact.digits[count] >= '5';
    Decimal result = count < exact.digits.size() ? cut(exact, keep, isUp ? 1 : 0) : exact;
    result.digits.resize(std::min<std::size_t>(result.digits.size(), 16));
    return result;
}

/// The fixed notation of the output engine for a number and its exact magnitude.
inline std::string fixedText(double value, const Decimal& exact, int precision) {
    const Decimal shown = shownDigits(exact, exact.point + precision);
    // At most 16 significant digits: leading zeros, the one before the point too, are none, but that of 0 itself is.
    const int room = value == 0 ? 15 : shown.digits.empty() ? precision : std::max(16 - shown.point, 0);
    const auto before = static_cast<std::size_t>(std::max(shown.point, 0));
    const auto decimals = static_cast<std::size_t>(std::min(precision, room));
    std::string digits = std::string(static_cast<std::size_t>(std::max(-shown.point, 0)), '0') + shown.digits;
    digits.resize(before + decimals, '0');
    std::string text = value < 0 && !shown.digits.empty() ? "-" : "";
    text += before == 0 ? "0" : digits.substr(0, before);
    if (decimals != 0)
        text += "." + digits.substr(before);
    text.resize(std::min<std::size_t>(text.size(), 125));
    if (text.back() == '.')
        text.pop_back();
    return text;
}

/// Its scientific notation.
inline std::string scientificText(double value, const Decimal& exact, int precision) {
    Decimal shown = shownDigits(exact, precision + 1);
    shown.digits.resize(16, '0');
    const std::string decimals = shown.digits.substr(1, static_cast<std::size_t>(precision));
    char exponent[16];
    std::snprintf(exponent, sizeof exponent, "E%+04d", value == 0 ? 0 : shown.point - 1);
    return (value < 0 ? "-" : "") + shown.digits.substr(0, 1) + (decimals.empty() ? "" : "." + decimals) + exponent;
}

/// Finite doubles above 0 of every kind that a conversion treats apart, then `random` more of fixed seed. The fast
/// paths and the exact ones are run over the same.
inline std::vector<double> numbers(int random) {
    std::vector<double> values = {0.1,  0.5,      1.5,  2.5,     0.05, 0.125, 2.0 / 3, 9.5,      99.5,
                                  0.95, 999999.5, 1e21, 8.41e21, 1e23, 2e-44, 5e-324,  9.88e-324};
    values.insert(values.end(), {2.2250738585072011e-308, 1.7976931348623157e308, 4503599627370497.5,
                                 9007199254740993e3, 5.684341886080801e-14, 9.5367431640625e-07});
    // Odd significands whose interval ends at a shorter decimal.
    values.insert(values.end(), {18014398509481988.0, 18014398509482028.0, 36028797018963948.0});
    for (int e = -1074; e <= 1023; e += 7) {
        const double power = std::ldexp(1.0, e);
        values.insert(values.end(), {power, std::nextafter(power, 0.0) + 0.0, std::nextafter(power, 2 * power)});
    }
    for (int e = -323; e <= 308; e += 3)
        values.push_back(std::pow(10.0, e));
    std::mt19937_64 bits(20240611);
    for (int i = 0; i < random; ++i) {
        double v = std::bit_cast<double>(bits() >> 1);
        if (i % 4 == 1)
            v = static_cast<double>(bits() % 1000000000000) / std::pow(10.0, static_cast<double>(bits() % 7));
        else if (i % 4 == 2)
            v = std::ldexp(static_cast<double>(bits() % 100000), -static_cast<int>(bits() % 40));
        else if (i % 4 == 3)
            v = std::bit_cast<double>(bits() >> (12 + bits() % 40));
        values.push_back(v);
    }
    std::erase_if(values, [](double v) { return !(v > 0) || std::isinf(v); });
    return values;
}

} // namespace reference
