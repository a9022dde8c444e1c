// More digits than two words hold, by the upper 256 bits of a power of five. The number is scaled so that seventeen
// digits lie before the point; multiplied by 10^16, what is after it shows its next sixteen. The cut power makes the
// result a little too small, and known digits are those that the error cannot change.

#include "fltcvt/BigInteger.h"
#include "fltcvt/DigitRequest.h"
#include "fltcvt/NarrowDigits.h"
#include "fltcvt/RoundDigits.h"
#include "fltcvt/Schubfach.h"
#include "fltcvt/WordArithmetic.h"

#include <array>
#include <cstdint>

namespace tq::detail {

namespace {

constexpr int kPowerWords = 4;
constexpr int kPowerBits = 64 * kPowerWords;

// The leading bits of 5^(kSpacing * j): floor(5^(kSpacing * j) / 2^exponent), the highest bit set.
struct PowerOfFive {
    std::array<std::uint64_t, kPowerWords> words; // Least significant first.
    int exponent;
};

// The powers between two of the table are 64 bits wide and exact.
constexpr int kSpacing = kLastSmallPowerOfFive + 1;
// Seventeen digits before the point: 10^16 to 5e-324 take powers from 10^-292 to 10^340.
constexpr int kFirst = -11;
constexpr int kLast = 12;

// Of number / 2^scale.
constexpr PowerOfFive leadingBits(BigInteger number, int scale) {
    PowerOfFive result{{}, number.bitCount() - kPowerBits - scale};
    number.shiftLeft((64 - number.bitCount() % 64) % 64);
    for (int i = 0; i < kPowerWords; ++i)
        result.words[static_cast<std::size_t>(kPowerWords - 1 - i)] = number.wordBelowTop(i);
    return result;
}

// Dividing step by step and cutting each time gives the same as cutting once.
constexpr auto computePowers() {
    constexpr int kReciprocalBits = 1023; // 5^308 has 716
    std::array<PowerOfFive, kLast - kFirst + 1> powers{};
    const auto at = [&powers](int j) -> PowerOfFive& { return powers[static_cast<std::size_t>(j - kFirst)]; };
    BigInteger number(1);
    for (int j = 0; j <= kLast; ++j) {
        at(j) = leadingBits(number, 0);
        number.multiplyByPowerOfFive(kSpacing);
    }
    number = BigInteger(1);
    number.shiftLeft(kReciprocalBits);
    for (int j = -1; j >= kFirst; --j) {
        number.divide(smallPowerOfFive(kLastSmallPowerOfFive));
        number.divide(5);
        at(j) = leadingBits(number, kReciprocalBits);
    }
    return powers;
}

constexpr auto kPowersOfFive = computePowers();

// A number in [0, 1) in units of 2^-192.
class Fraction {
public:
    // The `shift` lowest bits, 192 or more, of six words.
    Fraction(const std::uint64_t* words, int shift) noexcept {
        const int above = 64 * kProductWords - shift;
        for (int i = 0; i < kWords; ++i) {
            const std::uint64_t* from = words + i + (kProductWords - kWords) - above / 64;
            const UInt128 two = UInt128{from[0]} << 64 | from[-1];
            m_words[i] = static_cast<std::uint64_t>(two << (above % 64) >> 64);
        }
    }

    static constexpr int kProductWords = kPowerWords + 2;

    // Times 10^16: the integer part is taken away.
    std::uint64_t takeSixteenDigits() noexcept {
        return multiplyAdd(m_words, kWords, smallPowerOfTen(kDigitsInStep), std::uint64_t{0});
    }
    // Whether adding less than 2^-30 neither reaches 1 nor makes something out of nothing.
    bool isClear() const noexcept {
        constexpr std::uint64_t kError = std::uint64_t{1} << (64 - 30);
        return m_words[kWords - 1] != 0 && m_words[kWords - 1] <= ~kError;
    }

    static constexpr int kDigitsInStep = 16;

private:
    static constexpr int kWords = 3;

    std::uint64_t m_words[kWords];
};

} // namespace

// The product has P bits before it is cut, 255 more at least than x, and its error is below x. With at most 57 of them
// before the point the error is below 2^-198. Cutting the fraction adds less than 2^-192, and each step makes that
// 10^16 times as large: after three steps it is below 2^-32.
bool tryLongProductDigits(double v, DigitRequest request, char* out, DigitLayout& layout) noexcept {
    constexpr int kMostSteps = 3;
    const Normalised number(v);
    layout.point = floorLog10(number) + 1;
    const std::int64_t wanted = wantedDigits(request, layout.point);
    if (request.kind == DigitRequest::kShortest || wanted >= kMaxFastDigits + kMostSteps * Fraction::kDigitsInStep)
        return false;

    const int power = kMaxFastDigits - layout.point;
    const int j = (power - kFirst * kSpacing) / kSpacing + kFirst;
    const PowerOfFive& scale = kPowersOfFive[static_cast<std::size_t>(j - kFirst)];
    const UInt128 x = UInt128{number.significand} * smallPowerOfFive(power - j * kSpacing);
    std::uint64_t product[Fraction::kProductWords] = {};
    product[kPowerWords] = addMultiple(product, scale.words.data(), kPowerWords, static_cast<std::uint64_t>(x));
    product[kPowerWords + 1] =
        addMultiple(product + 1, scale.words.data(), kPowerWords, static_cast<std::uint64_t>(x >> 64));
    const int shift = -(number.exponent + power + scale.exponent); // 261 to 329
    const UInt128 top = UInt128{product[kPowerWords + 1]} << 64 | product[kPowerWords];
    const auto first = static_cast<std::uint64_t>(top >> (shift - kPowerBits));
    Fraction fraction(product, shift);

    if (first < smallPowerOfTen(kMaxFastDigits - 1))
        return false; // 1e23, a little too small
    writeUpToSeventeen(out, first, kMaxFastDigits);
    layout.count = kMaxFastDigits;
    for (; layout.count <= wanted; layout.count += Fraction::kDigitsInStep)
        SixteenDigits(fraction.takeSixteenDigits()).store(out + layout.count);
    if (!fraction.isClear())
        return false;
    roundDigits(out, true, request, layout);
    return true;
}

} // namespace tq::detail
