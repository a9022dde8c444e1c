#include "reference/GuardedBuffer.h"

#include <TqOsBase/crtcompat/PrintfFunctions.h>

#include <clocale>
#include <cwchar>
#include <gtest/gtest.h>
#include <string>

namespace {

// Runs `call` on the argument list twice: it stays unread.
template <class Call, class Char>
int withList(const Call& call, const Char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int first = call(format, arguments);
    EXPECT_EQ(call(format, arguments), first) << "the list can be used again";
    va_end(arguments);
    return first;
}

constexpr int kLongest = 524287;

TEST(PrintfFunctions, CountOneOfThemWithTheTerminator) {
    EXPECT_EQ(withList(_vscprintf, "abc"), 3);
    EXPECT_EQ(withList(_vscprintf, "%d|%s", 1234, "xyz"), 8);
    EXPECT_EQ(withList(_vscwprintf, L"abc"), 4);
    for (const int length : {0, 1, 1022, 1023, 1024, 1025, 2047, 2048, 100000, kLongest})
        EXPECT_EQ(withList(_vscwprintf, L"%*d", length, 7), (length > 0 ? length : 1) + 1);
    EXPECT_EQ(withList(_vscwprintf, L"%*d", kLongest + 1, 7), -1);
    EXPECT_EQ(withList(_vscwprintf, static_cast<const wchar_t*>(nullptr)), -1);
    EXPECT_EQ(withList(_vscprintf, static_cast<const char*>(nullptr)), -1);
}

TEST(PrintfFunctions, FormsWithoutSizeWriteTheTextAndItsTerminatorOnly) {
    reference::GuardedBuffer<wchar_t> room(kLongest + 1);
    for (const int length : {1, 5, 1023, 1024, 4096, kLongest}) {
        const std::wstring expected = std::wstring(static_cast<std::size_t>(length) - 1, L' ') + L"7";
        wchar_t* dst = room.last(expected.size() + 1);
        const auto unsized = [&](auto function) {
            std::wmemset(dst, L'#', expected.size() + 1);
            EXPECT_EQ(withList([&](const wchar_t* format, std::va_list list) { return function(dst, format, list); },
                               L"%*d", length, 7),
                      length);
            EXPECT_TRUE(dst == expected) << length;
        };
        unsized(_vswprintf);
        unsized([](wchar_t* to, const wchar_t* format, std::va_list list) { return vswprintf(to, format, list); });
        for (const bool shortName : {false, true}) {
            std::wmemset(dst, L'#', expected.size() + 1);
            EXPECT_EQ(shortName ? wsprintf(dst, L"%*d", length, 7) : swprintf(dst, L"%*d", length, 7), length);
            EXPECT_TRUE(dst == expected) << length;
        }
    }
    wchar_t text[16] = L"ab";
    EXPECT_EQ(swprintf(text, L"%*d", kLongest + 1, 7), -1);
    EXPECT_STREQ(text, L"ab");
    EXPECT_EQ(swprintf(text, L"%ls%ls", text, text), 4) << "an argument may lie in the destination";
    EXPECT_STREQ(text, L"abab");
    EXPECT_EQ(swprintf(text, L"%lc%d", 0, 5), 2);
    EXPECT_EQ(std::wstring(text, 3), std::wstring(L"\0005\0", 3));
    wchar_t* const nowhere = nullptr;
    EXPECT_EQ(swprintf(nowhere, L"x"), -1);
    // The C library's own forms still are what they were.
    EXPECT_EQ(swprintf(text, 16, L"%d-%ls", 12, L"x"), 4);
    EXPECT_STREQ(text, L"12-x");
}

TEST(PrintfFunctions, BoundedWideFormNeedsOnePlaceMoreThanItsSize) {
    reference::GuardedBuffer<wchar_t> room(32);
    const std::wstring text = L"abcdefghij";
    for (std::size_t length = 0; length <= text.size(); ++length) {
        for (std::size_t size = 0; size <= length + 3; ++size) {
            const bool fits = length < size;
            const std::size_t places = (fits ? length : size) + 1;
            wchar_t* dst = room.last(places);
            std::wmemset(dst, L'#', places);
            const int result =
                withList([&](const wchar_t* format, std::va_list list) { return vswprintf_s(dst, size, format, list); },
                         L"%.*ls", static_cast<int>(length), text.c_str());
            EXPECT_EQ(result, fits ? static_cast<int>(length) : static_cast<int>(size) - 1) << length << " " << size;
            EXPECT_EQ(dst, text.substr(0, fits ? length : size)) << length << " " << size;
        }
    }
    wchar_t dst[8] = L"#######";
    const auto into = [&](wchar_t* to, std::size_t size) {
        return [to, size](const wchar_t* format, std::va_list list) { return vswprintf_s(to, size, format, list); };
    };
    EXPECT_EQ(withList(into(dst, 4), L"%lc%ls", 0, L"bcdef"), 3) << "characters are cut, zeros are no end";
    EXPECT_EQ(std::wstring(dst, 6), std::wstring(L"\0bcd\0#", 6));
    dst[0] = L'#';
    EXPECT_EQ(withList(into(dst, 4), L"%*d", kLongest + 1, 7), -1);
    EXPECT_STREQ(dst, L"");
    EXPECT_EQ(withList(into(nullptr, 4), L"x"), -1);
}

TEST(PrintfFunctions, BoundedNarrowFormIsVsnprintf) {
    reference::GuardedBuffer<char> room(16);
    const std::string text = "abcdef";
    for (std::size_t size = 0; size <= 9; ++size) {
        char* dst = room.last(size);
        const int result =
            withList([&](const char* format, std::va_list list) { return vsprintf_s(dst, size, format, list); }, "%s",
                     text.c_str());
        EXPECT_EQ(result, 6);
        if (size > 0) {
            EXPECT_EQ(dst, text.substr(0, size - 1));
        }
    }
    EXPECT_EQ(withList([](const char* format, std::va_list list) { return vsprintf_s(nullptr, 4, format, list); }, "x"),
              1);
}

} // namespace
