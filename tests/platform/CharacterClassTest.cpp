#include "platform/CharacterClass.h"

#include <climits>
#include <clocale>
#include <cwctype>
#include <gtest/gtest.h>
#include <string>

namespace {

using namespace tq::platform;

struct ClassRow {
    bool (*ours)(wchar_t) noexcept;
    int (*library)(std::wint_t);
    CharacterClasses bit;
    bool asciiOnly;
};

const ClassRow kRows[] = {
    {isUpper, std::iswupper, kUpper, false}, {isLower, std::iswlower, kLower, false},
    {isDigit, std::iswdigit, kDigit, true},  {isSpace, std::iswspace, kSpace, false},
    {isPunct, std::iswpunct, kPunct, false}, {isControl, std::iswcntrl, kControl, false},
    {isBlank, std::iswblank, kBlank, false}, {isHexDigit, std::iswxdigit, kHexDigit, true},
    {isAlpha, std::iswalpha, kAlpha, false},
};

TEST(CharacterClass, AgreesWithTheCLibraryInEveryLocale) {
    const std::string saved = std::setlocale(LC_ALL, nullptr);
    for (const char* name : {"C", "C.UTF-8"}) {
        ASSERT_NE(std::setlocale(LC_ALL, name), nullptr);
        for (int code = 0; code < 0x3100; ++code) {
            const auto c = static_cast<wchar_t>(code);
            for (const ClassRow& row : kRows) {
                const bool expected = (code < 128 || !row.asciiOnly) && row.library(static_cast<std::wint_t>(c)) != 0;
                ASSERT_EQ(row.ours(c), expected) << name << " " << std::hex << code << " class " << row.bit;
                ASSERT_EQ((characterClasses(c) & row.bit) != 0, expected) << name << " " << std::hex << code;
            }
        }
    }
    ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
    EXPECT_TRUE(isUpper(L'\u0416')) << "the locale is really asked";
    std::setlocale(LC_ALL, saved.c_str());
}

TEST(CharacterClass, KnowsNothingOfNegativeCharacters) {
    for (const int code : {-1, -65, INT_MIN, static_cast<int>(0xFFFFE800)}) {
        const auto c = static_cast<wchar_t>(code);
        EXPECT_EQ(characterClasses(c), 0);
        for (const ClassRow& row : kRows)
            EXPECT_FALSE(row.ours(c));
    }
}

} // namespace
