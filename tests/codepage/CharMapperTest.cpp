#include <TqOsBase/codepage/TqCharConverter.h>
#include <TqOsBase/codepage/TqCharMapper.h>
#include <TqOsBase/codepage/TqCodePageMapper.h>

#include <climits>
#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <type_traits>
#include <utility>
#include <vector>

static_assert(std::is_same_v<std::underlying_type_t<code_page_id>, std::int32_t>);

namespace {

code_page_id id(int value) {
    return static_cast<code_page_id>(value);
}

int valueOr(const std::map<int, int>& map, int key, int fallback) {
    const auto found = map.find(key);
    return found == map.end() ? fallback : found->second;
}

// The Windows code pages of identifiers 0 to 45.
const int kCodePages[] = {0,     20127, 28591, 28592, 28593, 28594, 28595, 28586, 28597, 28598, 28599, 437,
                          850,   852,   855,   857,   860,   861,   863,   864,   865,   869,   932,   10000,
                          10002, 949,   1361,  866,   1250,  1251,  1252,  20936, 1253,  1254,  1255,  1256,
                          1257,  874,   932,   936,   949,   950,   1361,  0,     1258,  65001};
const int kOutside[] = {46, 47, 255, INT_MAX, -1, INT_MIN};

TEST(TqCodePageMapper, MapsIdentifiersBothWays) {
    std::map<int, int> highest;
    for (int i = 0; i <= 45; ++i) {
        const bool none = i == 0 || i == 1 || i == 43;
        EXPECT_EQ(TqCodePageMapper::lumoCpToAnsiCp(id(i)), none ? 3 : kCodePages[i]) << i;
        if (i > 0)
            highest[kCodePages[i]] = i;
    }
    for (const int outside : kOutside)
        EXPECT_EQ(TqCodePageMapper::lumoCpToAnsiCp(id(outside)), 3);
    for (int codePage = -1; codePage <= 66000; ++codePage)
        ASSERT_EQ(TqCodePageMapper::ansiCpToLumoCp(codePage), valueOr(highest, codePage, 0)) << codePage;
    EXPECT_EQ(TqCodePageMapper::currentSystemAnsiCp(), 0);
}

TEST(TqCharMapper, CharSetsAndIdentifiers) {
    const std::map<int, int> idOfCharSet = {{0, 30},   {2, 30},   {128, 38}, {129, 40}, {134, 39},
                                            {136, 41}, {161, 32}, {162, 33}, {163, 44}, {177, 34},
                                            {178, 35}, {186, 36}, {204, 29}, {222, 37}, {238, 28}};
    std::map<int, int> charSetOfId;
    for (int charSet = 0; charSet <= 0xFFFF; ++charSet) {
        const int expected = valueOr(idOfCharSet, charSet, 0);
        ASSERT_EQ(TqCharMapper::getCodepageByCharset(static_cast<unsigned short>(charSet)), expected) << charSet;
        if (expected != 0 && charSet != 2)
            charSetOfId[expected] = charSet;
    }
    for (int i = -3; i <= 50; ++i)
        EXPECT_EQ(TqCharMapper::getCharSetByCodepageId(id(i)), valueOr(charSetOfId, i, 1)) << i;
    for (const int outside : kOutside)
        EXPECT_EQ(TqCharMapper::getCharSetByCodepageId(id(outside)), 1);
}

TEST(MifDigits, NameTheDoubleByteCodePages) {
    const std::map<int, int> digits = {{22, '1'}, {24, '2'}, {25, '3'}, {26, '4'}, {31, '5'},
                                       {38, '1'}, {39, '5'}, {40, '3'}, {41, '2'}, {42, '4'}};
    for (int i = -70; i <= 120; ++i) {
        EXPECT_EQ(IsMultiByteCodePage(id(i)), digits.count(i) != 0) << i;
        EXPECT_EQ(isAsianCodepage(id(i)), digits.count(i) != 0) << i;
        EXPECT_EQ(reMapCodepage(id(i)), valueOr(digits, i, '0')) << i;
    }
    const std::map<int, int> ids = {{'0', 43}, {'1', 38}, {'2', 41}, {'3', 40}, {'4', 42}, {'5', 39}};
    for (int digit = SHRT_MIN; digit <= SHRT_MAX; ++digit)
        ASSERT_EQ(mapCodepage(static_cast<short>(digit)), valueOr(ids, digit & 0xFF, 0)) << digit;
}

TEST(TqCharMapper, SingleCharactersMapForAsciiOnly) {
    for (const int c : {0x41, 0, 127, -5, INT_MIN, 128, 0xE9, 0x4E2D, INT_MAX}) {
        const auto ch = static_cast<wchar_t>(c);
        const bool maps = c <= 127;
        for (const int page : {0, 30, 38, 45, 46, -1}) {
            wchar_t out = L'#';
            EXPECT_FALSE(TqCharMapper::unicodeToCodepage(ch, id(page), out, true)) << "even when it stored";
            EXPECT_EQ(std::exchange(out, L'#'), maps ? ch : L'#');
            EXPECT_EQ(TqCharMapper::codepageToUnicode(ch, id(page), out), maps);
            EXPECT_EQ(std::exchange(out, L'#'), maps ? ch : L'#');
            EXPECT_EQ(TqCharMapper::codepageToUnicode(ch, 9U, id(page), out), maps);
            EXPECT_EQ(out, maps ? ch : L'#');
            EXPECT_FALSE(TqCharMapper::isLeadByte(static_cast<unsigned char>(c), id(page)));
        }
    }
}

void expectParsed(const char* text, bool isEscape, int expectedValue, int expectedPage) {
    wchar_t value = L'#';
    code_page_id page = id(7);
    const auto* bytes = reinterpret_cast<const unsigned char*>(text);
    EXPECT_EQ(TqCharConverter::parseMIFString(bytes, value, page), isEscape) << testing::PrintToString(text);
    EXPECT_EQ(value, expectedValue) << testing::PrintToString(text);
    EXPECT_EQ(page, expectedPage) << testing::PrintToString(text);
}

TEST(ParseMifString, ReadsExactlyTheEscape) {
    expectParsed("\\M+18140", true, 0x8140, 38);
    expectParsed("\\m+5b0a1", true, 0xB0A1, 39);
    expectParsed("\\M+2FfEeZ", true, 0xFFEE, 41);
    expectParsed("\\M+30000", true, 0, 40);
    expectParsed("\\M+4007F", true, 0x7F, 42);
    expectParsed("\\M+08140", true, 0x8140, 43);
    for (const char* text : {"\\M+68140", "\\M+/8140", "\\M+1814G", "\\M-18140", "/M+18140", "\\U+18140", "\\M+1@140",
                             "\\M+1`140", "\\M+1:140", "\\M+181\xB1", "\\M+1814", "\\M+1", "\\M", "\\", ""})
        expectParsed(text, false, L'#', 7);
    expectParsed(nullptr, false, L'#', 7);
}

TEST(CheckSum, KnownSums) {
    EXPECT_EQ(TqCharMapper::getCheckSumAnsi("AB", 2), 197.0);
    EXPECT_EQ(TqCharMapper::getCheckSumAnsi("\xFF", 1), -1.0);
    EXPECT_EQ(TqCharMapper::getCheckSumAnsi("AB", INT_MIN), 0.0);
    EXPECT_EQ(TqCharMapper::getCheckSumUnicode(L"AB", -1), 0.0);
    EXPECT_EQ(TqCharMapper::getCheckSumAnsi(nullptr, 3), 0.0);
    const std::int32_t wraps[] = {INT32_MIN, INT32_MAX, 0x40000000, -1};
    EXPECT_EQ(TqCharMapper::getCheckSumUnicode(wraps, 4), -2147483648.0 - 2.0 - 1073741824.0 - 4.0);
    char unaligned[9] = {0, 1, 0, 0, 0, 2, 0, 0, 0};
    EXPECT_EQ(TqCharMapper::getCheckSumUnicode(unaligned + 1, 2), 5.0);
}

// Longer than the sum of so many products can be exact in a double: the order and the rounding of the additions show.
TEST(CheckSum, LongTextsAddDoublesInOrder) {
    std::vector<std::int32_t> units((std::size_t{1} << 23) + 5);
    double expected = 0.0;
    for (std::size_t i = 0; i < units.size(); ++i) {
        // Products close to the largest, and odd for every other unit, so that the sum passes 2^53 and is rounded then.
        const auto weight = static_cast<std::int64_t>(i + 1);
        const std::int64_t unit = ((INT32_MAX - weight % 1000) / weight - 1) | 1;
        units[i] = static_cast<std::int32_t>(unit);
        expected += static_cast<double>(unit * weight);
    }
    EXPECT_EQ(TqCharMapper::getCheckSumUnicode(units.data(), static_cast<int>(units.size())), expected);
}

} // namespace
