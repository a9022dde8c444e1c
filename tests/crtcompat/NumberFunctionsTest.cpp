#include "reference/GuardedBuffer.h"

#include <TqOsBase/crtcompat/NumberFunctions.h>

#include <climits>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace {

// Writes into a buffer of exactly the text's size and gives the text back.
template <class Integer, class Value, class Char>
std::basic_string<Char> written(Char* (*write)(Value, Char*, int), Integer value, std::size_t length) {
    static reference::GuardedBuffer<Char> room(32);
    Char* buf = room.last(length + 1);
    EXPECT_EQ(write(static_cast<Value>(value), buf, 16), buf);
    return buf;
}

TEST(NumberFunctions, IntegersAreDecimalWhateverTheRadix) {
    const long long values[] = {0, 1, -1, 9, 10, 255, -255, INT_MAX, INT_MIN, LLONG_MAX, LLONG_MIN};
    for (const long long value : values) {
        const std::string text = std::to_string(value);
        const std::wstring wide = std::to_wstring(value);
        const std::size_t length = text.size();
        EXPECT_EQ(written(_ltoa, value, length), text);
        EXPECT_EQ(written(_i64toa, value, length), text);
        EXPECT_EQ(written(_ltow, value, length), wide);
        EXPECT_EQ(written(_i64tow, value, length), wide);
        if (value >= INT_MIN && value <= INT_MAX) {
            EXPECT_EQ(written(_itoa, value, length), text);
            EXPECT_EQ(written(_itow, value, length), wide);
        }
        const std::string positive = std::to_string(static_cast<unsigned long long>(value));
        EXPECT_EQ(written(_ui64toa, value, positive.size()), positive);
        EXPECT_EQ(written(_ui64tow, value, positive.size()), std::wstring(positive.begin(), positive.end()));
    }
}

TEST(NumberFunctions, BoundedFormCutsAndTerminates) {
    reference::GuardedBuffer<wchar_t> room(32);
    for (const int value : {0, 7, -12345, INT_MIN}) {
        const std::wstring text = std::to_wstring(value);
        for (std::size_t size = 0; size <= text.size() + 2; ++size) {
            const bool fits = size > text.size();
            EXPECT_EQ(_itow_s(value, room.last(size), size, 2), fits ? static_cast<int>(text.size()) : -1);
            if (size > 0) {
                EXPECT_EQ(std::wstring(room.last(size)), text.substr(0, size - 1));
            }
        }
    }
}

TEST(NumberFunctions, LeadingDecimalIntegers) {
    const std::pair<const wchar_t*, int> rows[] = {
        {L"", 0},
        {L"7", 7},
        {L" \t\n\v\f\r-12x", -12},
        {L"+5", 5},
        {L"+-5", 0},
        {L"- 5", 0},
        {L"x5", 0},
        {L"0x10", 0},
        {L"5\u4E2D", 5},
        {L"\u20035", 0},
        {L"\u4E2D", 0},
        {L"2147483647", INT_MAX},
        {L"-2147483648", INT_MIN},
        {L"4294967298", 2},
        {L"000000000000000000000000000012", 12},
        {L"99999999999999999999", -1},
        {L"-", 0},
        {nullptr, 0},
    };
    reference::GuardedBuffer<wchar_t> room(64);
    for (const auto& [text, value] : rows)
        EXPECT_EQ(_wtoi(text != nullptr ? room.place(text, std::wcslen(text) + 1) : nullptr), value) << text;
}

TEST(NumberFunctions, LengthIsTheBase) {
    struct Row {
        std::wstring text;
        long long value;
    };
    const Row rows[] = {
        {L"", 0},
        {L"7", 0},
        {L"10", 2},
        {L"12", 1},
        {L"123", 5},
        {L"101", 10},
        {L"-12", -5},
        {L"777", 0},
        {L"0000000000000000000000000000000000zz", 1295},
        {L"00000000000000000000000000000000000zz", 0},
        {std::wstring(36, L'z'), LLONG_MAX},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(_wtol(row.text.c_str()), row.value) << row.text;
        const bool isTooLarge = row.value == LLONG_MAX;
        EXPECT_EQ(_wtoi64(row.text.c_str()), isTooLarge ? -1 : row.value) << row.text;
    }
    EXPECT_EQ(_wtoi64(L"0000000018446744073"), 8784377735988);
    EXPECT_EQ(_wtol(nullptr), 0);
    EXPECT_EQ(_wtoi64(nullptr), 0);
}

TEST(NumberFunctions, FloatingPointIsReadInSinglePrecision) {
    EXPECT_EQ(_wtof(L"0.1"), static_cast<double>(0.1F));
    EXPECT_NE(_wtof(L"0.1"), 0.1);
    EXPECT_EQ(_wtof(L" -1.5e3mm"), -1500.0);
    EXPECT_EQ(_wtof(L"mm"), 0.0);
    EXPECT_EQ(_wtof(nullptr), 0.0);
}

} // namespace
