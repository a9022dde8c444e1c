#include "format/FormatProbe.h"
#include "reference/GuardedBuffer.h"

#include <TqOsBase/format/InputWithFormat.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

namespace {

int scan(bool fromStream, const wchar_t* source, const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    const int assigned = InputWithFormat(fromStream, source, format, args);
    va_end(args);
    return assigned;
}

template <class... Pointers>
int scan(const wchar_t* source, const wchar_t* format, Pointers... pointers) {
    return scan(false, source, format, pointers...);
}

} // namespace

TEST(InputWithFormat, ReadsIntegersOfEveryLetterAndSaturates) {
    const struct {
        const wchar_t* source;
        const wchar_t* format; // followed by %n
        std::int64_t value;    // in the bits that the letter stores
        int consumed;
    } rows[] = {
        {L"42", L"%d", 42, 2},
        {L" \t-17x", L"%d", -17, 5},
        {L"+7", L"%i", 7, 2},
        {L"010", L"%i", 8, 3},
        {L"08", L"%i", 0, 1},
        {L"0x1Fg", L"%i", 31, 4},
        {L"0x", L"%i", 0, 1},
        {L"0X1f", L"%x", 31, 4},
        {L"0xg", L"%x", 0, 1},
        {L"-1F", L"%x", -31, 3},
        {L"FFFFFFFF", L"%x", -1, 8},
        {L"777", L"%o", 511, 3},
        {L"1012", L"%b", 5, 3},
        {L"4294967295", L"%u", -1, 10},
        {L"99999999999", L"%u", -1, 11},
        {L"99999999999", L"%d", INT_MAX, 11},
        {L"-99999999999999999999999", L"%d", INT_MIN, 24},
        {L"12345", L"%3d", 123, 3},
        {L"0x1F", L"%2x", 0, 1},
        {L"0x1F", L"%3i", 1, 3},
    };
    for (const auto& row : rows) {
        std::int32_t value = 123456;
        int consumed = -1;
        const std::wstring format = std::wstring(row.format) + L"%n";
        EXPECT_EQ(scan(row.source, format.c_str(), &value, &consumed), 1);
        EXPECT_EQ(value, row.value) << std::string(row.source, row.source + std::wcslen(row.source));
        EXPECT_EQ(consumed, row.consumed) << std::string(row.source, row.source + std::wcslen(row.source));
    }
    std::int64_t big[5];
    EXPECT_EQ(scan(L"-9223372036854775809 FFFFFFFFFFFFFFFFF 777 101 99999999999", L"%D%X%O%B%ld", &big[0], &big[1],
                   &big[2], &big[3], &big[4]),
              5);
    EXPECT_EQ(std::vector<std::int64_t>(big, big + 5), (std::vector<std::int64_t>{INT64_MIN, -1, 511, 5, 99999999999}));
    std::int16_t small[3] = {1, 1, 1};
    EXPECT_EQ(scan(L"40000 70000", L"%hd%hu", &small[0], &small[1]), 2);
    EXPECT_TRUE(small[0] == INT16_MAX && small[1] == -1 && small[2] == 1);
}

TEST(InputWithFormat, ReadsFloatingFields) {
    const struct {
        const wchar_t* source;
        double value;
        int consumed;
    } rows[] = {
        {L"3.25", 3.25, 4}, {L"-.5e1x", -5, 5}, {L"7.", 7, 2},
        {L"+1e3", 1000, 4}, {L"0e400", 0, 5},   {L"1e99999999999", std::numeric_limits<double>::infinity(), 13},
        {L"5e-400", 0, 6},  {L"2e", 2, 2},      {L"5e-324", 5e-324, 6},
        {L".", -1, -1},     {L"-e5", -1, -1},
    };
    for (const auto& row : rows) {
        double value = -1;
        int consumed = -1;
        EXPECT_EQ(scan(row.source, L"%F%n", &value, &consumed), row.consumed > 0 ? 1 : 0);
        EXPECT_EQ(value, row.value);
        EXPECT_EQ(consumed, row.consumed);
    }
    std::mt19937_64 random(5);
    for (int i = 0; i < 3000; ++i) {
        char text[400];
        std::snprintf(text, sizeof text, "%.*g", static_cast<int>(1 + random() % 40),
                      std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 1900) - 1000));
        double value = 0;
        ASSERT_EQ(scan(probe::widen(text).c_str(), L"%lf", &value), 1);
        ASSERT_EQ(value, std::strtod(text, nullptr)) << text;
        float single = 0;
        const std::string low(text, std::strcspn(text, "e"));
        for (const char* exponent : {"", "e-37", "e-43", "e36"}) {
            const std::string wanted = low + exponent;
            ASSERT_EQ(scan(probe::widen(wanted).c_str(), L"%f", &single), 1);
            ASSERT_EQ(single, static_cast<float>(std::strtod(wanted.c_str(), nullptr))) << wanted;
        }
    }
    // Digits without end overflow nothing.
    double value = 0;
    const std::wstring zeros(400, L'0');
    EXPECT_EQ(scan((L"1" + zeros + L"e-400").c_str(), L"%lf", &value), 1);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(scan((L"1." + zeros + L"1").c_str(), L"%lf", &value), 1);
    EXPECT_EQ(value, 1);
    float pair[2] = {0, 9};
    EXPECT_EQ(scan(L"2.5", L"%g", pair), 1);
    EXPECT_TRUE(pair[0] == 2.5F && pair[1] == 9.0F);
}

