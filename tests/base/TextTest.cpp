#include "base/CharacterClass.h"
#include "base/FileName.h"
#include "base/Utf8.h"
#include "reference/Testing.h"

namespace {

using namespace tq::detail;

// Ours, the C library's, the bit, and whether it is of ASCII alone.
const std::tuple<bool (*)(wchar_t) noexcept, int (*)(std::wint_t), CharacterClasses, bool> kRows[] = {
    {isUpper, std::iswupper, kUpper, false}, {isLower, std::iswlower, kLower, false},
    {isDigit, std::iswdigit, kDigit, true},  {isSpace, std::iswspace, kSpace, false},
    {isPunct, std::iswpunct, kPunct, false}, {isControl, std::iswcntrl, kControl, false},
    {isBlank, std::iswblank, kBlank, false}, {isHexDigit, std::iswxdigit, kHexDigit, true},
    {isAlpha, std::iswalpha, kAlpha, false}};

class InLocale : public testing::TestWithParam<const char*> {
protected:
    const reference::LocaleScope m_locale{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Locales, InLocale, testing::Values("C", reference::kUtf8Locale));

TEST_P(InLocale, CharacterClassesAgreeWithTheCLibrary) {
    for (int code = -300; code < 0x3100; ++code) {
        const auto c = static_cast<wchar_t>(code);
        for (const auto& [ours, library, bit, asciiOnly] : kRows) {
            const bool isAsked = code >= 0 && (code < 128 || !asciiOnly);
            const bool expected = isAsked && library(static_cast<std::wint_t>(c)) != 0;
            ASSERT_EQ(ours(c), expected) << std::hex << code << " class " << bit;
            ASSERT_EQ((characterClasses(c) & bit) != 0, expected) << std::hex << code << " class " << bit;
        }
    }
    EXPECT_EQ(characterClasses(static_cast<wchar_t>(INT_MIN)), 0);
    EXPECT_TRUE(isUpper(L'\u0416') || GetParam() == std::string("C")) << "the locale is really asked";
}

TEST_P(InLocale, FileNamesAreUtf8AndLeaveErrnoAlone) {
    const std::wstring outsideUnicode[] = {{L'a', static_cast<wchar_t>(0x110000)}, {L'a', static_cast<wchar_t>(-2)}};
    std::string out = "left over";
    errno = EXDEV;
    EXPECT_TRUE(toFileName(L"\u00E9\u4E2D\U0010FFFF", out) && out == "\xC3\xA9\xE4\xB8\xAD\xF4\x8F\xBF\xBF");
    EXPECT_FALSE(toFileName(outsideUnicode[0].c_str(), out) || toFileName(outsideUnicode[1].c_str(), out));
    EXPECT_EQ(errno, EXDEV);
}

TEST(Utf8, EveryCharacterComesBackExceptSurrogates) {
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        char encoded[kMaxUtf8Length] = {};
        const std::size_t length = encodeUtf8(c, encoded);
        ASSERT_EQ(length, c < 0x80 ? 1U : c < 0x800 ? 2U : c < 0x10000 ? 3U : 4U);
        const bool isSurrogate = c >= 0xD800 && c <= 0xDFFF;
        char32_t decoded = 0xFFFFFFFF;
        ASSERT_EQ(decodeUtf8(std::string(encoded, length).c_str(), decoded), isSurrogate ? 0 : length);
        ASSERT_TRUE(decoded == (isSurrogate ? 0xFFFFFFFF : c)) << std::hex << static_cast<unsigned>(c);
        const std::wstring name(1, static_cast<wchar_t>(c));
        if (isSurrogate || c == 0) {
            ASSERT_THROW(tq::utf8Name(name), std::invalid_argument);
        } else {
            ASSERT_EQ(tq::wideName(tq::utf8Name(name)), name);
        }
    }
    for (const std::wstring& name : {std::wstring(1, static_cast<wchar_t>(0x110000)), std::wstring(L"a\0b", 3)})
        EXPECT_THROW(tq::utf8Name(name), std::invalid_argument);
    char encoded[kMaxUtf8Length];
    EXPECT_TRUE(encodeUtf8(0x110000, encoded) == 0U && encodeUtf8(0xFFFFFFFF, encoded) == 0U);
}

TEST(Utf8, MalformedBytesAreRefusedWithoutReadingOn) {
    reference::GuardedBuffer<char> buffer(16);
    EXPECT_THROW(tq::wideName(std::string_view("a\0b", 3)), std::invalid_argument);
    EXPECT_EQ(tq::wideName(std::string_view("ab\xC3\xA9", 2)), L"ab");
    for (const std::string row :
         {"\x80", "\xBF", "\xC3", "\xC3\x41", "\xC0\x80", "\xC1\xBF", "\xE0\x80\x80", "\xE0\x9F\xBF", "\xE4\xB8",
          "\xE4", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80", "\xFF", "\xF0\x9F\x98"}) {
        char32_t decoded = 7;
        EXPECT_EQ(decodeUtf8(buffer.place(row.c_str(), row.size() + 1), decoded), 0U) << testing::PrintToString(row);
        EXPECT_TRUE(decoded == 7);
        EXPECT_THROW(tq::wideName("a" + row), std::invalid_argument);
    }
}

} // namespace
