// Digits of doubles, text of doubles and doubles from text: ours, then the C or C++ library, then the packaged fast
// conversions. Who has no function for digits alone takes them from the text of its own that holds them.

#include "bench/Registration.h"

#include <TqOsBase/fltcvt/FloatText.h>
#include <TqOsBase/fltcvt/StrToD.h>
#include <TqOsBase/fltcvt/TqGdImpl.h>

#include <benchmark/benchmark.h>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <functional>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#if defined(TQ_BENCH_DOUBLE_CONVERSION)
#include <double-conversion/double-conversion.h>
#endif
#if defined(TQ_BENCH_FAST_FLOAT)
#include <fast_float/fast_float.h>
#endif

namespace {

// More than the branch predictor learns by heart.
constexpr std::size_t kValues = 8192;

using Doubles = std::vector<double>;
using Texts = std::vector<std::string>;

// Drawing coordinates: below a million, with 1 to 6 decimals. No multiples of 1/64, the only ones that can be ties: not
// all contenders round ties alike.
Doubles coordinates() {
    std::mt19937_64 random(20240712);
    Doubles values(kValues);
    for (double& v : values) {
        const double scale = std::pow(10.0, static_cast<double>(1 + random() % 6));
        do
            v = std::round(std::uniform_real_distribution<>(0, 1e6)(random) * scale) / scale;
        while (v * 64 == std::floor(v * 64));
    }
    return values;
}

// Computed lengths: nearly all have 17 digits.
Doubles seventeenDigits() {
    std::mt19937_64 random(20240713);
    Doubles values(kValues);
    for (double& v : values)
        v = std::uniform_real_distribution<>(0.1, 1000)(random) / 3;
    return values;
}

Doubles randomBits() {
    std::mt19937_64 random(20240714);
    Doubles values(kValues);
    for (double& v : values)
        do
            v = std::bit_cast<double>(random() >> 1);
        while (!std::isfinite(v));
    return values;
}

std::string shortest(double v) {
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, v).ptr};
}

Texts shortestTexts(const Doubles& values) {
    Texts texts;
    for (const double v : values)
        texts.push_back(shortest(v));
    return texts;
}

// Counts, colour numbers, flags: up to three digits.
Texts smallIntegers() {
    std::mt19937_64 random(20240715);
    Texts texts(kValues);
    for (std::string& text : texts)
        text = std::to_string(random() % 10 == 0 ? 0 : random() % 1000);
    return texts;
}

// Sizes as people enter them: 0.5, 12.75, 2.
Texts shortDecimals() {
    std::mt19937_64 random(20240716);
    Texts texts(kValues);
    for (std::string& text : texts)
        text = shortest(static_cast<double>(random() % 100000) / std::pow(10.0, static_cast<double>(random() % 4)));
    return texts;
}

// The middle between two doubles: 50 characters, nearly all of which decide.
Texts halfwayTexts() {
    constexpr std::size_t kLength = 50;
    Texts texts;
    for (const double v : seventeenDigits()) {
        char text[128];
        const long double middle = (static_cast<long double>(v) + std::nextafter(v, HUGE_VAL)) / 2;
        std::snprintf(text, sizeof text, "%.60Lf", middle);
        texts.push_back(std::string(text).substr(0, kLength));
    }
    return texts;
}

// Every contender folds what it made into a sum, which must be the same for all in one case.
struct Sums {
    std::string name;
    std::uint64_t sum;
};

void check(benchmark::State& state, const std::string& name, std::uint64_t sum) {
    static std::vector<Sums> known;
    const std::string test = name.substr(0, name.rfind('/'));
    for (const Sums& other : known)
        if (other.name == test) {
            if (other.sum != sum)
                state.SkipWithError("the results differ from those of the others");
            return;
        }
    known.push_back({test, sum});
}

template <class Value, class Convert>
void add(const std::string& name, const std::vector<Value>& values, Convert convert) {
    bench::add(name, [name, values, convert](benchmark::State& state) {
        std::uint64_t sum = 0;
        for (const Value& value : values)
            sum = sum * 31 + convert(value);
        check(state, name, sum);
        std::size_t i = 0;
        for ([[maybe_unused]] auto _ : state) {
            benchmark::DoNotOptimize(convert(values[i]));
            i = (i + 1) % kValues;
        }
    });
}

// What the digits of a number are judged by.
std::uint64_t fold(const char* digits, std::size_t count, int point) {
    return static_cast<std::uint64_t>(digits[0]) + (static_cast<std::uint64_t>(digits[count - 1]) << 8) +
           (count << 16) + (static_cast<std::uint64_t>(static_cast<unsigned>(point)) << 24);
}

