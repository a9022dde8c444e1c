#include "reference/Testing.h"

namespace {

// Runs `call` on the argument list twice: it stays unread.
template <class Call, class Char>
int withList(const Call& call, const Char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int first = call(format, arguments);
    EXPECT_EQ(call(format, arguments), first);
    va_end(arguments);
    return first;
}

constexpr int kLongest = 524287;

TEST(PrintfFunctions, CountOneOfThemWithTheTerminator) {
    EXPECT_EQ(withList(_vscprintf, "%d|%s", 1234, "xyz"), 8);
    for (const int length : {1, 1023, 1024, kLongest})
        EXPECT_EQ(withList(_vscwprintf, L"%*d", length, 7), length + 1);
    char text[4] = "###";
    EXPECT_EQ(withList([&](auto format, auto list) { return vsprintf_s(text, 3, format, list); }, "%s", "abcdef"), 6);
    EXPECT_STREQ(text, "ab");
    EXPECT_EQ(withList([](auto format, auto list) { return vsprintf_s(nullptr, 4, format, list); }, "x"), 1);
    EXPECT_EQ(withList(_vscwprintf, L"%*d", kLongest + 1, 7), -1);
    EXPECT_EQ(withList(_vscwprintf, static_cast<const wchar_t*>(nullptr)), -1);
    EXPECT_EQ(withList(_vscprintf, static_cast<const char*>(nullptr)), -1);
}

TEST(PrintfFunctions, FormsWithoutSizeWriteTheTextAndItsTerminatorOnly) {
    reference::GuardedBuffer<wchar_t> room(kLongest + 1);
    for (const int length : {1, 1023, 1024, kLongest}) {
        const std::wstring expected = std::wstring(static_cast<std::size_t>(length) - 1, L' ') + L"7";
        wchar_t* dst = room.last(expected.size() + 1);
        const auto inner = [&](const wchar_t* format, std::va_list list) { return _vswprintf(dst, format, list); };
        const auto own = [&](const wchar_t* format, std::va_list list) { return vswprintf(dst, format, list); };
        for (int form = 0; form < 4; ++form) {
            std::wmemset(dst, L'#', expected.size() + 1);
            const int result = form == 0   ? withList(inner, L"%*d", length, 7)
                               : form == 1 ? withList(own, L"%*d", length, 7)
                               : form == 2 ? swprintf(dst, L"%*d", length, 7)
                                           : wsprintf(dst, L"%*d", length, 7);
            EXPECT_TRUE(result == length && dst == expected) << length << " " << form;
        }
    }
    wchar_t text[16] = L"ab";
    EXPECT_TRUE(swprintf(text, L"%*d", kLongest + 1, 7) == -1 && text == std::wstring(L"ab"));
    EXPECT_EQ(swprintf(text, L"%ls%ls", text, text), 4) << "an argument may lie in the destination";
    EXPECT_TRUE(text == std::wstring(L"abab") && swprintf(text, L"%ls", L"") == 0 && text[0] == L'\0');
    wchar_t* const nowhere = nullptr;
    EXPECT_EQ(swprintf(nowhere, L"x"), -1);
    EXPECT_EQ(swprintf(text, 16, L"%d-%ls", 12, L"x"), 4) << "the C library's own form";
    EXPECT_STREQ(text, L"12-x");
}

TEST(PrintfFunctions, BoundedWideFormNeedsOnePlaceMoreThanItsSize) {
    reference::GuardedBuffer<wchar_t> room(32);
    wchar_t* dst = nullptr;
    std::size_t size = 0;
    const auto write = [&](const wchar_t* format, std::va_list list) { return vswprintf_s(dst, size, format, list); };
    const std::wstring text = L"abcdefghij";
    for (size = 0; size <= 12; ++size) {
        const std::wstring expected = text.substr(0, size);
        dst = std::wmemset(room.last(expected.size() + 1), L'#', expected.size() + 1);
        EXPECT_EQ(withList(write, L"%ls", text.c_str()), size > 10 ? 10 : static_cast<int>(size) - 1);
        EXPECT_EQ(dst, expected) << size;
    }
    wchar_t cut[8] = L"#######";
    dst = cut;
    size = 4;
    EXPECT_EQ(withList(write, L"%lc%ls", 0, L"bcdef"), 3) << "characters are cut, zeros are no end";
    // After a zero the C library of macOS writes nothing more, and zeros stand there.
    EXPECT_EQ(std::wstring(cut, 6), std::wstring(cut[1] != 0 ? L"\0bcd\0#" : L"\0\0\0\0\0#", 6));
    cut[0] = L'#';
    EXPECT_TRUE(withList(write, L"%*d", kLongest + 1, 7) == -1 && cut == std::wstring(L""));
    dst = nullptr;
    EXPECT_EQ(withList(write, L"x"), -1);
}

} // namespace