TEST(InputWithFormat, ReadsTextWithinItsBuffers) {
    reference::GuardedBuffer<wchar_t> guarded(16);
    wchar_t* text = guarded.last(4);
    EXPECT_EQ(scan(L"  hello", L"%3s", text), 1);
    EXPECT_STREQ(text, L"hel");
    wchar_t* letters = guarded.last(3);
    EXPECT_EQ(scan(L" ab", L"%3c", letters), 1);
    EXPECT_EQ(std::wstring(letters, 3), L" ab");
    // The source ends first: what was read counts, and the scan ends.
    wchar_t next = L'#';
    EXPECT_EQ(scan(L"a", L"%3c%c", letters, &next), 1);
    EXPECT_TRUE(letters[0] == L'a' && next == L'#');
    int number = 0;
    EXPECT_EQ(scan(L"x=5, y", L"x=%d, %c", &number, &next), 2);
    EXPECT_TRUE(number == 5 && next == L'y');
    // Every source ends where its memory does.
    for (const wchar_t* source : {L"", L"-", L"0x", L"1e", L"1e+", L"5%", L"  "}) {
        const wchar_t* placed = guarded.place(source, std::wcslen(source) + 1);
        double value = 0;
        scan(placed, L"%i", &number);
        scan(placed, L"%lf", &value);
        scan(placed, L"%d%% %d", &number, &number);
    }
}

TEST(InputWithFormat, EndsAtTheFirstMismatch) {
    int first = 1;
    int second = 2;
    EXPECT_EQ(scan(L"1 2", L"%*d %d", &first), 1);
    EXPECT_EQ(first, 2);
    EXPECT_EQ(scan(L"5 x 6", L"%d%d%d", &first, &second, &second), 1);
    EXPECT_TRUE(first == 5 && second == 2);
    EXPECT_EQ(scan(L"5%6", L"%d%%%d", &first, &second), 2);
    EXPECT_EQ(second, 6);
    EXPECT_EQ(scan(L"7", L"%y%z%d", &first), 1);
    EXPECT_EQ(scan(L"7", L"%0d", &first), 0);
    EXPECT_EQ(scan(L"-7", L"%1d", &first), 0);
    EXPECT_EQ(scan(L"-7", L"%u", &first), 0);
    EXPECT_EQ(scan(L"-", L"%d", &first), 0);
    EXPECT_EQ(scan(L"7", L"%d%", &first), 1);

    wchar_t text[2];
    for (const wchar_t* blank : {L"", L" ", L" \t\n\v"})
        for (const wchar_t* format : {L" %d", L"%c", L"%2c", L"x", L"%d", L"%0d", L"%n", L""})
            EXPECT_EQ(scan(blank, format, text), -1);
    EXPECT_EQ(scan(nullptr, L"%d", &first), -1);
    EXPECT_EQ(scan(L" x", L"%c", &first), 1);
    EXPECT_EQ(scan(L"x", static_cast<const wchar_t*>(nullptr)), 0);
    first = 77;
    EXPECT_EQ(scan(true, L"5", L"%d", &first), 0);
    EXPECT_EQ(scan(true, nullptr, L"a%5s", &first), 0);
    EXPECT_EQ(first, 77);
}