std::uint64_t foldText(const char* text, std::size_t count) {
    return static_cast<std::uint64_t>(text[0]) + (static_cast<std::uint64_t>(text[count - 1]) << 8) + (count << 16);
}

std::uint64_t ourDigits(double v, int mode, int ndigits) {
    int point = 0;
    int sign = 0;
    char* end = nullptr;
    char* const digits = TqGdImpl::dtoa(v, mode, ndigits, &point, &sign, &end);
    const std::uint64_t sum = fold(digits, static_cast<std::size_t>(end - digits), point);
    TqGdImpl::freedtoa(digits);
    return sum;
}

// Digits and decimal point of a text "d.ddde+xx".
std::uint64_t splitExponent(char* text, const char* end) {
    char* const mark = static_cast<char*>(std::memchr(text, 'e', static_cast<std::size_t>(end - text)));
    int exponent = 0;
    std::from_chars(mark + (mark[1] == '+' ? 2 : 1), end, exponent);
    std::size_t count = 1;
    if (mark - text > 2) {
        count = static_cast<std::size_t>(mark - text) - 1;
        std::memmove(text + 1, text + 2, count - 1);
    }
    while (count > 1 && text[count - 1] == '0')
        --count;
    return fold(text, count, exponent + 1);
}

// Digits and decimal point of a text "ddd.ddd".
std::uint64_t splitFixed(char* text, const char* end) {
    char* const mark = static_cast<char*>(std::memchr(text, '.', static_cast<std::size_t>(end - text)));
    int point = static_cast<int>(mark - text);
    std::memmove(mark, mark + 1, static_cast<std::size_t>(end - mark) - 1);
    char* first = text;
    const char* last = end - 1;
    for (; first < last - 1 && *first == '0'; ++first)
        --point;
    while (last > first + 1 && last[-1] == '0')
        --last;
    return fold(first, static_cast<std::size_t>(last - first), point);
}

std::uint64_t shortestByToChars(double v) {
    char text[64];
    return splitExponent(text, std::to_chars(text, text + sizeof text, v, std::chars_format::scientific).ptr);
}

auto printed(const char* format, int places, std::uint64_t (*split)(char*, const char*)) {
    return [=](double v) {
        char text[512];
        const int length = std::snprintf(text, sizeof text, format, places, v);
        return split(text, text + length);
    };
}

#if defined(TQ_BENCH_DOUBLE_CONVERSION)
auto byDoubleConversion(double_conversion::DoubleToStringConverter::DtoaMode mode, int count) {
    return [=](double v) {
        char digits[128];
        bool sign = false;
        int length = 0;
        int point = 0;
        double_conversion::DoubleToStringConverter::DoubleToAscii(v, mode, count, digits, sizeof digits, &sign, &length,
                                                                  &point);
        while (length > 1 && digits[length - 1] == '0')
            --length;
        return fold(digits, static_cast<std::size_t>(length), point);
    };
}
#endif

void addDigits() {
    const std::pair<const char*, Doubles> sets[] = {
        {"coordinates", coordinates()}, {"17 digits", seventeenDigits()}, {"random bits", randomBits()}};
    for (const auto& [set, values] : sets) {
        const std::string name = std::string("digits/shortest, ") + set + "/";
        add(name + "ours", values, [](double v) { return ourDigits(v, 0, 0); });
        add(name + "to_chars", values, shortestByToChars);
#if defined(TQ_BENCH_DOUBLE_CONVERSION)
        add(name + "double-conversion", values,
            byDoubleConversion(double_conversion::DoubleToStringConverter::SHORTEST, 0));
#else
        bench::addMissing(name + "double-conversion");
#endif
    }
    const std::tuple<int, const char*, Doubles> rounded[] = {{6, "coordinates", coordinates()},
                                                             {16, "coordinates", coordinates()},
                                                             {17, "coordinates", coordinates()},
                                                             {17, "random bits", randomBits()},
                                                             {40, "random bits", randomBits()}};
    for (const auto& [count, set, values] : rounded) {
        const std::string name = "digits/" + std::to_string(count) + " digits, " + set + "/";
        add(name + "ours", values, [count = count](double v) { return ourDigits(v, 2, count); });
        add(name + "snprintf", values, printed("%.*e", count - 1, splitExponent));
        add(name + "to_chars", values, [count = count](double v) {
            char text[128];
            const char* end = std::to_chars(text, text + sizeof text, v, std::chars_format::scientific, count - 1).ptr;
            return splitExponent(text, end);
        });
        if (std::strcmp(set, "coordinates") != 0)
            continue; // double-conversion rounds a tie away from zero
#if defined(TQ_BENCH_DOUBLE_CONVERSION)
        add(name + "double-conversion", values,
            byDoubleConversion(double_conversion::DoubleToStringConverter::PRECISION, count));
#else
        bench::addMissing(name + "double-conversion");
#endif
    }
    add("digits/6 decimals, coordinates/ours", coordinates(), [](double v) { return ourDigits(v, 3, 6); });
    add("digits/6 decimals, coordinates/snprintf", coordinates(), printed("%.*f", 6, splitFixed));
#if defined(TQ_BENCH_DOUBLE_CONVERSION)
    add("digits/6 decimals, coordinates/double-conversion", coordinates(),
        byDoubleConversion(double_conversion::DoubleToStringConverter::FIXED, 6));
#else
    bench::addMissing("digits/6 decimals, coordinates/double-conversion");
#endif
}

