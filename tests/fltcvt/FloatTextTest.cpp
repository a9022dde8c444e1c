#include "NumberVectors.h"
#include "fltcvt/CvtFormatter.h"
#include "reference/GuardedBuffer.h"

#include <TqOsBase/fltcvt/FloatText.h>
#include <TqOsBase/fltcvt/StrToD.h>
#include <TqOsBase/memory/Allocation.h>

#include <climits>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace {

const double kInfinity = std::numeric_limits<double>::infinity();
const double kNan = std::numeric_limits<double>::quiet_NaN();

struct Request {
    char letter;
    int count;
    int style;
};

// The narrow text, written so that its terminator is the last byte before memory that cannot be touched, and which must
// be the wide one too.
std::string text(double v, const Request& request) {
    wchar_t* const wide = tqDToStr(v, request.letter, request.count, request.style);
    const std::wstring expected = wide;
    EXPECT_GE(tqMsize(wide), (expected.size() + 1) * sizeof(wchar_t));
    tqFree(wide);
    static reference::GuardedBuffer<char> buffer(12000);
    char* const out = buffer.last(expected.size() + 1);
    tqDToStr(out, v, request.letter, request.count, request.style);
    std::string result = out;
    EXPECT_EQ(std::wstring(result.begin(), result.end()), expected);
    return result;
}

