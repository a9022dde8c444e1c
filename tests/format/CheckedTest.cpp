// Formats checked at compile time: what fits compiles and writes what the engine writes. What does not fit is in
// checked_faults.cpp.

#include "reference/Testing.h"

#include <TqOsBase/containers/Range.h>
#include <TqOsBase/format/Checked.h>

namespace {

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
    EXPECT_EQ(tq::format(small, L"%d", 12345), -1);
    EXPECT_EQ(tq::format(static_cast<wchar_t*>(nullptr), 5, L"%d", 1), -1);
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
