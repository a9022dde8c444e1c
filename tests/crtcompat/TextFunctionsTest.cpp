#include <TqOsBase/crtcompat/MultibyteFunctions.h>
#include <TqOsBase/crtcompat/StringFunctions.h>

#include <clocale>
#include <csignal>
#include <cwchar>
#include <cwctype>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace {

const unsigned char* bytes(const char* text) {
    return reinterpret_cast<const unsigned char*>(text);
}

int sign(int value) {
    return (value > 0) - (value < 0);
}

TEST(MultibyteFunctions, EveryByteIsACharacter) {
    const unsigned char* text = bytes("\x82\xA0"
                                      "b\x82");
    EXPECT_EQ(_mbslen(text), 4U);
    EXPECT_EQ(_mbsinc(text), text + 1);
    EXPECT_EQ(_mbsninc(text, 3), text + 3);
    EXPECT_EQ(_mbsstr(text, bytes("\xA0"
                                  "b")),
              text + 1);
    EXPECT_EQ(_mbsstr(text, bytes("B")), nullptr);
    for (int byte = 0; byte < 256; ++byte) {
        EXPECT_EQ(_ismbblead(byte), 0);
        EXPECT_EQ(_ismbbtrail(byte), 0);
    }
    const std::tuple<const char*, const char*, int, int> rows[] = {
        {"", "", 0, 0}, {"a", "B", 1, -1}, {"ab", "AB", 1, 0}, {"a", "ab", -1, -1}, {"\x82", "a", 1, 1},
    };
    for (const auto& [a, b, exact, folded] : rows) {
        EXPECT_EQ(sign(_mbscmp(bytes(a), bytes(b))), exact) << a << " " << b;
        EXPECT_EQ(sign(_mbsicmp(bytes(a), bytes(b))), folded) << a << " " << b;
    }
}

TEST(MultibyteFunctions, SpacesAreAsciisAndTheLocales) {
    for (const char* locale : {"C", "C.UTF-8"}) {
        std::setlocale(LC_ALL, locale);
        for (unsigned c = 0; c < 0x3100; ++c) {
            const bool expected = c < 128 ? std::string("\t\n\v\f\r ").find(static_cast<char>(c)) != std::string::npos
                                          : std::iswspace(static_cast<std::wint_t>(c)) != 0;
            ASSERT_EQ(_ismbcspace(c) != 0, expected) << locale << " " << c;
        }
    }
    EXPECT_NE(_ismbcspace(0x2003), 0) << "the locale is really asked";
    EXPECT_EQ(_ismbcspace(0xFFFFFFFF), 0);
    std::setlocale(LC_ALL, "C");
}

TEST(StringFunctions, ChangeTheTextInPlace) {
    std::setlocale(LC_ALL, "C.UTF-8");
    const auto changed = [](wchar_t* (*function)(wchar_t*), std::wstring text) {
        EXPECT_EQ(function(text.data()), text.data());
        return text;
    };
    const std::wstring text = L"aB\u00E9\u0416-1";
    EXPECT_EQ(changed(_wcsupr, text), L"AB\u00C9\u0416-1");
    EXPECT_EQ(changed(_wcslwr, text), L"ab\u00E9\u0436-1");
    EXPECT_EQ(changed(_wcsrev, text), L"1-\u0416\u00E9Ba");
    EXPECT_EQ(changed(_wcsrev, L"abc"), L"cba");
    EXPECT_EQ(changed(CharUpper, text), text);
    EXPECT_EQ(changed(CharLower, text), text);
    for (const auto function : {_wcsupr, _wcslwr, _wcsrev}) {
        EXPECT_EQ(changed(function, L""), L"");
        EXPECT_EQ(changed(function, L"1"), L"1");
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
    EXPECT_EQ(lstrlenA(nullptr), 0);
    EXPECT_EQ(lstrlenW(nullptr), 0);
    const wchar_t text[] = L"ab";
    EXPECT_EQ(_wcsnextc(text), 'b');
    EXPECT_EQ(_wcsinc(text), text + 1);
    EXPECT_EQ(_wcsninc(text, 2), text + 2);
    EXPECT_EQ(_wcscspn(L"abc,d", L",;"), 3U);
    EXPECT_NE(_wcsicoll(L"a", L"A"), 0) << "case counts";
    EXPECT_EQ(_wcsicoll(L"a", L"a"), 0);
    wchar_t copy[3] = L"##";
    EXPECT_EQ(lstrcpy(copy, text), copy);
    EXPECT_STREQ(copy, text);
    EXPECT_EQ(lstrcpy(copy, nullptr), nullptr);
    EXPECT_EQ(lstrcpy(nullptr, text), nullptr);
    EXPECT_STREQ(copy, text);
}

TEST(StringFunctions, OneTokenizerForTheProcess) {
    wchar_t first[] = L",a,,bc;d";
    wchar_t second[] = L"x y";
    EXPECT_STREQ(_wcstok(first, L","), L"a");
    EXPECT_STREQ(_wcstok(nullptr, L",;"), L"bc");
    EXPECT_STREQ(_wcstok(second, L" "), L"x") << "another text takes its place";
    EXPECT_STREQ(_wcstok(nullptr, L" "), L"y");
    EXPECT_EQ(_wcstok(nullptr, L" "), nullptr);
    EXPECT_EQ(_wcstok(nullptr, L" "), nullptr);
    wchar_t empty[] = L",,";
    EXPECT_EQ(_wcstok(empty, L","), nullptr);
    EXPECT_EQ(_wcstok(nullptr, L","), nullptr);
}

TEST(PlaceholdersDeathTest, SayTheirNameAndEndTheProcess) {
    const std::vector<std::pair<std::string, std::function<void()>>> placeholders = {
        {"_mbsdec", [] { _mbsdec(nullptr, nullptr); }},
        {"_ismbclower", [] { _ismbclower(0); }},
        {"_ismbcupper", [] { _ismbcupper(0); }},
        {"_ismbcdigit", [] { _ismbcdigit(0); }},
        {"_mbctolower", [] { _mbctolower(0); }},
        {"_mbctoupper", [] { _mbctoupper(0); }},
        {"_mbslwr", [] { _mbslwr(nullptr); }},
        {"_mbsupr", [] { _mbsupr(nullptr); }},
        {"_mbsncmp", [] { _mbsncmp(nullptr, nullptr, 0); }},
        {"_mbsnicmp", [] { _mbsnicmp(nullptr, nullptr, 0); }},
        {"_mbscoll", [] { _mbscoll(nullptr, nullptr); }},
        {"_mbsncoll", [] { _mbsncoll(nullptr, nullptr, 0); }},
        {"_mbsicoll", [] { _mbsicoll(nullptr, nullptr); }},
        {"_mbsnicoll", [] { _mbsnicoll(nullptr, nullptr, 0); }},
        {"_mbsspn", [] { _mbsspn(nullptr, nullptr); }},
        {"_mbscspn", [] { _mbscspn(nullptr, nullptr); }},
        {"_mbsrev", [] { _mbsrev(nullptr); }},
        {"_wcsncoll", [] { _wcsncoll(nullptr, nullptr, 0); }},
        {"_wcsnicoll", [] { _wcsnicoll(nullptr, nullptr, 0); }},
    };
    for (const auto& [name, call] : placeholders)
        EXPECT_EXIT(call(), testing::KilledBySignal(SIGABRT), "^TqOsBase: " + name + " was called");
}

} // namespace
