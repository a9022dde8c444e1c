#include "fltcvt/SwarDigits.h"
#include "reference/ExactDecimal.h"

namespace {

using reference::Decimal;
using tq::detail::EightCharacters;

// Each text ends at memory that cannot be touched; the same with more digits after its terminator reads alike.
template <class Char>
void checkAs(const std::string& text, double v, int error, std::size_t used) {
    static reference::GuardedBuffer<Char> buffer(70000);
    SCOPED_TRACE(text.substr(0, 200));
    std::basic_string<Char> wanted(text.begin(), text.end());
    const Char* placed = buffer.place(wanted.c_str(), wanted.size() + 1);
    const Char* const followed = wanted.append(1, Char{0}).append(EightCharacters::kCount, Char{'7'}).c_str();
    for (const Char* source : {placed, followed}) {
        Char* end = nullptr;
        errno = 0;
        EXPECT_EQ(std::bit_cast<std::uint64_t>(tqStrToD(source, &end)), std::bit_cast<std::uint64_t>(v));
        EXPECT_TRUE(errno == error && end == source + std::min(used, text.size()));
        EXPECT_EQ(std::bit_cast<std::uint64_t>(tqStrToD(source, nullptr)), std::bit_cast<std::uint64_t>(v));
    }
}

// As narrow and as wide text, of which so many characters belong to the number: all, when none are named.
void check(const std::string& text, double v, int error = 0, std::size_t used = std::string::npos) {
    checkAs<char>(text, v, error, used);
    checkAs<wchar_t>(text, v, error, used);
}

TEST(StrToD, Syntax) {
    using Row = std::tuple<const char*, double, std::size_t>;
    const Row rows[] = {{"1e-x", 1, 1},  {"1E+2", 100, 4},        {"1e 2", 1, 1},         {"+", 0, 0},
                        {"  ", 0, 0},    {"- 1", 0, 0},           {"--1", 0, 0},          {"-.e5", 0, 0},
                        {"  -.x", 0, 0}, {".5", 0.5, 2},          {"-5.e1", -50, 5},      {"0x10", 0, 1},
                        {"inf", 0, 0},   {"-000", -0.0, 4},       {"-0.e9", -0.0, 5},     {"1.2.3", 1.2, 3},
                        {"1\xB2", 1, 1}, {"  -1.5e3x", -1500, 8}, {"\t\n\v\f\r 7", 7, 7}, {"nan", 0, 0}};
    for (const auto& [text, value, used] : rows)
        check(text, value, 0, used);
    check("1e-0000000000000000000001", 0.1);
    check("0e99999999999999999999", 0);
    check("-0000000000000000000000.0000", -0.0);
    const wchar_t foreign[] = {L'1', static_cast<wchar_t>(0x10032), 0}; // '2' in its low bits
    EXPECT_EQ(tqStrToD(foreign, nullptr), 1.0);
}

// Every character, in every place and width, is told from a digit.
TEST(StrToD, EightCharactersAtOnce) {
    for (int c = 1; c < 0x200; ++c)
        for (std::size_t place = 0; place < EightCharacters::kCount; ++place) {
            const bool isDigit = c >= '0' && c <= '9';
            std::wstring wide = L"12345678";
            wide[place] = static_cast<wchar_t>(c | (place % 2 != 0 && !isDigit ? 0x110000 : 0));
            const std::string narrow(wide.begin(), wide.end());
            const EightCharacters eight(wide.c_str());
            ASSERT_EQ(eight.areDigits(), isDigit);
            ASSERT_TRUE(c >= 0x100 || EightCharacters(narrow.c_str()).areDigits() == isDigit);
            const std::string leading = "0" + narrow.substr(0, isDigit ? 8 : place);
            ASSERT_EQ(isDigit ? eight.value() : eight.value(eight.digitCount()), std::stoull(leading)) << c;
        }
}

TEST(StrToD, RangeAndExponents) {
    const std::string zeros(20000, '0');
    check("-1e99999", -HUGE_VAL, ERANGE);
    check("-1e-99999", -0.0, ERANGE);
    check("1e99999999999999999999", HUGE_VAL, ERANGE);
    check("1" + zeros + "e-20000", 1.0);
    check("-" + zeros + zeros + "." + zeros + "25e20001", -2.5);
    check("1" + zeros, HUGE_VAL, ERANGE);
    check("0." + zeros + "1", 0.0, ERANGE);
    check("2.4703282292062327e-324", 0.0, ERANGE);
    check("2.4703282292062328e-324", 5e-324);
    check("2.2250738585072011e-308", 2.2250738585072011e-308);
    check("1.7976931348623158e308", 1.7976931348623157e308);
    check("1.7976931348623159e308", HUGE_VAL, ERANGE);
    errno = 7;
    tqStrToD("1.5", nullptr);
    EXPECT_EQ(errno, 7);
}

// Decimals at and right beside the middle between two doubles, in all lengths. Any others are for fuzz/NumberFuzz.cpp.
TEST(StrToD, DecidesHalfwayCases) {
    std::mt19937 random(5);
    for (const double v : reference::numbers(300)) {
        const auto bits = std::bit_cast<std::uint64_t>(v);
        const bool isLargest = bits + 1 == std::bit_cast<std::uint64_t>(HUGE_VAL);
        const Decimal middle = reference::Binary(bits).middleAbove();
        const auto checkDecimal = [&](const std::string& digits, std::uint64_t expected) {
            const std::string exponent = "e" + std::to_string(middle.point - 1);
            const std::string text = digits.substr(0, 1) + "." + digits.substr(1) + exponent;
            check(text, std::bit_cast<double>(expected), isLargest && expected != bits ? ERANGE : 0);
        };
        checkDecimal(middle.digits, bits + (bits & 1));
        checkDecimal(middle.digits + std::string(random() % 900, '0'), bits + (bits & 1));
        checkDecimal(middle.digits + std::string(random() % 900, '0') + "1", bits + 1);
        std::string below = middle.digits; // does not end with 0
        --below.back();
        checkDecimal(below + std::string(20 + random() % 900, '9'), bits);
    }
}

} // namespace
