#include "reference/Locales.h"

#include <TqOsBase/crtcompat/MultibyteFunctions.h>
#include <TqOsBase/crtcompat/StringFunctions.h>

#include <climits>
#include <clocale>
#include <csignal>
#include <cwctype>
#include <gtest/gtest.h>
#include <string>
#include <tuple>

namespace {

const unsigned char* bytes(const char* text) {
    return reinterpret_cast<const unsigned char*>(text);
}

int sign(int value) {
    return (value > 0) - (value < 0);
}

TEST(MultibyteFunctions, EveryByteIsACharacter) {
    const unsigned char* text = bytes("\x82\xA0z\x82");
    EXPECT_EQ(_mbslen(text), 4U);
    EXPECT_EQ(_mbsinc(text), text + 1);
    EXPECT_EQ(_mbsninc(text, 3), text + 3);
    EXPECT_EQ(_mbsstr(text, bytes("\xA0z")), text + 1);
    EXPECT_EQ(_mbsstr(text, bytes("Z")), nullptr);
    EXPECT_EQ(_ismbblead(0x82), 0);
    EXPECT_EQ(_ismbbtrail(0xA0), 0);
    const std::tuple<const char*, const char*, int, int> rows[] = {
        {"a", "B", 1, -1}, {"ab", "AB", 1, 0}, {"a", "ab", -1, -1}, {"\x82", "a", 1, 1}};
    for (const auto& [a, b, exact, folded] : rows) {
        EXPECT_EQ(sign(_mbscmp(bytes(a), bytes(b))), exact) << a << " " << b;
        EXPECT_EQ(sign(_mbsicmp(bytes(a), bytes(b))), folded) << a << " " << b;
    }
    for (const auto compare : {_mbscmp, _mbsicmp}) {
        EXPECT_EQ(compare(nullptr, text), INT_MAX);
        EXPECT_EQ(compare(text, nullptr), INT_MAX);
    }
    EXPECT_EQ(_mbsstr(nullptr, text), nullptr);
    EXPECT_EQ(_mbsstr(text, nullptr), nullptr);
    EXPECT_EQ(_mbslen(nullptr), 0U);
    for (const char* locale : {"C", reference::kUtf8Locale}) {
        std::setlocale(LC_ALL, locale);
        for (unsigned c = 0; c < 0x3100; ++c) {
            const bool expected =
                c < 128 ? (c >= '\t' && c <= '\r') || c == ' ' : std::iswspace(static_cast<std::wint_t>(c)) != 0;
            ASSERT_EQ(_ismbcspace(c) != 0, expected) << locale << " " << c;
        }
    }
    EXPECT_NE(_ismbcspace(0x2003), 0) << "the locale is really asked";
    EXPECT_EQ(_ismbcspace(0xFFFFFFFF), 0);
    std::setlocale(LC_ALL, "C");
}

TEST(StringFunctions, ChangeTheTextInPlace) {
    std::setlocale(LC_ALL, reference::kUtf8Locale);
    const std::wstring text = L"aB\u00E9\u0416-1";
    const std::tuple<wchar_t* (*)(wchar_t*), std::wstring, std::wstring> rows[] = {
        {_wcsupr, text, L"AB\u00C9\u0416-1"},
        {_wcslwr, text, L"ab\u00E9\u0436-1"},
        {_wcsrev, text, L"1-\u0416\u00E9Ba"},
        {_wcsrev, L"abc", L"cba"},
        {_wcsrev, L"", L""},
        {_wcsupr, L"", L""},
        {CharUpper, text, text},
        {CharLower, text, text},
    };
    EXPECT_EQ(_wcsupr_s(nullptr, 3), nullptr);
    EXPECT_EQ(_strlwr(nullptr), nullptr);
    for (const auto& [function, before, after] : rows) {
        std::wstring changed = before;
        EXPECT_EQ(function(changed.data()), changed.data());
        EXPECT_EQ(changed, after);
        EXPECT_EQ(function(nullptr), nullptr);
    }
    std::setlocale(LC_ALL, "C");

    std::wstring sized(L"ab\0cdef", 7);
    EXPECT_EQ(_wcsupr_s(sized.data(), 5), sized.data());
    EXPECT_EQ(sized, std::wstring(L"AB\0CDef", 7));
    std::string narrow = "aB\xC4 1";
    EXPECT_EQ(_strlwr(narrow.data()), narrow.data());
    EXPECT_EQ(narrow, "ab\xC4 1");
}

TEST(StringFunctions, LookAtTheText) {
    EXPECT_EQ(lstrlenA("a\xC3\xA9"), 3);
    EXPECT_EQ(lstrlenW(L"a\u00E9"), 2);
    EXPECT_EQ(lstrlenA(nullptr) + lstrlenW(nullptr), 0);
    const wchar_t text[] = L"ab";
    EXPECT_EQ(_wcsnextc(text), 'b');
    EXPECT_EQ(_wcsinc(text), text + 1);
    EXPECT_EQ(_wcsninc(text, 2), text + 2);
    EXPECT_EQ(_wcscspn(L"abc,d", L",;"), 3U);
    EXPECT_NE(_wcsicoll(L"a", L"A"), 0) << "case counts";
    EXPECT_EQ(_wcsicoll(nullptr, text) & _wcsicoll(text, nullptr), INT_MAX);
    EXPECT_EQ(_wcscspn(nullptr, text) + _wcscspn(text, nullptr) + _wcsnextc(nullptr), 0U);
    wchar_t copy[3] = L"##";
    EXPECT_EQ(lstrcpy(copy, text), copy);
    EXPECT_EQ(lstrcpy(copy, nullptr), nullptr);
    EXPECT_EQ(lstrcpy(nullptr, text), nullptr);
    EXPECT_STREQ(copy, text);
}

TEST(StringFunctions, OneTokenizerForTheProcess) {
    wchar_t first[] = L",a,,bc;d";
    wchar_t second[] = L"x ";
    EXPECT_STREQ(_wcstok(first, L","), L"a");
    EXPECT_EQ(_wcstok(nullptr, nullptr), nullptr);
    EXPECT_STREQ(_wcstok(nullptr, L",;"), L"bc");
    EXPECT_STREQ(_wcstok(second, L" "), L"x") << "another text takes its place";
    EXPECT_EQ(_wcstok(nullptr, L" "), nullptr);
    EXPECT_EQ(_wcstok(nullptr, L" "), nullptr);
}

TEST(PlaceholdersDeathTest, SayTheirNameAndEndTheProcess) {
    const unsigned char* s = bytes("a");
    unsigned char* m = nullptr;
#define TQ_EXPECT_ENDS(name, ...)                                                                                      \
    EXPECT_EXIT(name(__VA_ARGS__), testing::KilledBySignal(SIGABRT), "^TqOsBase: " #name " was called")
    TQ_EXPECT_ENDS(_mbsdec, s, s);
    TQ_EXPECT_ENDS(_ismbclower, 0);
    TQ_EXPECT_ENDS(_ismbcupper, 0);
    TQ_EXPECT_ENDS(_ismbcdigit, 0);
    TQ_EXPECT_ENDS(_mbctolower, 0);
    TQ_EXPECT_ENDS(_mbctoupper, 0);
    TQ_EXPECT_ENDS(_mbslwr, m);
    TQ_EXPECT_ENDS(_mbsupr, m);
    TQ_EXPECT_ENDS(_mbsrev, m);
    TQ_EXPECT_ENDS(_mbsncmp, s, s, 1);
    TQ_EXPECT_ENDS(_mbsnicmp, s, s, 1);
    TQ_EXPECT_ENDS(_mbscoll, s, s);
    TQ_EXPECT_ENDS(_mbsncoll, s, s, 1);
    TQ_EXPECT_ENDS(_mbsicoll, s, s);
    TQ_EXPECT_ENDS(_mbsnicoll, s, s, 1);
    TQ_EXPECT_ENDS(_mbsspn, s, s);
    TQ_EXPECT_ENDS(_mbscspn, s, s);
    TQ_EXPECT_ENDS(_wcsncoll, L"a", L"a", 1);
    TQ_EXPECT_ENDS(_wcsnicoll, L"a", L"a", 1);
#undef TQ_EXPECT_ENDS
}

} // namespace
