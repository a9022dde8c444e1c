// Wide text under a format: ours, then the C library's vswprintf, then the formatting library that parses its format as
// well. Drawing units have no counterpart: beside them the others print the pieces, split and rounded beforehand.

#include "bench/Registration.h"

#include <TqOsBase/format/FormatUtil.h>
#include <TqOsBase/format/LumoAppUnitSets.h>
#include <TqOsBase/format/OutputWithFormat.h>
#include <TqOsBase/format/QMode.h>

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#if defined(TQ_BENCH_FMT)
#define FMT_HEADER_ONLY
#include <fmt/xchar.h>
#endif

namespace {

// More than the branch predictor learns by heart.
constexpr std::size_t kValues = 4096;
constexpr int kCapacity = 256;
constexpr double kPi = 3.141592653589793;

using Buffer = std::array<wchar_t, kCapacity>;

std::vector<int> integers() {
    std::mt19937 random(1);
    std::vector<int> values(kValues);
    for (int& value : values)
        value = static_cast<int>(random()) >> (random() % 31);
    return values;
}

// Coordinates below a million with up to 6 decimals, none of them a tie at a place that is shown.
std::vector<double> coordinates() {
    std::mt19937_64 random(2);
    std::vector<double> values(kValues);
    for (double& value : values) {
        const double scale = std::pow(10.0, static_cast<double>(1 + random() % 6));
        do
            value = std::round(static_cast<double>(random() % 1000000000000) / 1e6 * scale) / scale;
        while (value * 64 == std::floor(value * 64));
    }
    return values;
}

std::vector<std::wstring> names() {
    std::mt19937 random(3);
    std::vector<std::wstring> values(kValues);
    for (std::wstring& value : values) {
        for (std::size_t length = 4 + random() % 24; length > 0; --length)
            value += static_cast<wchar_t>(L'a' + random() % 26);
    }
    return values;
}

int ours(Buffer& buffer, const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    wchar_t* out = buffer.data();
    const int length = OutputWithFormat(&out, kCapacity, format, args);
    va_end(args);
    return length;
}

int baseline(Buffer& buffer, const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    const int length = std::vswprintf(buffer.data(), kCapacity, format, args);
    va_end(args);
    return length;
}

// Both sides must have written the same, as far as `compared` characters of each text tell.
void checkSame(const std::string& area, std::uint64_t checksum) {
    static std::map<std::string, std::uint64_t> known;
    const auto [entry, isNew] = known.emplace(area, checksum);
    if (!isNew && entry->second != checksum) {
        std::fprintf(stderr, "%s: the contenders wrote different texts\n", area.c_str());
        std::exit(1);
    }
}

template <class Values, class Write>
void add(const std::string& area, const char* who, const Values& values, int compared, Write write) {
    bench::add(area + "/" + who, [=](benchmark::State& state) {
        Buffer buffer{};
        std::uint64_t checksum = 0;
        for (std::size_t i = 0; i < values.size(); ++i) {
            const int length = std::min(write(buffer, i), compared);
            for (int k = 0; k < length; ++k)
                checksum = checksum * 31 + static_cast<std::uint64_t>(buffer[static_cast<std::size_t>(k)]);
        }
        if (compared > 0)
            checkSame(area, checksum);
        std::size_t i = 0;
        for (auto _ : state) {
            benchmark::DoNotOptimize(write(buffer, i));
            benchmark::ClobberMemory();
            i = i + 1 < values.size() ? i + 1 : 0;
        }
    });
}

template <class Values>
void addFormat(const std::string& area, const Values& values, int compared, const wchar_t* oursFormat,
               const wchar_t* baselineFormat, [[maybe_unused]] const wchar_t* peerFormat) {
    add(area, "ours", values, compared,
        [=](Buffer& buffer, std::size_t i) { return ours(buffer, oursFormat, values[i]); });
    add(area, "vswprintf", values, compared,
        [=](Buffer& buffer, std::size_t i) { return baseline(buffer, baselineFormat, values[i]); });
#if defined(TQ_BENCH_FMT)
    add(area, "fmt", values, compared, [=](Buffer& buffer, std::size_t i) {
        const auto result = fmt::format_to_n(buffer.data(), kCapacity, std::wstring_view(peerFormat), values[i]);
        return static_cast<int>(result.size);
    });
#else
    bench::addMissing(area + "/fmt");
#endif
}

void addStrings() {
    const std::vector<std::wstring> texts = names();
    std::vector<const wchar_t*> pointers;
    static std::vector<std::wstring> kept;
    kept = texts;
    for (const std::wstring& text : kept)
        pointers.push_back(text.c_str());
    addFormat("wide printf/%s", pointers, kCapacity, L"%s", L"%ls", L"{}");
}

// A length or an angle, and the pieces that it is shown in.
struct Pieces {
    double value;
    double inner; ///< inches or seconds with their decimals
    int outer;    ///< feet or degrees
    int middle;   ///< inches or minutes
    int numerator;
    int denominator;
};

std::vector<Pieces> lengths() {
    std::vector<Pieces> all;
    for (const double coordinate : coordinates()) {
        Pieces pieces{};
        // Multiples of 1/16 that are no whole inches.
        const auto sixteenths = static_cast<std::int64_t>(coordinate * 16) | 1;
        pieces.value = static_cast<double>(sixteenths) / 16;
        pieces.outer = static_cast<int>(pieces.value / 12);
        pieces.inner = pieces.value - 12.0 * pieces.outer;
        pieces.middle = static_cast<int>(pieces.inner);
        pieces.numerator = static_cast<int>(sixteenths % 16);
        pieces.denominator = 16;
        if (pieces.middle != 0 && pieces.outer != 0)
            all.push_back(pieces);
    }
    return all;
}

std::vector<Pieces> angles() {
    std::mt19937 random(4);
    std::vector<Pieces> all(kValues);
    for (Pieces& pieces : all) {
        pieces.outer = static_cast<int>(random() % 90);
        pieces.middle = static_cast<int>(random() % 60);
        pieces.numerator = static_cast<int>(random() % 58);
        pieces.value = (pieces.outer + pieces.middle / 60.0 + (pieces.numerator + 0.3) / 3600.0) * kPi / 180;
    }
    return all;
}

// What the peers print: the pieces of a length or an angle, under the format of each.
template <class Arguments>
void addUnits(const std::string& area, const std::vector<Pieces>& values, int type, std::int16_t mode, int compared,
              const wchar_t* baselineFormat, [[maybe_unused]] const wchar_t* peerFormat, Arguments arguments) {
    add(area, "ours", values, compared, [=](Buffer& buffer, std::size_t i) {
        // Other cases have left their settings.
        if (i == 0) {
            LumoAppUnitSets units;
            units.linearUnitMode = units.angularUnitMode = mode;
            initOsBaseUnits(units);
        }
        return ours(buffer, L"%.30q*", type, values[i].value);
    });
    add(area, "vswprintf", values, compared, [=](Buffer& buffer, std::size_t i) {
        return std::apply([&](auto... pieces) { return baseline(buffer, baselineFormat, pieces...); },
                          arguments(values[i]));
    });
#if defined(TQ_BENCH_FMT)
    add(area, "fmt", values, compared, [=](Buffer& buffer, std::size_t i) {
        return std::apply(
            [&](auto... pieces) {
                const std::wstring_view format = peerFormat;
                return static_cast<int>(fmt::format_to_n(buffer.data(), kCapacity, format, pieces...).size);
            },
            arguments(values[i]));
    });
#else
    bench::addMissing(area + "/fmt");
#endif
}

void addAllUnits() {
    const std::vector<Pieces> length = lengths();
    const std::vector<Pieces> angle = angles();
    addUnits("units/length scientific", length, kQTypeLength, kLinearScientific, 0, L"%.4E", L"{:.4E}",
             [](const Pieces& p) { return std::tuple(p.value); });
    addUnits("units/length decimal", length, kQTypeLength, kLinearDecimal, kCapacity, L"%.4f", L"{:.4f}",
             [](const Pieces& p) { return std::tuple(p.value); });
    addUnits("units/length engineering", length, kQTypeLength, kLinearEngineering, kCapacity, L"%d'-%.4f\"",
             L"{}'-{:.4f}\"", [](const Pieces& p) { return std::tuple(p.outer, p.inner); });
    addUnits("units/length architectural", length, kQTypeLength, kLinearArchitectural, kCapacity, L"%d'-%d %d/%d\"",
             L"{}'-{} {}/{}\"",
             [](const Pieces& p) { return std::tuple(p.outer, p.middle, p.numerator, p.denominator); });
    addUnits("units/length fractional", length, kQTypeLength, kLinearFractional, kCapacity, L"%d %d/%d", L"{} {}/{}",
             [](const Pieces& p) { return std::tuple(p.outer * 12 + p.middle, p.numerator, p.denominator); });
    addUnits("units/angle degrees", angle, kQTypeAngle, kAngularDegrees, kCapacity, L"%.4f", L"{:.4f}",
             [](const Pieces& p) { return std::tuple(p.value * 57.29577951308232); });
    addUnits("units/angle degrees, minutes, seconds", angle, kQTypeAngle, kAngularDegreesMinutesSeconds, kCapacity,
             L"%dd%d'%d\"", L"{}d{}'{}\"", [](const Pieces& p) { return std::tuple(p.outer, p.middle, p.numerator); });
    addUnits("units/angle grads", angle, kQTypeAngle, kAngularGrads, kCapacity, L"%.4fg", L"{:.4f}g",
             [](const Pieces& p) { return std::tuple(p.value * 63.66197723675813); });
    addUnits("units/angle radians", angle, kQTypeAngle, kAngularRadians, kCapacity, L"%.4fr", L"{:.4f}r",
             [](const Pieces& p) { return std::tuple(p.value); });
    addUnits("units/angle surveyor", angle, kQTypeAngle, kAngularSurveyor, 0, L"N %dd%d'%d\" E", L"N {}d{}'{}\" E",
             [](const Pieces& p) { return std::tuple(89 - p.outer, 59 - p.middle, 59 - p.numerator); });
}

const bool kRegistered = [] {
    const std::vector<int> numbers = integers();
    const std::vector<double> reals = coordinates();
    // The forms of e and g differ behind the digits.
    constexpr int kMantissa = 7;
    addFormat("wide printf/%d", numbers, kCapacity, L"%d", L"%d", L"{}");
    addFormat("wide printf/%08x", std::vector<unsigned>(numbers.begin(), numbers.end()), kCapacity, L"%08x", L"%08X",
              L"{:08X}");
    addStrings();
    addFormat("wide printf/%.4f", reals, kCapacity, L"%.4f", L"%.4f", L"{:.4f}");
    addFormat("wide printf/%e", reals, kMantissa, L"%e", L"%e", L"{:e}");
    addFormat("wide printf/%g", reals, 0, L"%g", L"%g", L"{:g}");
    addAllUnits();
    return true;
}();

} // namespace
