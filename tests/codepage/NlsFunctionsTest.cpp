#include "reference/Testing.h"

static_assert(std::is_unsigned_v<LCID> && sizeof(LCID) == 4);

namespace {

using namespace std::string_literals;
using reference::LocaleScope;

TEST(NlsFunctions, AnswerAsASystemWithoutWindowsLocales) {
    EXPECT_EQ(GetACP() + GetThreadLocale() + GetSystemDefaultLCID() + GetUserDefaultLCID(), 0U);
    EXPECT_TRUE(SetThreadLocale(0x0409));
    EXPECT_FALSE(IsValidCodePage(932) || IsDBCSLeadByteEx(932, 0x81) || IsDBCSLeadByte(0x81) || isleadbyte(0x81) != 0);
    wchar_t untouched[] = L"xyz";
    EXPECT_EQ(GetLocaleInfo(0x0409, 1, untouched, 3), 0);
    EXPECT_TRUE(LCMapStringW(0x0409, 0x100, L"abc", 3, untouched, 3) == 0 && untouched == std::wstring(L"xyz"));
    unsigned short types[] = {7, 8};
    EXPECT_TRUE(GetStringTypeExW(0, 1, L"abc", -1, types) && GetStringTypeExW(0, 1, L"abc", 3, nullptr));
    EXPECT_TRUE(types[0] == 0 && types[1] == 8);
}

TEST(NlsConversions, AreTheCLibrarysInItsLocaleBoundedByTheSourceCount) {
    const LocaleScope locale(reference::kUtf8Locale);
    for (const auto convert : {MultiByteToWideChar, TqCharOp::tqMultiByteToWideChar}) {
        std::wstring wide(8, L'#');
        EXPECT_EQ(convert(1252, 9, "a\xC3\xA9\xE4\xB8\xAD", 7, wide.data(), 0), 3);
        EXPECT_EQ(wide, L"a\u00E9\u4E2D\0####"s);
        EXPECT_EQ(convert(0, 0, "bcde", 2, wide.data(), 8), 2) << "the count bounds what is written";
        EXPECT_EQ(wide, L"bc\u4E2D\0####"s) << "no terminator when it does not fit";
        EXPECT_EQ(convert(0, 0, "ef", -1, wide.data(), 0), 2) << "a negative count takes the whole text";
        EXPECT_EQ(convert(0, 0, "\xC3\xA9z", 0, nullptr, 0), 2) << "without a destination it counts";
        EXPECT_EQ(convert(0, 0, "a\xFFz", 3, wide.data(), 8) + convert(0, 0, nullptr, 3, wide.data(), 8), -2);
    }
    char narrow[] = "###############";
    bool usedDefault = true; // never written
    EXPECT_EQ(WideCharToMultiByte(0, 0, L"\u00E9\u4E2D", 6, narrow, 0, "?", &usedDefault), 5);
    EXPECT_TRUE(usedDefault && narrow == std::string("\xC3\xA9\xE4\xB8\xAD"));
    EXPECT_EQ(WideCharToMultiByte(0, 0, L"\u4E2D\u4E2D\u4E2D", -1, narrow, 0, nullptr, nullptr), 9);
    EXPECT_TRUE(narrow[9] == '\0' && WideCharToMultiByte(0, 0, L"\u00E9z", 1, nullptr, 0, nullptr, nullptr) == 3);
    EXPECT_EQ(WideCharToMultiByte(0, 0, nullptr, 3, narrow, 8, nullptr, nullptr), -1);
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(WideCharToMultiByte(0, 0, L"a\u4E2D", 8, narrow, 8, nullptr, nullptr), -1);
}

TEST(NlsConversions, CifFormIsBoundedByTheDestinationAndFillsItWithZeros) {
    using Row = std::tuple<bool, const wchar_t*, int, int, std::string>; // the last is what the room holds afterwards
    const Row rows[] = {
        {false, L"AB", 6, 3, "AB\0\0\0\0"s},           {false, L"ABC", 2, 3, "AB"s},      {false, L"AB", 0, 1, ""s},
        {false, L"AB\u4E2DC", 6, 0, "AB\0\0\0\0"s},    {false, nullptr, 3, 0, "\0\0\0"s}, {false, L"AB", -1, 0, ""s},
        {true, L"\u00E9\u4E2D", 4, 3, "\xC3\xA9\0\0"s}};
    for (const auto& [isUtf8, text, size, result, bytes] : rows) {
        const LocaleScope locale(isUtf8 ? reference::kUtf8Locale : "C");
        std::string room(16, '#');
        EXPECT_EQ(TqCharOp::WideCharToMultiByteCIF(1252, 1, text, 77, room.data(), size, 5), result);
        EXPECT_EQ(room, bytes + std::string(16 - bytes.size(), '#'));
    }
}

TEST(GetStringType, KnowsTheFlagsOfTypicalCharacters) {
    const wchar_t text[] = L"A1 g_\t\x7F";
    std::array<unsigned short, 8> types = {7, 7, 7, 7, 7, 7, 7, 0xFFFF};
    EXPECT_TRUE(TqCharOp::GetStringType(1, text, -1, types.data()));
    EXPECT_EQ(types, (std::array<unsigned short, 8>{0x0181, 0x0084, 0x0048, 0x0102, 0x0010, 0x0068, 0x0020, 0xFFFF}));
    const std::tuple<unsigned, const wchar_t*, int, bool> rows[] = {{0xFFFF, L"\0", 1, true}, {2, L"A", 1, false},
                                                                    {1, L"A", 0, false},      {1, L"A", -2, false},
                                                                    {1, L"", -1, false},      {1, nullptr, 1, false}};
    for (const auto& [infoType, source, count, isAnswered] : rows) {
        unsigned short type = 0x5555;
        EXPECT_EQ(TqCharOp::GetStringType(infoType, source, count, &type), isAnswered);
        EXPECT_EQ(type, isAnswered ? kC1Cntrl : 0x5555);
    }
    EXPECT_FALSE(TqCharOp::GetStringType(1, L"A", 1, nullptr));
}

} // namespace