TEST(FloatText, Rows) {
    const struct {
        double value;
        Request request;
        const char* text;
    } rows[] = {
        {2.5, {'f', 3, 0}, "2.500"},
        {0.001234, {'f', 2, 0}, "0.00"},
        {0.001234, {'f', 5, 0}, "0.00123"},
        {-0.0, {'f', 1, 0}, "-0.0"},
        {0.5, {'f', 0, 0}, "0"},
        {1.5, {'f', 0, 0}, "2"},
        {-1234.5678, {'f', -3, 0}, "-1235"},
        {0.1, {'f', 20, 0}, "0.10000000000000000000"},
        {1e22, {'f', 2, 0}, "10000000000000000000000.00"},
        {9.9996, {'f', 3, 0}, "10.000"},
        {0.99996, {'f', 4, 0}, "1.0000"},
        {99999999.96, {'f', 1, 0}, "100000000.0"},
        {1.0, {'e', 0, 0}, "1.e+000"},
        {12345.678, {'E', 2, 0}, "1.23E+004"},
        {0.5, {'e', 3, 0}, "5.000e-001"},
        {0.0, {'e', 2, 0}, "0.00e+000"},
        {-9.9999996, {'e', 6, 0}, "-1.000000e+001"},
        {1e100, {'e', 1, 0}, "1.0e+100"},
        {5e-324, {'e', 20, 0}, "4.94065645841246544177e-324"},
        {1e-5, {'g', 6, 0}, "1e-005"},
        {0.0001, {'g', 6, 0}, "0.0001"},
        {1234567.0, {'g', 6, 0}, "1.23457e+006"},
        {1234567.0, {'G', 6, 0}, "1.23457E+006"},
        {123456.0, {'g', 6, 0}, "123456"},
        {123456.0, {'g', 6, 1}, "123456."},
        {100.0, {'g', 6, 0}, "100"},
        {100.0, {'g', 6, -1}, "100"},
        {100.0, {'g', 6, 1}, "100.000"},
        {100.0, {'g', 6, 2}, "100.0"},
        {100.0, {'g', 6, 3}, "100."},
        {1.5, {'g', 6, 1}, "1.5"},
        {0.025, {'g', 4, 1}, "0.02500"},
        {0.025, {'g', 4, 2}, "0.025"},
        {1e20, {'g', 6, 0}, "1e+020"},
        {1e20, {'g', 6, 1}, "1.00000e+020"},
        {1e20, {'g', 6, 2}, "1.0e+020"},
        {1e20, {'g', 6, 3}, "1e+020"},
        {1.5e20, {'g', 6, 1}, "1.50000e+020"},
        {1.5e20, {'g', 6, 2}, "1.5e+020"},
        {1.5, {'g', 0, 0}, "2e+000"},
        {7.0, {'g', 0, 1}, "7.e+000"},
        {-7.0, {'g', 0, 2}, "-7.0e+000"},
        {0.05, {'g', 0, 0}, "0.0"},
        {0.05, {'g', -4, 1}, "0.0"},
        {0.0, {'g', 6, 0}, "0"},
        {0.0, {'g', 6, 2}, "0.0"},
        {0.0, {'g', 6, 1}, "0.00000"},
        {-0.0, {'g', 0, 0}, "-0"},
        {0.0, {'g', 0, 1}, "0"},
        {0.0, {'g', 0, 2}, "0"},
        {kInfinity, {'e', 3, 0}, "I.nfie9998"},
        {-kInfinity, {'G', 20, 0}, "-I.nfinityE9998"},
        {kNan, {'e', 3, 0}, "N.aN0e9998"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(text(row.value, row.request), row.text)
            << row.value << " " << row.request.letter << row.request.count;
    EXPECT_EQ(text(kInfinity, {'f', 2, 0}), "Infinity" + std::string(9991, '0') + ".00");
    EXPECT_EQ(text(-kNan, {'f', 0, 0}).substr(0, 5).find("NaN0"), std::signbit(-kNan) ? 1U : 0U);
    EXPECT_EQ(text(0.1, {'e', 5000, 0}).size(), 5007U);
    char exponent[32];
    tqFltToE(exponent, 1.5, 1, 'x');
    EXPECT_STREQ(exponent, "1.5x+000");
    EXPECT_EQ(tqFltToF(1.5, INT_MAX), nullptr);
    EXPECT_EQ(tqFltToE(1.5, INT_MAX, 'e'), nullptr);
}

// The C library's text with the exponent written in our way.
std::string printed(const char* format, int count, double v) {
    char buffer[800];
    std::snprintf(buffer, sizeof buffer, format, count, v);
    std::string result = buffer;
    const std::size_t mark = result.find('e');
    if (mark == std::string::npos)
        return result;
    if (format[3] == 'e' && count == 0)
        result.insert(mark, "."); // also without digits after it
    const std::size_t digits = result.find('e') + 2;
    if (result.size() - digits < 3)
        result.insert(digits, "0");
    return result;
}

TEST(FloatText, AgreesWithTheCLibrary) {
    for (const double v : number_test::vectors(2000))
        for (const double d : {v, -v})
            for (int count = 0; count <= 24; ++count) {
                SCOPED_TRACE(testing::Message() << std::hexfloat << d << " count " << count);
                ASSERT_EQ(text(d, {'e', count, 0}), printed("%.*e", count, d));
                if (count > 0) {
                    ASSERT_EQ(text(d, {'g', count, 0}), printed("%.*g", count, d));
                }
                // Beyond, the shortest digits may be fewer than those.
                if (v >= 2.3e-308 && std::log10(v) + count < 14.9) {
                    ASSERT_EQ(text(d, {'f', count, 0}), printed("%.*f", count, d));
                }
            }
}

// The shortest digits with zeros after them read back.
TEST(FloatText, FixedNotationReadsBack) {
    for (const double v : number_test::vectors(1000)) {
        const std::string fixed = text(-v, {'f', 345, 0});
        EXPECT_EQ(tqStrToD(fixed.c_str(), nullptr), -v) << fixed;
    }
}

TEST(FloatText, UnknownLettersEndTheProcess) {
    char buffer[64];
    for (const char letter : {'F', 'x', '\0', 'a'}) {
        EXPECT_DEATH(tqDToStr(buffer, 1.0, letter, 2, 0), "") << letter;
        EXPECT_DEATH(tqDToStr(1.0, letter, 2, 0), "") << letter;
    }
}

TEST(FloatText, FcvtIsThePlatforms) {
    int point = 0;
    int sign = 0;
    EXPECT_STREQ(_fcvt(-12.375, 2, &point, &sign), "1238");
    EXPECT_EQ(point, 2);
    EXPECT_NE(sign, 0);
}

TEST(FloatText, NumbersIgnoreTheLocale) {
    const char* const found = [] {
        for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE", "fr_FR", "ru_RU.UTF-8"})
            if (std::setlocale(LC_ALL, name) != nullptr)
                return name;
        return static_cast<const char*>(nullptr);
    }();
    if (found == nullptr)
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    EXPECT_EQ(text(1234.5, {'f', 2, 0}), "1234.50");
    EXPECT_EQ(text(1234.5, {'g', 20, 0}), "1234.5");
    EXPECT_EQ(tqStrToD("1.5", nullptr), 1.5);
    EXPECT_EQ(tqStrToD("1,5", nullptr), 1.0);
    std::setlocale(LC_ALL, "C");
}

} // namespace
