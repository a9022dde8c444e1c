// The directive grammar of the output engine, its padding, its failures, and arguments by position.

#include "format/Directive.h"
#include "format/FormatProbe.h"
#include "reference/GuardedBuffer.h"

#include <TqOsBase/format/OutputWithFormat.h>

#include <climits>
#include <cwctype>
#include <initializer_list>
#include <random>
#include <vector>

namespace {

using probe::format;
using probe::widen;

// The grammar also reads formats at compile time.
constexpr tq::detail::Directive directiveOf(const wchar_t* p) {
    return tq::detail::parseDirective(p, true);
}
static_assert(directiveOf(L"3$+-08.*2$ld").position == 3 && directiveOf(L"3$+-08.*2$ld").width.value == 8);
static_assert(directiveOf(L"3$+-08.*2$ld").precision.isArgument && directiveOf(L"3$+-08.*2$ld").kind->base == 10);

std::wstring digitsIn(unsigned long long value, unsigned base) {
    std::wstring text;
    do {
        text.insert(text.begin(), L"0123456789ABCDEF"[value % base]);
        value /= base;
    } while (value != 0);
    return text;
}

std::wstring withPoint(std::wstring digits, int precision) {
    if (precision < 0)
        return digits;
    while (static_cast<int>(digits.size()) < precision + 1)
        digits.insert(digits.begin(), L'0');
    return digits.insert(digits.size() - static_cast<std::size_t>(precision), 1, L'.');
}

std::wstring padded(std::wstring text, int width, bool left, bool zero, bool numeric) {
    const auto missing = static_cast<std::size_t>(std::max(width - static_cast<int>(text.size()), 0));
    if (left)
        return text + std::wstring(missing, L' ');
    const bool afterSign = zero && numeric && !text.empty() && (text[0] == L'-' || text[0] == L'+');
    return text.insert(afterSign ? 1 : 0, missing, zero ? L'0' : L' ');
}

// Formats into a buffer of exactly `capacity` characters before a page that cannot be touched.
struct Attempt {
    int result;
    std::wstring text;
};

template <class... Arguments>
Attempt formatInto(reference::GuardedBuffer<wchar_t>& guarded, int capacity, const wchar_t* format,
                   Arguments... arguments) {
    wchar_t* buffer = guarded.last(static_cast<std::size_t>(capacity));
    std::fill_n(buffer, capacity, L'#');
    const int result = FormatUtil::outputStringWithFormat(buffer, capacity, format, arguments...);
    return {result, buffer};
}

int formatMoving(wchar_t** out, int capacity, const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    const int result = OutputWithFormat(out, capacity, format, args);
    va_end(args);
    return result;
}

// What the letters take, and their texts without a precision.
struct Letter {
    wchar_t letter;
    enum { kInt, kLong, kDouble, kCharacter, kString, kItself } takes;
    const wchar_t* text;
};
const Letter kLetters[] = {{L'd', Letter::kInt, L"-42"},
                           {L'i', Letter::kInt, L"-42"},
                           {L'u', Letter::kInt, L"4294967254"},
                           {L'o', Letter::kInt, L"37777777726"},
                           {L'x', Letter::kInt, L"FFFFFFD6"},
                           {L'p', Letter::kInt, L"FFFFFFD6"},
                           {L'D', Letter::kLong, L"-42"},
                           {L'I', Letter::kLong, L"-42"},
                           {L'f', Letter::kDouble, L""},
                           {L'g', Letter::kDouble, L""},
                           {L'G', Letter::kDouble, L""},
                           {L'e', Letter::kDouble, L""},
                           {L'c', Letter::kCharacter, L"x"},
                           {L's', Letter::kString, L"h\u00e9llo"},
                           {L'%', Letter::kItself, L"%"},
                           {L'y', Letter::kItself, L"y"},
                           {L'E', Letter::kItself, L"E"},
                           {L'b', Letter::kInt, L"11111111111111111111111111010110"},
                           {L'U', Letter::kLong, L"18446744073709551574"},
                           {L'O', Letter::kLong, L"1777777777777777777726"},
                           {L'X', Letter::kLong, L"FFFFFFFFFFFFFFD6"},
                           {L'B', Letter::kLong, L"1111111111111111111111111111111111111111111111111111111111010110"}};

std::wstring textOf(const Letter& letter, bool plus, int precision) {
    if (letter.takes == Letter::kInt || letter.takes == Letter::kLong)
        return letter.text[0] == L'-' ? L"-" + withPoint(letter.text + 1, precision)
                                      : withPoint(letter.text, precision);
    if (letter.takes == Letter::kString)
        return std::wstring(letter.text).substr(0, static_cast<std::size_t>(precision));
    if (letter.takes != Letter::kDouble)
        return letter.text;
    char text[64];
    const bool isScientific = letter.letter == L'e';
    std::snprintf(text, sizeof text,
                  isScientific ? "%.*e"
                  : plus       ? "%+.*f"
                               : "%.*f",
                  precision < 0 ? 6 : precision, 2.71828);
    const std::wstring number = widen(text);
    return isScientific ? number.substr(0, number.size() - 4) + L"E+000" : number;
}

TEST(OutputWithFormat, RendersEveryFlagWidthPrecisionAndLetterIntoExactBuffers) {
    reference::GuardedBuffer<wchar_t> guarded(256);
    for (const Letter& letter : kLetters) {
        for (const std::wstring flags : {L"", L"+", L"-", L"+-", L"-+", L"0", L"+0", L"-0", L"-+0"}) {
            for (const int width : {0, 1, 7, 40, 95}) {
                for (const int precision : {-1, 0, 1, 3, 9}) {
                    const bool numeric = letter.takes <= Letter::kDouble;
                    const auto has = [&flags](wchar_t flag) { return flags.find(flag) != std::wstring::npos; };
                    const std::wstring wanted =
                        padded(textOf(letter, has(L'+'), precision), width, has(L'-'), has(L'0'), numeric);
                    const std::wstring directive = L"%" + flags + (width > 0 ? std::to_wstring(width) : L"") +
                                                   (precision >= 0 ? L"." + std::to_wstring(precision) : L"") +
                                                   letter.letter;
                    const auto attempt = [&](std::size_t capacity) {
                        const auto into = [&](auto argument) {
                            return formatInto(guarded, static_cast<int>(capacity), directive.c_str(), argument);
                        };
                        return letter.takes == Letter::kDouble      ? into(2.71828)
                               : letter.takes == Letter::kString    ? into(letter.text)
                               : letter.takes == Letter::kCharacter ? into(L'x')
                               : letter.takes == Letter::kLong      ? into(-42LL)
                                                                    : into(-42);
                    };
                    const Attempt fitting = attempt(wanted.size() + 1);
                    ASSERT_EQ(fitting.text, wanted) << directive;
                    ASSERT_EQ(fitting.result, static_cast<int>(wanted.size())) << directive;
                    if (wanted.empty())
                        continue;
                    // One character less: the last run or text is missing as a whole, what came before it stays.
                    const Attempt cut = attempt(wanted.size());
                    ASSERT_EQ(cut.result, -1) << directive;
                    ASSERT_TRUE(wanted.starts_with(cut.text) && cut.text.size() < wanted.size()) << directive;
                }
            }
        }
    }
}

// In place, where digits may be written after the text, and at the end of a page, where they may not.
TEST(OutputWithFormat, RendersIntegersAndStringsOfEveryLength) {
    reference::GuardedBuffer<wchar_t> guarded(256);
    const auto expectBoth = [&guarded](const std::wstring& wanted, const wchar_t* directive, auto... arguments) {
        ASSERT_EQ(format(directive, arguments...), wanted);
        const Attempt exact = formatInto(guarded, static_cast<int>(wanted.size()) + 1, directive, arguments...);
        ASSERT_EQ(exact.text, wanted);
        ASSERT_EQ(exact.result, static_cast<int>(wanted.size()));
    };
    std::vector<unsigned long long> values{0, ULLONG_MAX, LLONG_MAX, 1ULL << 63};
    for (unsigned long long power = 1; power <= ULLONG_MAX / 10; power *= 10)
        values.insert(values.end(), {power - 1, power, power + 1, power * 10 - 1, power * 2 / 3, power / 7 * 9});
    std::mt19937_64 random(17);
    for (int i = 0; i < 2000; ++i)
        values.push_back(random() >> (random() % 64));
    for (const unsigned long long value : values) {
        const auto low = static_cast<unsigned>(value);
        expectBoth(std::to_wstring(value), L"%U", value);
        expectBoth(std::to_wstring(static_cast<long long>(value)), L"%D", value);
        expectBoth(std::to_wstring(low), L"%u", low);
        expectBoth(std::to_wstring(static_cast<int>(low)), L"%d", low);
        expectBoth(digitsIn(value, 16), L"%X", value);
        expectBoth(padded(digitsIn(low, 16), 8, false, true, true), L"%08x", low);
        for (const int width : {9, 11, 16, 17, 21, 40})
            expectBoth(padded(std::to_wstring(static_cast<long long>(value)), width, false, true, true), L"%0*D", width,
                       value);
    }
    reference::GuardedBuffer<wchar_t> source(80);
    for (std::size_t length = 0; length < 80; ++length) {
        std::wstring text;
        while (text.size() < length)
            text += static_cast<wchar_t>(1 + (0xFFFF00 >> random() % 25));
        // At the end of a page, and with more text and further ends after it.
        expectBoth(text, L"%s", source.place(text.c_str(), length + 1));
        const std::wstring followed = text + L'\0' + text + L'\0' + std::wstring(80, L'#');
        expectBoth(text, L"%s", followed.c_str());
        expectBoth(L"<" + text.substr(0, 33) + L">", L"<%.33s>", text.c_str());
    }
}

TEST(OutputWithFormat, ReadsTheOddCornersOfTheGrammar) {
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {{L"%", L""},
                                                              {L"100%% %y %E|%", L"100% y E|"},
                                                              {L"%#x|%++d", L"#x|+d"},
                                                              {L"%5.2d|%.0d", L" 0.07|7."},
                                                              {L"%ld%hd", L"77"},
                                                              {L"%.d|", L"7.|"},
                                                              {L"%05c", L"0000\a"},
                                                              {L"a\u4e2db%n%S%C", L"a\u4e2dbnSC"},
                                                              {L"%+-05d|", L"7    |"}, // the 0 belongs to the width
                                                              {L"%+-0*d|", L"*d|"},    // and so the star is the letter
                                                              {L"%-0 5d", L" 5d"},     // no blank flag
                                                              {L"%$3d", L"  7"},       // a lone dollar sign is skipped
                                                              {L"%lld", L"ld"}};       // one letter of length only
    for (const auto& [directives, text] : rows)
        EXPECT_EQ(format(directives, 7, 7), text) << directives;
    EXPECT_EQ(format(L"%*d|%-*d|%.*d", 4, 1, 4, 2, 2, 3), L"   1|2   |0.03");
    EXPECT_EQ(format(L"%.*f|%.*s", -3, 2.5, -1, L"abc"), L"3|");
    EXPECT_EQ(format(L"%d %D %d", INT_MIN, LLONG_MIN, 5), L"-2147483648 -9223372036854775808 5");
    EXPECT_EQ(format(L"%p", 0x123456789abcdef0ULL), L"9ABCDEF0");
    EXPECT_EQ(format(L"[%s]", static_cast<const wchar_t*>(nullptr)), L"[]");
    // The limit is what keeps a string without a terminator from being read too far.
    reference::GuardedBuffer<wchar_t> guarded(4);
    EXPECT_EQ(format(L"%.3s", guarded.place(L"abc", 3)), L"abc");
}

TEST(OutputWithFormat, TakesMoreArgumentsThanRegistersHold) {
    const wchar_t* const text = L"x";
    EXPECT_EQ(format(L"%d %s %.1f %D %d %s %.1f %.1f %u %.1f %.1f %.1f %.1f %.1f %.1f %d %.1f %s", 1, text, 1.5, 2LL, 3,
                     text, 2.5, 3.5, 4U, 4.5, 5.5, 6.5, 7.5, 8.5, 9.5, 5, 10.5, text),
              L"1 x 1.5 2 3 x 2.5 3.5 4 4.5 5.5 6.5 7.5 8.5 9.5 5 10.5 x");
}

TEST(OutputWithFormat, TakesArgumentsByPosition) {
    EXPECT_EQ(format(L"%2$s %1$d", 7, L"abc"), L"abc 7");
    EXPECT_EQ(format(L"%3$.*1$f %3$0*2$.1f", 2, 6, 1.25), L"1.25 0001.3");
    EXPECT_EQ(format(L"%1$d %1$x %2$hd", 255, 3), L"255 FF 3");
    EXPECT_EQ(format(L"%2$D %3$c %1$U %4$s", 18446744073709551615ULL, -5LL, L'z', L"end"),
              L"-5 z 18446744073709551615 end");
    EXPECT_EQ(format(L"%2$.20q*1$", 1, 2.5), L"2.5000");
    // After a star the dollar sign may be missing.
    EXPECT_EQ(format(L"%1$.20q*3|%2$d", 14.5, 7, 1), L"14.5000|7");
    EXPECT_EQ(format(L"%3$*1.*2f|%1$d", 6, 2, 1.25), L"  1.25|6");
    EXPECT_EQ(format(L"%1$*d|%1$*.*f|%1$d", 3), L"  3|0.000|3");
    // What is not collected counts as nothing: the last introducer decides how many there are.
    EXPECT_EQ(format(L"%1$d %d|", 7), L"0 0|");
    EXPECT_EQ(format(L"%3$d%3$s%3$f|", 1, 2, 2.5), L"02.500000|");
    // A number without a position takes the first argument; digits without a dollar sign are a width.
    EXPECT_EQ(format(L"%4d %1$d", 7), L"   7 7");
    // An argument collected as another kind is not taken for a pointer or a double.
    EXPECT_EQ(format(L"[%1$s] %1$d", 7), L"[] 7");
    EXPECT_EQ(format(L"%1$f %1$d", 7), L"0.000000 7");
    EXPECT_EQ(format(L"%0$d %1$d", 7), L"0 7");
    EXPECT_EQ(format(L"%99999999999$d|%1$d", 7), L"0|7");
}

TEST(OutputWithFormat, TellsFailuresApartAndStaysTerminated) {
    reference::GuardedBuffer<wchar_t> guarded(64);
    const struct {
        int capacity;
        const wchar_t* format;
        int argument, result;
        std::wstring text;
    } rows[] = {{4, L"abc", 0, 3, L"abc"},
                {3, L"abc", 0, 0, L""},
                {5, L"ab%dcd", 7, 0, L"ab7"},
                {4, L"ab%dcd", 77, -1, L"ab"},
                {4, L"%06d", -7, -1, L"-"},
                {64, L"%.2044d", 7, -1, L""},
                {64, L"%.9999999999d", 7, -1, L""},
                {64, nullptr, 0, -1, L""},
                {1, L"", 0, 0, L""},
                {64, L"%*d", -1, -1, std::wstring(60, L' ')}}; // endless: runs of 30 until no more fit
    for (const auto& row : rows) {
        const Attempt attempt = formatInto(guarded, row.capacity, row.format, row.argument, 7);
        EXPECT_EQ(attempt.result, row.result) << row.format;
        EXPECT_EQ(attempt.text, row.text);
    }
    wchar_t untouched[2] = {L'#', L'#'};
    wchar_t* out = untouched;
    for (const int capacity : {0, -1, INT_MIN})
        EXPECT_EQ(formatMoving(&out, capacity, L"abc"), -1);
    EXPECT_TRUE(out == untouched && untouched[0] == L'#');
    EXPECT_EQ(formatMoving(nullptr, 8, L"abc"), -1);
    wchar_t* none = nullptr;
    EXPECT_EQ(formatMoving(&none, 8, L"abc"), -1);

    wchar_t buffer[16];
    out = buffer;
    EXPECT_EQ(formatMoving(&out, 16, L"%d-%s", 12, L"x"), 4);
    EXPECT_EQ(out, buffer + 4);
    EXPECT_EQ(formatMoving(&out, 3, L"%d", 1234), -1);
    EXPECT_EQ(out, buffer + 4);
    // Strings are longer than the work buffer allows for numbers.
    const std::wstring text(5000, L'x');
    std::wstring room(5002, L'#');
    EXPECT_EQ(FormatUtil::outputStringWithFormat(room.data(), 5002, L"%s!", text.c_str()), 5001);
    EXPECT_EQ(room, text + L"!" + L'\0');
}

} // namespace
