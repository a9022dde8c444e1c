#include "reference/ScanInput.h"
#include "reference/Testing.h"

namespace {

using reference::scan;

TEST(InputWithFormat, ReadsIntegersOfEveryLetterAndSaturates) {
    using Row = std::tuple<const wchar_t*, const wchar_t*, std::int32_t, int>; // the last is 0 where there is no number
    const Row rows[] = {{L"42", L"%d", 42, 2},      {L" \t-17x", L"%d", -17, 5},    {L"+7", L"%i", 7, 2},
                        {L"010", L"%i", 8, 3},      {L"08", L"%i", 0, 1},           {L"0x1Fg", L"%i", 31, 4},
                        {L"0x", L"%i", 0, 1},       {L"0X1f", L"%x", 31, 4},        {L"0xg", L"%x", 0, 1},
                        {L"-1F", L"%x", -31, 3},    {L"FFFFFFFF", L"%x", -1, 8},    {L"777", L"%o", 511, 3},
                        {L"1012", L"%b", 5, 3},     {L"4294967295", L"%u", -1, 10}, {L"9999999999", L"%u", -1, 10},
                        {L"12345", L"%3d", 123, 3}, {L"0x1F", L"%2x", 0, 1},        {L"0x1F", L"%3i", 1, 3},
                        {L"7", L"%0d", -9, 0},      {L"-7", L"%1d", -9, 0},         {L"-7", L"%u", -9, 0},
                        {L"-", L"%d", -9, 0}};
    for (const auto& [source, directive, number, length] : rows) {
        std::int32_t value = -9;
        int consumed = 0;
        EXPECT_EQ(scan(source, (std::wstring(directive) + L"%n").c_str(), &value, &consumed), length > 0);
        EXPECT_TRUE(value == number && consumed == length) << source;
    }
    std::int64_t big[6] = {0, 0, 0, 0, 0, 9};
    EXPECT_EQ(scan(L"-9223372036854775809 FFFFFFFFFFFFFFFFF 777 101 9223372036854775808", L"%D%X%O%B%D", &big[0],
                   &big[1], &big[2], &big[3], &big[4]),
              5);
    EXPECT_EQ(std::to_array(big), (std::array<std::int64_t, 6>{INT64_MIN, -1, 511, 5, INT64_MAX, 9}));
    std::int32_t most = 0, least = 0;
    EXPECT_EQ(scan(L"99999999999-99999999999999999999999", L"%d%d", &most, &least), 2);
    EXPECT_TRUE(most == INT_MAX && least == INT_MIN);
    std::int16_t small[3] = {1, 1, 1};
    EXPECT_EQ(scan(L"40000 70000 99999999999", L"%hd%hu%ld", &small[0], &small[1], &big[0]), 3);
    EXPECT_TRUE(big[0] == 99999999999 && small[0] == INT16_MAX && small[1] == -1 && small[2] == 1);
}

TEST(InputWithFormat, ReadsFloatingFields) {
    using Row = std::tuple<const wchar_t*, double, int>; // likewise
    const Row rows[] = {{L"3.25", 3.25, 4}, {L"-.5e1x", -5, 5}, {L"7.", 7, 2}, {L"+1e3", 1000, 4},
                        {L"0e400", 0, 5},   {L"5e-400", 0, 6},  {L"2e", 2, 2}, {L"5e-9x", 5e-9, 4},
                        {L".", -1, 0},      {L"-e5", -1, 0}};
    for (const auto& [source, number, length] : rows) {
        double value = -1;
        int consumed = 0;
        EXPECT_EQ(scan(source, L"%F%n", &value, &consumed), length > 0 ? 1 : 0);
        EXPECT_TRUE(value == number && consumed == length) << source;
    }
    const std::wstring zeros(400, L'0');
    double numbers[4] = {0, 0, 0, 0};
    EXPECT_EQ(scan((L"1" + zeros + L"e-400 1." + zeros + L"1 5e-324 1e99999999999").c_str(), L"%lf%lf%lf%lf",
                   &numbers[0], &numbers[1], &numbers[2], &numbers[3]),
              4);
    EXPECT_TRUE(numbers[0] == 1 && numbers[1] == 1 && numbers[2] == 5e-324 && numbers[3] == HUGE_VAL);
    std::mt19937_64 random(5);
    for (int i = 0; i < 3000; ++i) {
        const char* const exponents[] = {"", "e-37", "e-43", "e36", "e-300"};
        const std::string text = std::to_string(random() % 1000) + "." + std::to_string(random()) + exponents[i % 5];
        double value = 0;
        float pair[2] = {0, 9};
        ASSERT_EQ(scan(reference::widened(text + " " + text).c_str(), i % 2 == 0 ? L"%lf%f" : L"%F%g", &value, pair),
                  2);
        ASSERT_EQ(value, std::strtod(text.c_str(), nullptr)) << text;
        ASSERT_EQ(pair[0], static_cast<float>(value)) << text;
        ASSERT_EQ(pair[1], 9);
    }
}

// Any source and format stays in bounds: fuzz/ScanInputFuzz.cpp.
TEST(InputWithFormat, ReadsTextWithinItsBuffers) {
    reference::GuardedBuffer<wchar_t> guarded(16);
    wchar_t* text = guarded.last(4);
    EXPECT_TRUE(scan(L"  hello", L"%3s", text) == 1 && text == std::wstring(L"hel"));
    wchar_t* letters = guarded.last(3);
    wchar_t next = L'#';
    EXPECT_EQ(scan(L" a", L"%3c%c", letters, &next), 1) << "the source ends first: what was read counts";
    EXPECT_TRUE(letters[0] == L' ' && letters[1] == L'a' && next == L'#');
    int number = 0;
    EXPECT_TRUE(scan(L"x=5, y", L"x=%d, %c", &number, &next) == 2 && number == 5 && next == L'y');
}

TEST(InputWithFormat, EndsAtTheFirstMismatch) {
    using Row = std::tuple<const wchar_t*, const wchar_t*, int, int, int>;
    const Row rows[] = {{L"1 2", L"%*d %d", 1, 2, 9}, {L"5 x 6", L"%d%d", 1, 5, 9}, {L"5%6", L"%d%%%d", 2, 5, 6},
                        {L"7", L"%y%z%d", 1, 7, 9},   {L"7", L"%d%", 1, 7, 9},      {L" x", L"%*c%c", 1, 'x', 9},
                        {nullptr, L"%d", -1, 9, 9},   {L"x", nullptr, 0, 9, 9},     {L"5 6", L"%d%*d%d", 1, 5, 9}};
    for (const auto& [source, directive, assigned, first, second] : rows) {
        int numbers[2] = {9, 9};
        EXPECT_EQ(scan(source, directive, &numbers[0], &numbers[1]), assigned) << directive;
        EXPECT_TRUE(numbers[0] == first && numbers[1] == second) << directive;
    }
    wchar_t text[2];
    for (const wchar_t* format : {L" %d", L"%c", L"%2c", L"x", L"%d", L"%n", L""})
        EXPECT_EQ(scan(L"", format, text) + scan(L" \t\n\v", format, text), -2);
    int untouched = 77;
    EXPECT_EQ(reference::scanFrom(true, L"5", L"%d", &untouched), 0);
    EXPECT_TRUE(reference::scanFrom(true, nullptr, L"a%5s", &untouched) == 0 && untouched == 77);
}

} // namespace
