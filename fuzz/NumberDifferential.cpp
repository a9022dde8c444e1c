// A long run of numbers against the C and C++ libraries: digits in the modes that those have, and texts read, among
// them the middles between doubles. Not part of the suite. Prints what it compared; ends with 1 at the first
// difference. Usage: number_differential [MILLIONS [SEED]]

#include <TqOsBase/fltcvt/StrToD.h>
#include <TqOsBase/fltcvt/TqGdImpl.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

namespace {

struct Counts {
    std::uint64_t shortest = 0, significant = 0, places = 0, read = 0, readWide = 0, readMiddles = 0;
};

[[noreturn]] void fail(const char* what, double v, const std::string& ours, const std::string& theirs) {
    std::printf("DIFFERENCE in %s of %a: ours %s, theirs %s\n", what, v, ours.c_str(), theirs.c_str());
    std::exit(1);
}

class Random {
public:
    explicit Random(std::uint64_t seed) : m_bits(seed) {}

    std::uint64_t below(std::uint64_t n) { return m_bits() % n; }

    // Bit patterns, coordinates, sums of few powers of two (which make ties), subnormals.
    double number() {
        double v = 0;
        do {
            switch (below(4)) {
            case 0:
                v = std::bit_cast<double>(m_bits() >> 1);
                break;
            case 1:
                v = static_cast<double>(below(1000000000000)) / std::pow(10.0, static_cast<double>(below(7)));
                break;
            case 2:
                v = std::ldexp(static_cast<double>(m_bits() >> below(64)), static_cast<int>(below(120)) - 60);
                break;
            default:
                v = std::bit_cast<double>(m_bits() >> (1 + below(63)));
            }
        } while (!std::isfinite(v) || v == 0);
        return v;
    }

private:
    std::mt19937_64 m_bits;
};

// "d.ddde+x" or "ddd.ddd" as digits and point: "ddd*point".
std::string normalised(const char* text, const char* end) {
    std::string digits;
    int point = 0;
    bool isAfter = false;
    const char* p = text;
    for (; p != end && *p != 'e'; ++p) {
        if (*p == '.')
            isAfter = true;
        else
            digits += *p;
        point += isAfter || *p == '.' ? 0 : 1;
    }
    if (p != end)
        point += std::atoi(p + 1);
    const std::size_t zeros = std::min(digits.find_first_not_of('0'), digits.size());
    digits.erase(0, zeros);
    digits.erase(digits.find_last_not_of('0') + 1);
    return digits + "*" + (digits.empty() ? "" : std::to_string(point - static_cast<int>(zeros)));
}

std::string ours(double v, int mode, int ndigits) {
    int point = 0;
    int sign = 0;
    char* const text = TqGdImpl::dtoa(v, mode, ndigits, &point, &sign, nullptr);
    std::string result = text;
    TqGdImpl::freedtoa(text);
    return result + "*" + (result.empty() ? "" : std::to_string(point));
}

void compareDigits(Random& random, double v, Counts& counts) {
    std::array<char, 2000> text{};
    const char* const end = std::to_chars(text.data(), text.data() + text.size(), v, std::chars_format::scientific).ptr;
    const std::string shortest = normalised(text.data(), end);
    if (ours(v, 0, 0) != shortest)
        fail("the shortest digits", v, ours(v, 0, 0), shortest);
    ++counts.shortest;

    const int count = 1 + static_cast<int>(random.below(40));
    int length = std::snprintf(text.data(), text.size(), "%.*e", count - 1, v);
    std::string theirs = normalised(text.data(), text.data() + length);
    if (ours(v, 2, count) != theirs)
        fail("significant digits", v, ours(v, 2, count), theirs);
    ++counts.significant;

    const int places = static_cast<int>(random.below(40));
    length = std::snprintf(text.data(), text.size(), "%.*f", places, v);
    theirs = normalised(text.data(), text.data() + length);
    if (ours(v, 3, places) != theirs)
        fail("digits to a place", v, ours(v, 3, places), theirs);
    ++counts.places;
}

void compareReading(const char* text, std::uint64_t& count, bool isWide) {
    char* end = nullptr;
    char* theirEnd = nullptr;
    const double theirs = std::strtod(text, &theirEnd);
    double v = 0;
    if (isWide) {
        std::array<wchar_t, 2000> wide{};
        for (std::size_t i = 0; text[i] != '\0'; ++i)
            wide[i] = static_cast<wchar_t>(text[i]);
        v = tqStrToD(wide.data(), nullptr);
        end = theirEnd;
    } else {
        v = tqStrToD(text, &end);
    }
    if (std::bit_cast<std::uint64_t>(v) != std::bit_cast<std::uint64_t>(theirs) || end != theirEnd)
        fail("reading", theirs, std::to_string(v), text);
    ++count;
}

void compareTexts(Random& random, double v, Counts& counts) {
    std::array<char, 2000> text{};
    std::snprintf(text.data(), text.size(), "%.*e", static_cast<int>(random.below(30)), v);
    compareReading(text.data(), counts.read, false);
    compareReading(text.data(), counts.readWide, true);
    // The middle between two doubles, exact in 64 bits, and one more or less somewhere after it.
    const long double middle =
        (static_cast<long double>(v) + static_cast<long double>(std::nextafter(v, HUGE_VAL))) / 2;
    const int digits = random.below(8) == 0 ? 1100 : static_cast<int>(random.below(60));
    const int length = std::snprintf(text.data(), text.size(), "%.*Le", digits, middle);
    if (random.below(2) != 0 && digits > 0) {
        char* const mark = static_cast<char*>(std::memchr(text.data(), 'e', static_cast<std::size_t>(length)));
        mark[-1] = static_cast<char>('0' + random.below(10));
    }
    compareReading(text.data(), counts.readMiddles, false);
}

} // namespace

int main(int argc, char** argv) {
    const std::uint64_t millions = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1;
    const std::uint64_t seed = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 20240801;
    Random random(seed);
    Counts counts;
    for (std::uint64_t i = 0; i < millions * 1000000; ++i) {
        const double v = random.number();
        compareDigits(random, v, counts);
        compareTexts(random, v, counts);
    }
    std::printf("seed %llu, no difference: %llu shortest, %llu of given count, %llu to a place; %llu read narrow, %llu "
                "wide, %llu at the middle of two doubles\n",
                static_cast<unsigned long long>(seed), static_cast<unsigned long long>(counts.shortest),
                static_cast<unsigned long long>(counts.significant), static_cast<unsigned long long>(counts.places),
                static_cast<unsigned long long>(counts.read), static_cast<unsigned long long>(counts.readWide),
                static_cast<unsigned long long>(counts.readMiddles));
}
