
#include "reference/Testing.h"

#include <TqOsBase/containers/Range.h>
#include <TqOsBase/format/Checked.h>
#include <TqOsBase/format/Directive.h>

namespace {

using reference::format;
using reference::widened;

// The grammar also reads formats at compile time.
constexpr auto kParsed = [](const wchar_t* p) { return tq::detail::parseDirective(p, true); }(L"3$+-08.*2$ld");
static_assert(kParsed.position == 3 && kParsed.width.value == 8 && kParsed.precision.isArgument);

// By the C library, whose printf knows the same letters.
std::wstring printed(const char* format, auto... arguments) {
    char text[80];
    std::snprintf(text, sizeof text, format, arguments...);
    return widened(text);
}

// The result and the text in a buffer of exactly `capacity` characters before a page that cannot be touched.
template <class... Arguments>
std::pair<int, std::wstring> formatInto(reference::GuardedBuffer<wchar_t>& guarded, int capacity, const wchar_t* format,
                                        Arguments... arguments) {
    wchar_t* buffer = guarded.last(static_cast<std::size_t>(capacity));
    std::fill_n(buffer, capacity, L'#');
    const int result = FormatUtil::outputStringWithFormat(buffer, capacity, format, arguments...);
    return {result, buffer};
}

int formatMoving(wchar_t** out, int capacity, const wchar_t* format, auto... arguments) {
    const auto write = [=](auto... rest) { return OutputWithFormat(out, capacity, rest...); };
    return reference::withList(write, format, arguments...);
}

// In place, where digits may be written after the text, and at the end of a page, where they may not.
TEST(OutputWithFormat, RendersIntegersAndStringsOfEveryLength) {
    reference::GuardedBuffer<wchar_t> guarded(256);
    const auto expectBoth = [&guarded](const std::wstring& wanted, const wchar_t* directive, auto... arguments) {
        ASSERT_EQ(format(directive, arguments...), wanted);
        const auto length = static_cast<int>(wanted.size());
        ASSERT_EQ(formatInto(guarded, length + 1, directive, arguments...), std::pair(length, wanted));
    };
    std::vector<unsigned long long> values{0, ULLONG_MAX, LLONG_MAX, 1ULL << 63};
    for (unsigned long long power = 1; power <= ULLONG_MAX / 10; power *= 10)
        values.insert(values.end(), {power - 1, power, power * 2 / 3, power / 7 * 9});
    for (const unsigned long long value : values) {
        const auto low = static_cast<unsigned>(value);
        expectBoth(printed("%llu", value), L"%U", value);
        expectBoth(printed("%lld", value), L"%D", value);
        expectBoth(printed("%d", low), L"%d", low);
        expectBoth(printed("%llX", value), L"%X", value);
        expectBoth(printed("%08X", low), L"%08x", low);
        for (const int width : {9, 11, 16, 17, 21, 40})
            expectBoth(printed("%0*lld", width, value), L"%0*D", width, value);
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
    using Row = std::pair<const wchar_t*, const wchar_t*>;
    const Row rows[] = {{L"%", L""},
                        {L"100%% %y %E|%", L"100% y E|"},
                        {L"%#x|%++d", L"#x|+d"},
                        {L"%5.2d|%.0d", L" 0.07|7."},
                        {L"%ld%hd", L"77"},
                        {L"%.d|%05c", L"7.|0000\a"},
                        {L"a\u4e2db%n%S%C", L"a\u4e2dbnSC"},
                        {L"%+-05d|", L"7    |"},    // the 0 belongs to the width
                        {L"%+-0*d|", L"*d|"},       // and so the star is the letter
                        {L"%-0 5d", L" 5d"},        // no blank flag
                        {L"%$3d|%lld", L"  7|ld"}}; // a lone dollar sign is skipped; one letter of length only
    for (const auto& [directives, text] : rows)
        EXPECT_EQ(format(directives, 7, 7), text) << directives;
    EXPECT_EQ(format(L"%*d|%-*d|%.*d", 4, 1, 4, 2, 2, 3), L"   1|2   |0.03");
    const wchar_t* const s = L"h\u00e9llo";
    EXPECT_EQ(format(L"%-8.2s|%+8.2s|%08s|%-5c|%-08d|%08.3i|%-8.1o|%b|%B|%O|%X|%I", s, s, s, L'x', -42, -42, 8, 5, 5LL,
                     8LL, 255LL, -42LL),
              L"h\u00e9      |      h\u00e9|000h\u00e9llo|x    |-42     |-000.042|1.0     |101|101|10|FF|-42");
    // More arguments than registers hold, and flags in any order.
    EXPECT_EQ(
        format(L"%d %s %.1f %D %d %s %-+7.1f|%+-7.1f|%+08.1f %.1f %08.1f %-8e|%+014.2e %G %.1f %d %.1f %s", 1, s, 1.5,
               2LL, 3, s, 2.5, 3.5, 4.5, 5.5, -6.5, 7.5, 8.5, -9.5, 10.5, 5, 11.5, s),
        L"1 h\u00e9llo 1.5 2 3 h\u00e9llo +2.5   |+3.5   |+00004.5 5.5 -00006.5 7.500000E+000|000008.50E+000 -9.500000 "
        L"10.5 5 11.5 h\u00e9llo");
    EXPECT_EQ(format(L"%.*f|%.*s", -3, 2.5, -1, L"abc"), L"3|");
    EXPECT_EQ(format(L"%d %D %p", INT_MIN, LLONG_MIN, 0x123456789abcdef0ULL),
              L"-2147483648 -9223372036854775808 9ABCDEF0");
    EXPECT_EQ(format(L"[%s]", static_cast<const wchar_t*>(nullptr)), L"[]");
    // The limit is what keeps a string without a terminator from being read too far.
    reference::GuardedBuffer<wchar_t> guarded(4);
    EXPECT_EQ(format(L"%.3s", guarded.place(L"abc", 3)), L"abc");
}

TEST(OutputWithFormat, TakesArgumentsByPosition) {
    EXPECT_EQ(format(L"%3$.*1$f %3$0*2$.1f", 2, 6, 1.25), L"1.25 0001.3");
    EXPECT_EQ(format(L"%2$D %3$c %1$U %4$s %3$x", 18446744073709551615ULL, -5LL, L'z', L"end"),
              L"-5 z 18446744073709551615 end 7A");
    EXPECT_EQ(format(L"%2$.20q*1$", 1, 2.5), L"2.5000");
    // After a star the dollar sign may be missing.
    EXPECT_EQ(format(L"%1$.20q*3|%2$d", 14.5, 7, 1), L"14.5000|7");
    EXPECT_EQ(format(L"%3$*1.*2f|%1$d", 6, 2, 1.25), L"  1.25|6");
    EXPECT_EQ(format(L"%1$*d|%1$*.*f|%1$d", 3), L"  3|0.000|3");
    // What is not collected counts as nothing: the last introducer decides how many there are.
    EXPECT_EQ(format(L"%1$d %d|", 7) + format(L"%3$d%3$s%3$f|", 2.5), L"0 0|02.500000|");
    // A number without a position takes the first argument; digits without a dollar sign are a width.
    EXPECT_EQ(format(L"%4d %d %1$d", 7), L"   7 7 7");
    // An argument collected as another kind is not taken for a pointer or a double.
    EXPECT_EQ(format(L"[%1$s] %1$d|", 7) + format(L"%1$f %1$d", 7), L"[] 7|0.000000 7");
    EXPECT_EQ(format(L"%0$d %1$d|", 7) + format(L"%99999999999$d|%1$d", 7), L"0 7|0|7");
}

TEST(OutputWithFormat, TellsFailuresApartAndStaysTerminated) {
    reference::GuardedBuffer<wchar_t> guarded(64);
    const std::wstring blanks(60, L' '); // endless: runs of 30 until no more fit
    using Row = std::tuple<int, const wchar_t*, int, int, std::wstring>;
    const Row rows[] = {{4, L"abc", 0, 3, L"abc"},     {3, L"abc", 0, 0, L""},     {5, L"ab%dcd", 7, 0, L"ab7"},
                        {4, L"ab%dcd", 77, -1, L"ab"}, {4, L"%06d", -7, -1, L"-"}, {64, L"%.2044d", 7, -1, L""},
                        {64, nullptr, 0, -1, L""},     {1, L"", 0, 0, L""},        {64, L"%*d", -1, -1, blanks}};
    for (const auto& [capacity, directives, argument, result, text] : rows)
        EXPECT_EQ(formatInto(guarded, capacity, directives, argument, 7), std::pair(result, text));
    wchar_t untouched[2] = {L'#', L'#'};
    wchar_t* out = untouched;
    for (const int capacity : {0, -1, INT_MIN})
        EXPECT_EQ(formatMoving(&out, capacity, L"abc"), -1);
    EXPECT_TRUE(out == untouched && untouched[0] == L'#');
    wchar_t* none = nullptr;
    EXPECT_EQ(formatMoving(nullptr, 8, L"abc") + formatMoving(&none, 8, L"abc"), -2);
    wchar_t buffer[16];
    out = buffer;
    EXPECT_TRUE(formatMoving(&out, 16, L"%d-%s", 12, L"x") == 4 && out == buffer + 4);
}

// Formats checked at compile time that fit; those that do not are in checked_faults.cpp.
enum Color { kRed = 3 };

static_assert(tq::formatFits<int, double>(L"%d %f") && !tq::formatFits<int, int>(L"%d %f"));
static_assert(tq::formatFits<int, double, int>(L"%2$.*3$f %1$d") && !tq::formatFits<int, double>(L"%2$f %d"));
static_assert(tq::formatFits<>(L"100%%") && !tq::formatFits<>(L"100%"));
static_assert(tq::scanFits<int*, wchar_t[64]>(L"%d %63s") && !tq::scanFits<int*, wchar_t[63]>(L"%d %63s"));

TEST(Checked, WritesWhatTheEngineWrites) {
    wchar_t out[64];
    const std::wstring string = L"string";
    const CStdStr<wchar_t> text = L"text";
    TqVector<wchar_t> vector;
    tq::append(vector, {L'v', L'e', L'c'});
    EXPECT_EQ(tq::format(out, L"%d %s %s %s %s|", kRed, string, text, vector, L"literal"), 26);
    EXPECT_STREQ(out, L"3 string text vec literal|");
    EXPECT_EQ(tq::format(out, 64, L"%c%D %.1f %x %.20q*", L'c', 5L, 2.5F, short{255}, 1, 30.5), 17);
    EXPECT_STREQ(out, L"c5 2.5 FF 30.5000") << "with the units at the start";
    EXPECT_EQ(tq::format(out, L"%2$s %1$*3$d|", 7, L"seven", 3), 10);
    EXPECT_STREQ(out, L"seven   7|");
    wchar_t small[4];
    EXPECT_TRUE(tq::format(small, L"%d", 12345) == -1 && tq::format(static_cast<wchar_t*>(nullptr), 5, L"%d", 1) == -1);
}

TEST(Checked, TextsOfAnyLength) {
    EXPECT_EQ(tq::formatted(L"") + tq::formatted(L"%s", nullptr), L"");
    for (const std::size_t length : {1U, 255U, 256U, 4095U, 1048575U}) {
        const std::wstring text(length, L'x');
        EXPECT_TRUE(tq::formatted(L"%s%s", L"", text) == text) << length;
    }
    EXPECT_THROW(tq::formatted(L"%s", std::wstring(1048576, L'x')), std::length_error);
    EXPECT_THROW(tq::formatted(L"%.3000d", 1), std::length_error);
}

TEST(Checked, ScansIntoWhatFits) {
    int number = 0, consumed = 0;
    double real = 0;
    wchar_t word[8];
    EXPECT_EQ(tq::scan(L"12 0.5 abcdefghij", L"%d %lf %7s%n", &number, &real, word, &consumed), 3);
    EXPECT_TRUE(number == 12 && real == 0.5 && word == std::wstring(L"abcdefg") && consumed == 14);
    EXPECT_EQ(tq::scan(nullptr, L"%d", &number), -1);
}

} // namespace
