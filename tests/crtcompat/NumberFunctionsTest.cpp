#include "reference/GuardedBuffer.h"
#include "reference/Locales.h"

#include <TqOsBase/crtcompat/NumberFunctions.h>

#include <climits>
#include <clocale>
#include <gtest/gtest.h>
#include <string>

namespace {

// Writes `value` into a buffer of exactly the size of `text`, and compares.
template <class Value, class Char>
void expectWritten(Char* (*write)(Value, Char*, int), long long value, const std::string& text) {
    static reference::GuardedBuffer<Char> room(32);
    Char* buf = room.last(text.size() + 1);
    EXPECT_EQ(write(static_cast<Value>(value), buf, 16), buf);
    EXPECT_EQ(buf, std::basic_string<Char>(text.begin(), text.end()));
}

TEST(NumberFunctions, IntegersAreDecimalWhateverTheRadix) {
    for (const long long value : {0LL, -1LL, 10LL, 255LL, 0LL + INT_MAX, 0LL + INT_MIN, LLONG_MAX, LLONG_MIN}) {
        const std::string text = std::to_string(value);
        const std::string positive = std::to_string(static_cast<unsigned long long>(value));
        const std::string narrow = std::to_string(static_cast<int>(value));
        expectWritten(_itoa, value, narrow);
        expectWritten(_itow, value, narrow);
        expectWritten(_ltoa, value, text);
        expectWritten(_ltow, value, text);
        expectWritten(_i64toa, value, text);
        expectWritten(_i64tow, value, text);
        expectWritten(_ui64toa, value, positive);
        expectWritten(_ui64tow, value, positive);
    }
    reference::GuardedBuffer<wchar_t> room(32);
    for (const int value : {7, INT_MIN}) {
        const std::wstring text = std::to_wstring(value);
        EXPECT_EQ(_itow_s(value, room.last(0), 0, 2), -1);
        EXPECT_EQ(_itow_s(value, nullptr, 10, 2), -1);
        EXPECT_EQ(_itow(value, nullptr, 2), nullptr);
        for (std::size_t size = 1; size <= text.size() + 2; ++size) {
            EXPECT_EQ(_itow_s(value, room.last(size), size, 2),
                      size > text.size() ? static_cast<int>(text.size()) : -1);
            EXPECT_EQ(room.last(size), text.substr(0, size - 1));
        }
    }
}

TEST(NumberFunctions, LeadingDecimalIntegers) {
    const std::pair<const wchar_t*, int> rows[] = {
        {L"", 0},
        {L" \t\n\v\f\r-12x", -12},
        {L"+5", 5},
        {L"+-5", 0},
        {L"- 5", 0},
        {L"x5", 0},
        {L"0x10", 0},
        {L"5\u4E2D", 5},
        {L"\u20035", 0},
        {L"-", 0},
        {L"2147483647", INT_MAX},
        {L"4294967298", 2},
        {nullptr, 0},
        {L"-2147483648", INT_MIN},
        {L"99999999999999999999", -1},
    };
    std::setlocale(LC_ALL, reference::kUtf8Locale); // where U+2003 is white space
    for (const auto& [text, value] : rows)
        EXPECT_EQ(_wtoi(text), value) << text;
    std::setlocale(LC_ALL, "C");
}

TEST(NumberFunctions, LengthIsTheBase) {
    const std::pair<std::wstring, long long> rows[] = {
        {L"", 0},
        {L"7", 0},
        {L"10", 2},
        {L"12", 1},
        {L"123", 5},
        {L"-12", -5},
        {L"777", 0},
        {L"0000000018446744073", 8784377735988},
        {std::wstring(34, L'0') + L"zz", 1295},
        {std::wstring(35, L'0') + L"zz", 0},
    };
    for (const auto& [text, value] : rows) {
        EXPECT_EQ(_wtol(text.c_str()), value) << text;
        EXPECT_EQ(_wtoi64(text.c_str()), value) << text;
    }
    EXPECT_EQ(_wtol(std::wstring(36, L'z').c_str()), LONG_MAX);
    EXPECT_EQ(_wtoi64(std::wstring(36, L'z').c_str()), -1) << "read as unsigned";
    EXPECT_EQ(_wtol(nullptr), 0);
    EXPECT_EQ(_wtoi64(nullptr), 0);
}

TEST(NumberFunctions, FloatingPointIsReadInSinglePrecision) {
    EXPECT_EQ(_wtof(L"0.1"), static_cast<double>(0.1F));
    EXPECT_EQ(_wtof(L" -1.5e3mm"), -1500.0);
    EXPECT_EQ(_wtof(L"mm"), 0.0);
    EXPECT_EQ(_wtof(nullptr), 0.0);
}

} // namespace
