#pragma once

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

namespace reference {

/// Every digit of a finite magnitude before and after the point, from the C library's exact conversion.
struct ExactDecimal {
    std::string integer;
    std::string fraction;

    explicit ExactDecimal(double magnitude) {
        char text[1600];
        const int length = std::snprintf(text, sizeof text, "%.1100f", magnitude);
        integer.assign(text, text + length - 1101);
        fraction.assign(text + length - 1100, text + length);
    }
};

/// Digits with a point behind the first `point` of them.
struct PointedDigits {
    std::string digits;
    int point;
};

/// Rounds after `keep` digits with halves up, as on paper; a carry makes the number one digit longer.
inline PointedDigits roundHalfUp(PointedDigits value, int keep) {
    if (keep < 0)
        return {std::string(), value.point - keep};
    const bool up = keep < static_cast<int>(value.digits.size()) && value.digits[static_cast<std::size_t>(keep)] >= '5';
    value.digits.resize(static_cast<std::size_t>(keep), '0');
    if (!up)
        return value;
    int i = keep - 1;
    for (; i >= 0 && value.digits[static_cast<std::size_t>(i)] == '9'; --i)
        value.digits[static_cast<std::size_t>(i)] = '0';
    if (i >= 0) {
        ++value.digits[static_cast<std::size_t>(i)];
    } else {
        value.digits.insert(value.digits.begin(), '1');
        ++value.point;
    }
    return value;
}

/// All digits from the 17th significant one on become 0.
inline void cutTo16(std::string& digits) {
    const std::size_t first = digits.find_first_not_of('0');
    if (first != std::string::npos && digits.size() > first + 16)
        std::fill(digits.begin() + static_cast<std::ptrdiff_t>(first) + 16, digits.end(), '0');
}

/// The fixed notation of the output engine for a finite value.
inline std::string fixedText(double value, int precision) {
    const ExactDecimal exact(std::fabs(value));
    const int integerDigits = static_cast<int>(exact.integer.size());
    PointedDigits rounded =
        roundHalfUp({exact.integer + exact.fraction, integerDigits}, integerDigits + std::min(precision, 1100));
    cutTo16(rounded.digits);
    const auto point = static_cast<std::size_t>(rounded.point);
    std::string text = rounded.digits.substr(0, point);
    std::string decimals = rounded.digits.substr(point);
    // At most 16 significant digits: leading zeros, the one before the point too, are none.
    const std::size_t first = rounded.digits.find_first_not_of('0');
    const std::size_t shown = (first == std::string::npos ? (value == 0 ? 0 : rounded.digits.size()) : first) + 16;
    decimals.resize(std::min(decimals.size(), shown > point ? shown - point : 0));
    if (!decimals.empty())
        text += "." + decimals;
    if (value < 0 && first != std::string::npos)
        text.insert(text.begin(), '-');
    text.resize(std::min<std::size_t>(text.size(), 125));
    if (text.back() == '.')
        text.pop_back();
    return text;
}

/// Its scientific notation.
inline std::string scientificText(double value, int precision) {
    const ExactDecimal exact(std::fabs(value));
    const std::string all = exact.integer + exact.fraction;
    const std::size_t first = std::min(all.find_first_not_of('0'), all.size());
    PointedDigits digits{value == 0 ? "0" : all.substr(first),
                         value == 0 ? 1 : static_cast<int>(exact.integer.size()) - static_cast<int>(first)};
    digits = roundHalfUp(digits, std::min(precision, 1200) + 1);
    cutTo16(digits.digits);
    std::string text = value < 0 ? "-" : "";
    text += digits.digits[0];
    const int decimals = std::min(precision, 15);
    if (decimals > 0)
        text += "." + digits.digits.substr(1, static_cast<std::size_t>(decimals));
    char exponent[16];
    std::snprintf(exponent, sizeof exponent, "E%+04d", digits.point - 1);
    return text + exponent;
}

} // namespace reference
