// The directive grammar of the output engine, its padding, its failures, and arguments by position.

#include <TqOsBase/format/Directive.h>
#include "format/FormatProbe.h"
#include "reference/GuardedBuffer.h"

#include <TqOsBase/format/OutputWithFormat.h>

#include <initializer_list>

namespace {

using probe::format;
using probe::widen;

// The grammar also reads formats at compile time.
constexpr auto kParsed = [](const wchar_t* p) { return tq::detail::parseDirective(p, true); }(L"3$+-08.*2$ld");
static_assert(kParsed.position == 3 && kParsed.width.value == 8 && kParsed.precision.isArgument);

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

// A letter with every flag, width and precision, into a buffer of the text's size and into one that is too small.
// `textOf` gives the text without padding, for a plus flag and a precision, -1 for none.
template <class Argument, class TextOf>
void renderEvery(wchar_t letter, Argument argument, bool numeric, const TextOf& textOf) {
    static reference::GuardedBuffer<wchar_t> guarded(256);
    for (const std::wstring flags : {L"", L"+", L"-", L"+-", L"-+", L"0", L"+0", L"-0", L"-+0"}) {
        for (const int width : {0, 1, 7, 40, 95}) {
            for (const int precision : {-1, 0, 1, 3, 9}) {
                const auto has = [&flags](wchar_t flag) { return flags.find(flag) != std::wstring::npos; };
                const std::wstring wanted = padded(textOf(has(L'+'), precision), width, has(L'-'), has(L'0'), numeric);
                const std::wstring directive = L"%" + flags + (width > 0 ? std::to_wstring(width) : L"") +
                                               (precision >= 0 ? L"." + std::to_wstring(precision) : L"") + letter;
                const auto size = static_cast<int>(wanted.size());
                const Attempt fitting = formatInto(guarded, size + 1, directive.c_str(), argument);
                ASSERT_EQ(fitting.text, wanted) << directive;
                ASSERT_EQ(fitting.result, size) << directive;
                if (size == 0)
                    continue;
                // One character less: the last run or text is missing as a whole, what came before it stays.
                const Attempt cut = formatInto(guarded, size, directive.c_str(), argument);
                ASSERT_EQ(cut.result, -1) << directive;
                ASSERT_TRUE(wanted.starts_with(cut.text) && cut.text.size() < wanted.size()) << directive;
            }
        }
    }
}

TEST(OutputWithFormat, RendersEveryFlagWidthPrecisionAndLetterIntoExactBuffers) {
    const auto integer = [](const std::wstring& sign, const std::wstring& digits) {
        return [=](bool, int precision) { return sign + withPoint(digits, precision); };
    };
    for (const wchar_t* letters : {L"dD", L"iI"}) {
        renderEvery(letters[0], -42, true, integer(L"-", L"42"));
        renderEvery(letters[1], -42LL, true, integer(L"-", L"42"));
    }
    for (const auto& [letters, base] : {std::pair(L"uU", 10U), {L"oO", 8U}, {L"xX", 16U}, {L"bB", 2U}, {L"pX", 16U}}) {
        renderEvery(letters[0], -42, true, integer(L"", digitsIn(UINT_MAX - 41, base)));
        renderEvery(letters[1], -42LL, true, integer(L"", digitsIn(ULLONG_MAX - 41, base)));
    }
    const auto number = [](const char* format) {
        return [=](bool plus, int precision) {
            char text[64];
            std::snprintf(text, sizeof text, format, precision < 0 ? 6 : precision, 2.71828);
            return (plus ? L"+" : L"") + widen(text);
        };
    };
    for (const wchar_t letter : {L'f', L'g', L'G'})
        renderEvery(letter, 2.71828, true, number("%.*f"));
    renderEvery(L'e', 2.71828, true, [&](bool, int precision) {
        const std::wstring text = number("%.*e")(false, precision);
        return text.substr(0, text.size() - 4) + L"E+000";
    });
    renderEvery(L's', L"h\u00e9llo", false, [](bool, int precision) {
        return std::wstring(L"h\u00e9llo").substr(0, static_cast<std::size_t>(precision));
    });
    renderEvery(L'c', L'x', false, [](bool, int) { return std::wstring(L"x"); });
    for (const wchar_t letter : {L'%', L'y', L'E'})
        renderEvery(letter, 7, false, [=](bool, int) { return std::wstring(1, letter); });
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
    EXPECT_EQ(format(L"%3$d%3$s%3$f|", 2.5), L"02.500000|");
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
