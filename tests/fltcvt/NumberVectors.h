#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace number_test {

/// Finite doubles above 0 of every kind that a conversion treats apart, then `random` more of fixed seed. The fast
/// paths and the exact ones are run over the same.
inline std::vector<double> vectors(int random) {
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

} // namespace number_test
