#include "fltcvt/CvtFormatter.h"
#include "reference/ExactDecimal.h"

namespace {

const double kInfinity = std::numeric_limits<double>::infinity();
const double kNan = std::numeric_limits<double>::quiet_NaN();

struct Request {
    char letter;
    int count, style;
};

// The narrow text, written right up to memory that cannot be touched. The wide one must be the same.
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

// The numbers that another test compares with the C library's are not among them.
TEST(FloatText, StylesAndSpecialValues) {
    using Row = std::tuple<int, int, std::vector<double>, const char*>;
    const Row rows[] = {{6, -1, {0.0, 100}, "0|100|"},
                        {6, 1, {0.0, 100, 1.5, 123456}, "0.00000|100.000|1.5|123456.|"},
                        {6, 2, {0.0, 100, 1e20, 1.5e20}, "0.0|100.0|1.0e+020|1.5e+020|"},
                        {6, 3, {100, 1e20}, "100.|1e+020|"},
                        {4, 1, {0.025, 1e20, 1.5e20}, "0.02500|1.000e+020|1.500e+020|"},
                        {0, 0, {1.5, 0.05, -0.0}, "2e+000|0.0|-0|"},
                        {0, 1, {7, 0.0}, "7.e+000|0|"},
                        {-4, 2, {-7, 0.05}, "-7.0e+000|0.0|"}};
    for (const auto& [count, style, values, expected] : rows) {
        std::string texts;
        for (const double v : values)
            texts += text(v, {'g', count, style}) + "|";
        EXPECT_EQ(texts, expected) << "count " << count << " style " << style;
    }
    EXPECT_EQ(text(-0.0, {'f', 1, 0}) + text(-1234.5, {'f', -3, 0}), "-0.0-1234");
    EXPECT_EQ(text(0.0, {'e', 2, 0}) + text(12345, {'E', 2, 0}), "0.00e+0001.23E+004");
    EXPECT_EQ(text(1e22, {'f', 2, 0}) + text(0.1, {'f', 20, 0}), "10000000000000000000000.000.10000000000000000000");
    EXPECT_EQ(text(kInfinity, {'e', 3, 0}) + text(-kInfinity, {'G', 20, 0}) + text(kNan, {'e', 3, 0}),
              "I.nfie9998-I.nfinityE9998N.aN0e9998");
    EXPECT_EQ(text(kInfinity, {'f', 2, 0}), "Infinity" + std::string(9991, '0') + ".00");
    EXPECT_EQ(text(-kNan, {'f', 0, 0}).substr(0, 5).find("NaN0"), std::signbit(-kNan) ? 1U : 0U);
    EXPECT_EQ(text(0.1, {'e', 5000, 0}).size(), 5007U);
    char buffer[64];
    tqFltToE(buffer, 1.5, 1, 'x');
    EXPECT_STREQ(buffer, "1.5x+000");
    EXPECT_FALSE(tqFltToF(1.5, INT_MAX) || tqFltToE(1.5, INT_MAX, 'e'));
    int point = 0, sign = 0;
    EXPECT_STREQ(_fcvt(-12.375, 2, &point, &sign), "1238") << "the platform's";
    EXPECT_TRUE(point == 2 && sign != 0);
    for (const char letter : {'F', 'x', '\0', 'a'}) {
        EXPECT_DEATH(tqDToStr(buffer, 1.0, letter, 2, 0), "") << letter;
        EXPECT_DEATH(tqDToStr(1.0, letter, 2, 0), "") << letter;
    }
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

TEST(FloatText, AgreesWithTheCLibraryAndReadsBack) {
    for (const double v : reference::numbers(2000)) {
        for (int count = 0; count <= 24; ++count) {
            const double d = count % 2 == 0 ? v : -v;
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
        const std::string fixed = text(-v, {'f', 345, 0}); // the shortest digits with zeros after them
        ASSERT_EQ(tqStrToD(fixed.c_str(), nullptr), -v) << fixed;
    }
}

} // namespace
