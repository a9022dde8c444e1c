
#include "reference/Testing.h"

namespace {

using reference::LocaleScope;

const unsigned char* bytes(const char* text) {
    return reinterpret_cast<const unsigned char*>(text);
}

TEST(MultibyteFunctions, EveryByteIsACharacter) {
    const unsigned char* text = bytes("\x82\xA0z\x82");
    EXPECT_TRUE(_mbslen(text) == 4 && _mbslen(nullptr) == 0 && _ismbblead(0x82) == 0 && _ismbbtrail(0xA0) == 0);
    EXPECT_TRUE(_mbsinc(text) == text + 1 && _mbsninc(text, 3) == text + 3);
    EXPECT_TRUE(_mbsstr(text, bytes("\xA0z")) == text + 1 && _mbsstr(text, bytes("Z")) == nullptr);
    EXPECT_TRUE(_mbsstr(nullptr, text) == nullptr && _mbsstr(text, nullptr) == nullptr);
    const std::tuple<const char*, const char*, int, int> rows[] = {
        {"a", "B", 1, -1}, {"ab", "AB", 1, 0}, {"a", "ab", -1, -1}, {"\x82", "a", 1, 1}, {"a", "a", 0, 0}};
    const auto sign = [](int value) { return (value > 0) - (value < 0); };
    for (const auto& [a, b, exact, folded] : rows) {
        EXPECT_EQ(sign(_mbscmp(bytes(a), bytes(b))), exact) << a << " " << b;
        EXPECT_EQ(sign(_mbsicmp(bytes(a), bytes(b))), folded) << a << " " << b;
    }
    for (const auto compare : {_mbscmp, _mbsicmp})
        EXPECT_TRUE(compare(nullptr, text) == INT_MAX && compare(text, nullptr) == INT_MAX);
    for (const char* name : {"C", reference::kUtf8Locale}) {
        const LocaleScope locale(name);
        for (unsigned c = 0; c < 0x3100; ++c) {
            const bool isBlank = (c >= '\t' && c <= '\r') || c == ' ';
            ASSERT_EQ(_ismbcspace(c) != 0, c < 128 ? isBlank : std::iswspace(static_cast<std::wint_t>(c)) != 0) << c;
        }
        EXPECT_TRUE(_ismbcspace(0x2003) != 0 || name == std::string("C")) << "the locale is really asked";
    }
    EXPECT_EQ(_ismbcspace(0xFFFFFFFF), 0);
}

TEST(StringFunctions, ChangeTheTextInPlace) {
    const LocaleScope locale(reference::kUtf8Locale);
    const std::wstring text = L"aB\u00E9\u0416-1", upper = L"AB\u00C9\u0416-1", lower = L"ab\u00E9\u0436-1";
    using Row = std::tuple<wchar_t* (*)(wchar_t*), std::wstring, std::wstring>;
    const Row rows[] = {{_wcsupr, text, upper},      {_wcslwr, text, lower}, {_wcsrev, L"\u00E9bc", L"cb\u00E9"},
                        {_wcsrev, L"abcd", L"dcba"}, {_wcsrev, L"", L""},    {CharUpper, text, text},
                        {CharLower, text, text}};
    for (const auto& [function, before, after] : rows) {
        std::wstring changed = before;
        EXPECT_TRUE(function(changed.data()) == changed.data() && changed == after && function(nullptr) == nullptr);
    }
    std::wstring sized(L"ab\0cdef", 7);
    EXPECT_TRUE(_wcsupr_s(sized.data(), 5) == sized.data() && sized == std::wstring(L"AB\0CDef", 7));
    std::string narrow = "aB\xD7 1";
    EXPECT_TRUE(_strlwr(narrow.data()) == narrow.data() && narrow == "ab\xD7 1");
    EXPECT_TRUE(_wcsupr_s(nullptr, 3) == nullptr && _strlwr(nullptr) == nullptr);
}

TEST(StringFunctions, LookAtTheText) {
    const wchar_t text[] = L"ab";
    EXPECT_TRUE(lstrlenA("a\xC3\xA9") == 3 && lstrlenW(L"a\u00E9") == 2 && lstrlenA(nullptr) + lstrlenW(nullptr) == 0);
    EXPECT_TRUE(_wcsnextc(text) == 'b' && _wcsinc(text) == text + 1 && _wcsninc(text, 2) == text + 2);
    EXPECT_EQ(_wcscspn(L"abc,d", L",;"), 3U);
    EXPECT_NE(_wcsicoll(L"a", L"A"), 0) << "case counts";
    EXPECT_TRUE(_wcsicoll(nullptr, text) == INT_MAX && _wcsicoll(text, nullptr) == INT_MAX);
    EXPECT_EQ(_wcscspn(nullptr, text) + _wcscspn(text, nullptr) + _wcsnextc(nullptr), 0U);
    wchar_t copy[3] = L"##";
    EXPECT_TRUE(lstrcpy(copy, text) == copy && lstrcpy(copy, nullptr) == nullptr && lstrcpy(nullptr, text) == nullptr);
    EXPECT_STREQ(copy, text);
    // One tokenizer for the process.
    wchar_t first[] = L",a,,bc;d";
    wchar_t second[] = L"x ";
    EXPECT_STREQ(_wcstok(first, L","), L"a");
    EXPECT_EQ(_wcstok(nullptr, nullptr), nullptr);
    EXPECT_STREQ(_wcstok(nullptr, L",;"), L"bc");
    EXPECT_STREQ(_wcstok(second, L" "), L"x") << "another text takes its place";
    EXPECT_TRUE(_wcstok(nullptr, L" ") == nullptr && _wcstok(nullptr, L" ") == nullptr);
    wchar_t third[] = L"acb";
    EXPECT_STREQ(_wcstok(third, L"c"), L"a");
    EXPECT_TRUE(_wcstok(second, nullptr) == nullptr && _wcstok(nullptr, L"c") == nullptr) << "nothing is left of it";
}

const unsigned char* const kS = bytes("a");

TEST(PlaceholdersDeathTest, SayTheirNameAndEndTheProcess) {
    const std::pair<const char*, void (*)()> rows[] = {
        {"_mbsdec", [] { _mbsdec(kS, kS); }},           {"_ismbclower", [] { _ismbclower(0); }},
        {"_ismbcupper", [] { _ismbcupper(0); }},        {"_ismbcdigit", [] { _ismbcdigit(0); }},
        {"_mbctolower", [] { _mbctolower(0); }},        {"_mbctoupper", [] { _mbctoupper(0); }},
        {"_mbslwr", [] { _mbslwr(nullptr); }},          {"_mbsupr", [] { _mbsupr(nullptr); }},
        {"_mbsrev", [] { _mbsrev(nullptr); }},          {"_mbsncmp", [] { _mbsncmp(kS, kS, 1); }},
        {"_mbsnicmp", [] { _mbsnicmp(kS, kS, 1); }},    {"_mbscoll", [] { _mbscoll(kS, kS); }},
        {"_mbsncoll", [] { _mbsncoll(kS, kS, 1); }},    {"_mbsicoll", [] { _mbsicoll(kS, kS); }},
        {"_mbsnicoll", [] { _mbsnicoll(kS, kS, 1); }},  {"_mbsspn", [] { _mbsspn(kS, kS); }},
        {"_mbscspn", [] { _mbscspn(kS, kS); }},         {"_wcsncoll", [] { _wcsncoll(L"", L"", 1); }},
        {"_wcsnicoll", [] { _wcsnicoll(L"", L"", 1); }}};
    for (const auto& [name, call] : rows)
        EXPECT_EXIT(call(), testing::KilledBySignal(SIGABRT), "^TqOsBase: " + std::string(name) + " was called");
}

const std::wstring kText = L"abcdefgh";

// `size` characters that border on a guard, all number signs.
template <class Char>
Char* freshRoom(std::size_t size) {
    static reference::GuardedBuffer<Char> room(32);
    return std::fill_n(room.last(size), size, Char{'#'}) - size;
}

TEST(SecureCopies, EverySizeCountAndLength) {
    reference::GuardedBuffer<wchar_t> source(16);
    reference::GuardedBuffer<char> narrowSource(16);
    for (std::size_t size = 0; size <= 6; ++size) {
        for (std::size_t count = 0; count <= 8; ++count) {
            SCOPED_TRACE(testing::Message() << size << " " << count);
            for (const char* src : {narrowSource.place("abcdefgh", count), static_cast<const char*>(nullptr)}) {
                const bool fails = count > 0 && (src == nullptr || size < count);
                std::string expected(size, fails ? '\0' : '#');
                expected.replace(0, fails ? 0 : count, "abcdefgh", fails ? 0 : count);
                char* dst = freshRoom<char>(size);
                const auto address = static_cast<int>(reinterpret_cast<std::uintptr_t>(dst));
                EXPECT_EQ(memcpy_s(dst, size, src, count), fails ? -1 : count == 0 ? 0 : address);
                EXPECT_EQ(std::string(dst, size), expected);
            }
            for (std::size_t length = 0; length <= 7; ++length) {
                const bool isTooLong = count > size && length > size;
                std::wstring expected = isTooLong ? L"" : kText.substr(0, std::min(count, length));
                expected.resize(size);
                const wchar_t* src = source.place(kText.substr(0, length).c_str(), length + 1);
                wchar_t* dst = freshRoom<wchar_t>(size);
                EXPECT_EQ(wmemcpy_s(dst, size, src, count), isTooLong ? -1 : 0);
                EXPECT_EQ(std::wstring(dst, size), expected) << length;
                dst = freshRoom<wchar_t>(size);
                EXPECT_EQ(wcsncpy_s(dst, static_cast<int>(size), src, static_cast<int>(count)), isTooLong ? -1 : 0);
                EXPECT_EQ(std::wstring(dst, size), expected) << length;
            }
            // No terminator at all: nothing is read after what may be copied, or one character more.
            const wchar_t* src = source.place(kText.c_str(), std::min(count, size + 1));
            EXPECT_EQ(wmemcpy_s(freshRoom<wchar_t>(size), size, src, count), count > size ? -1 : 0);
        }
        // The copies of the C library: no terminator when the text fills the room.
        std::wstring expected = kText.substr(0, std::min<std::size_t>(size, 4));
        expected.resize(size);
        wchar_t* dst = freshRoom<wchar_t>(size);
        EXPECT_TRUE(wcsncpy_s(dst, L"abcd", static_cast<int>(size)) == 0 && std::wstring(dst, size) == expected);
        dst = freshRoom<wchar_t>(size);
        EXPECT_TRUE(wcscpy_s(dst, static_cast<int>(size), L"abcd") == 0 && std::wstring(dst, size) == expected);
    }
    wchar_t* dst = freshRoom<wchar_t>(5);
    EXPECT_EQ(wcscpy_s(dst, L"abcd"), 0);
    for (const int refused : {wcscpy_s(dst, -1, L"x"), wcsncpy_s(dst, L"x", -1), wcsncpy_s(dst, -1, L"x", 1),
                              wcsncpy_s(dst, 5, L"x", -1), wcscpy_s(dst, nullptr), wcscpy_s(dst, 5, nullptr),
                              memcpy_s(nullptr, 4, "abcd", 4), wmemcpy_s(nullptr, 4, L"ab", 2)})
        EXPECT_EQ(refused, -1);
    EXPECT_STREQ(dst, L"abcd") << "refused calls write nothing";
    EXPECT_EQ(wmemcpy_s(dst, 5, nullptr, 0), -1);
    EXPECT_EQ(std::wstring(dst, 5), std::wstring(5, L'\0')) << "but for this one";
}

// Writes `value` into a buffer of exactly the size of `text`, and compares.
template <class Value, class Char>
void expectWritten(Char* (*write)(Value, Char*, int), long long value, const std::string& text) {
    Char* buf = freshRoom<Char>(text.size() + 1);
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
    for (std::size_t size = 1; size <= 5; ++size) {
        wchar_t* room = freshRoom<wchar_t>(size);
        EXPECT_EQ(_itow_s(-123, room, size, 2), size == 5 ? 4 : -1);
        EXPECT_EQ(room, std::wstring(L"-123").substr(0, size - 1));
    }
    EXPECT_TRUE(_itow_s(7, freshRoom<wchar_t>(0), 0, 2) == -1 && _itow_s(7, nullptr, 10, 2) == -1);
    EXPECT_EQ(_itow(7, nullptr, 2), nullptr);
}

TEST(NumberFunctions, ReadIntegersAndSinglePrecision) {
    const LocaleScope locale(reference::kUtf8Locale); // where U+2003 is white space
    const std::pair<const wchar_t*, int> decimal[] = {{L"", 0},   {L"+5", 5},   {L"+-5", 0},       {L"- 5", 0},
                                                      {L"x5", 0}, {L"0x10", 0}, {L"5\u4E2D", 5},   {L"\u20035", 0},
                                                      {L"-", 0},  {nullptr, 0}, {L"4294967298", 2}};
    for (const auto& [text, value] : decimal)
        EXPECT_EQ(_wtoi(text), value) << text;
    EXPECT_TRUE(_wtoi(L" \t\n\v\f\r-12x") == -12 && _wtoi(L"99999999999999999999") == -1);
    // The length of the text is the base.
    const std::wstring zeros(34, L'0');
    const std::pair<std::wstring, long long> rows[] = {
        {L"", 0},           {L"7", 0}, {L"10", 2}, {L"12", 1}, {L"-12", -5}, {L"777", 0}, {zeros + L"zz", 1295},
        {zeros + L"0zz", 0}};
    for (const auto& [text, value] : rows)
        EXPECT_TRUE(_wtol(text.c_str()) == value && _wtoi64(text.c_str()) == value) << text;
    const std::wstring large(36, L'z');
    EXPECT_TRUE(_wtol(large.c_str()) == LONG_MAX && _wtoi64(large.c_str()) == -1) << "the second is unsigned";
    EXPECT_TRUE(_wtol(nullptr) == 0 && _wtoi64(nullptr) == 0 && _wtof(nullptr) == 0);
    EXPECT_TRUE(_wtof(L"0.1") == static_cast<double>(0.1F) && _wtof(L" -1.5e3mm") == -1500.0 && _wtof(L"mm") == 0);
}

} // namespace