struct TextRow {
    const char* name;
    char letter;
    int count;
    const char* format;
    std::chars_format peer;
};

// The exponent has two digits at least with the others and three with ours, so the end of the text is not compared.
void addTextOf(const TextRow& row, const char* set, const Doubles& values) {
    const std::string name = std::string("float text/") + row.name + ", " + set + "/";
    add(name + "ours", values, [row](double v) {
        char text[128];
        tqDToStr(text, v, row.letter, row.count, 0);
        return foldText(text, 1);
    });
    add(name + "snprintf", values, [row](double v) {
        char text[128];
        std::snprintf(text, sizeof text, row.format, row.count, v);
        return foldText(text, 1);
    });
    add(name + "to_chars", values, [row](double v) {
        char text[128];
        std::to_chars(text, text + sizeof text, v, row.peer, row.count);
        return foldText(text, 1);
    });
}

void addText() {
    const TextRow rows[] = {{"fixed, 4 decimals", 'f', 4, "%.*f", std::chars_format::fixed},
                            {"exponent, 6 decimals", 'e', 6, "%.*e", std::chars_format::scientific},
                            {"general, 6 digits", 'g', 6, "%.*g", std::chars_format::general},
                            {"general, 15 digits", 'g', 15, "%.*g", std::chars_format::general},
                            {"general, 17 digits", 'g', 17, "%.*g", std::chars_format::general},
                            {"exponent, 16 decimals", 'e', 16, "%.*e", std::chars_format::scientific},
                            {"fixed, 40 decimals", 'f', 40, "%.*f", std::chars_format::fixed},
                            {"exponent, 40 decimals", 'e', 40, "%.*e", std::chars_format::scientific}};
    const std::pair<const char*, Doubles> sets[] = {
        {"coordinates", coordinates()}, {"17 digits", seventeenDigits()}, {"random bits", randomBits()}};
    for (const TextRow& row : rows) {
        for (const auto& [set, values] : sets) {
            if (row.letter != 'f' || std::strcmp(set, "random bits") != 0) // 150 digits before the point
                addTextOf(row, set, values);
        }
    }
}

void addFromText() {
    const std::pair<const char*, Texts> sets[] = {{"coordinates", shortestTexts(coordinates())},
                                                  {"17 digits", shortestTexts(seventeenDigits())},
                                                  {"random shortest", shortestTexts(randomBits())},
                                                  {"small integers", smallIntegers()},
                                                  {"short decimals", shortDecimals()},
                                                  {"halfway, 50 characters", halfwayTexts()}};
    for (const auto& [set, texts] : sets) {
        const std::string name = std::string("from text/") + set + "/";
        const auto bits = [](double v) { return std::bit_cast<std::uint64_t>(v); };
        add(name + "ours", texts, [bits](const std::string& text) { return bits(tqStrToD(text.c_str(), nullptr)); });
        add(name + "strtod", texts,
            [bits](const std::string& text) { return bits(std::strtod(text.c_str(), nullptr)); });
        add(name + "from_chars", texts, [bits](const std::string& text) {
            double v = 0;
            std::from_chars(text.data(), text.data() + text.size(), v);
            return bits(v);
        });
#if defined(TQ_BENCH_FAST_FLOAT)
        add(name + "fast_float", texts, [bits](const std::string& text) {
            double v = 0;
            fast_float::from_chars(text.data(), text.data() + text.size(), v);
            return bits(v);
        });
#else
        bench::addMissing(name + "fast_float");
#endif
        if (texts[0].size() >= 50)
            continue;
        std::vector<std::wstring> wide;
        for (const std::string& text : texts)
            wide.emplace_back(text.begin(), text.end());
        const std::string wideName = std::string("from text/wide, ") + set + "/";
        add(wideName + "ours", wide,
            [bits](const std::wstring& text) { return bits(tqStrToD(text.c_str(), nullptr)); });
        add(wideName + "wcstod", wide,
            [bits](const std::wstring& text) { return bits(std::wcstod(text.c_str(), nullptr)); });
    }
}

[[maybe_unused]] const bool g_registered = [] {
    addDigits();
    addText();
    addFromText();
    return true;
}();

} // namespace
