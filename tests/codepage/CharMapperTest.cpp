#include <TqOsBase/codepage/TqCharConverter.h>
#include <TqOsBase/codepage/TqCharMapper.h>
#include <TqOsBase/codepage/TqCodePageMapper.h>

#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>
#include <type_traits>

static_assert(std::is_same_v<std::underlying_type_t<code_page_id>, std::int32_t>);

namespace {

code_page_id id(int value) {
    return static_cast<code_page_id>(value);
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
    for (int codePage = -1; codePage <= 66000; ++codePage) {
        const auto found = highest.find(codePage);
        ASSERT_EQ(TqCodePageMapper::ansiCpToLumoCp(codePage), found == highest.end() ? 0 : found->second) << codePage;
    }
    EXPECT_EQ(TqCodePageMapper::ansiCpToLumoCp(0), 43);
    EXPECT_EQ(TqCodePageMapper::ansiCpToLumoCp(932), 38);
    EXPECT_EQ(TqCodePageMapper::currentSystemAnsiCp(), 0);
}

TEST(TqCharMapper, CharSetsAndIdentifiers) {
    const std::map<int, int> idOfCharSet = {{0, 30},   {2, 30},   {128, 38}, {129, 40}, {134, 39},
                                            {136, 41}, {161, 32}, {162, 33}, {163, 44}, {177, 34},
                                            {178, 35}, {186, 36}, {204, 29}, {222, 37}, {238, 28}};
    std::map<int, int> charSetOfId;
    for (int charSet = 0; charSet <= 0xFFFF; ++charSet) {
        const auto found = idOfCharSet.find(charSet);
        const int expected = found == idOfCharSet.end() ? 0 : found->second;
        ASSERT_EQ(TqCharMapper::getCodepageByCharset(static_cast<unsigned short>(charSet)), expected) << charSet;
        if (expected != 0 && charSet != 2)
            charSetOfId[expected] = charSet;
    }
    for (int i = -3; i <= 50; ++i) {
        const auto found = charSetOfId.find(i);
        EXPECT_EQ(TqCharMapper::getCharSetByCodepageId(id(i)), found == charSetOfId.end() ? 1 : found->second) << i;
    }
    for (const int outside : kOutside)
        EXPECT_EQ(TqCharMapper::getCharSetByCodepageId(id(outside)), 1);
}

TEST(MifDigits, NameTheDoubleByteCodePages) {
    const std::set<int> doubleByte = {22, 24, 25, 26, 31, 38, 39, 40, 41, 42};
    const std::map<int, wchar_t> digits = {{22, L'1'}, {24, L'2'}, {25, L'3'}, {26, L'4'}, {31, L'5'},
                                           {38, L'1'}, {39, L'5'}, {40, L'3'}, {41, L'2'}, {42, L'4'}};
    for (int i = -70; i <= 120; ++i) {
        EXPECT_EQ(IsMultiByteCodePage(id(i)), doubleByte.count(i) != 0) << i;
        EXPECT_EQ(isAsianCodepage(id(i)), doubleByte.count(i) != 0) << i;
        EXPECT_EQ(reMapCodepage(id(i)), digits.count(i) != 0 ? digits.at(i) : L'0') << i;
    }
    const std::map<int, int> ids = {{'0', 43}, {'1', 38}, {'2', 41}, {'3', 40}, {'4', 42}, {'5', 39}};
    for (int digit = SHRT_MIN; digit <= SHRT_MAX; ++digit) {
        const auto found = ids.find(digit & 0xFF);
        ASSERT_EQ(mapCodepage(static_cast<short>(digit)), found == ids.end() ? 0 : found->second) << digit;
    }
}

TEST(TqCharMapper, SingleCharactersMapForAsciiOnly) {
    for (const int c : {0x41, 0, 127, -5, INT_MIN, 128, 0xE9, 0x4E2D, INT_MAX}) {
        const auto ch = static_cast<wchar_t>(c);
        const bool maps = c <= 127;
        for (const int page : {0, 30, 38, 45, 46, -1}) {
            wchar_t out = L'#';
            EXPECT_FALSE(TqCharMapper::unicodeToCodepage(ch, id(page), out, true)) << "even when it stored";
            EXPECT_EQ(out, maps ? ch : L'#');
            out = L'#';
            EXPECT_EQ(TqCharMapper::codepageToUnicode(ch, id(page), out), maps);
            EXPECT_EQ(out, maps ? ch : L'#');
            out = L'#';
            EXPECT_EQ(TqCharMapper::codepageToUnicode(ch, 9U, id(page), out), maps);
            EXPECT_EQ(out, maps ? ch : L'#');
            EXPECT_FALSE(TqCharMapper::isLeadByte(static_cast<unsigned char>(c), id(page)));
        }
    }
}

TEST(ParseMifString, ReadsExactlyTheEscape) {
    struct Row {
        const char* text;
        bool isEscape;
        int value;
        int codePage;
    };
    const Row rows[] = {
        {"\\M+18140", true, 0x8140, 38}, {"\\m+5b0a1", true, 0xB0A1, 39}, {"\\M+2FfEeZ", true, 0xFFEE, 41},
        {"\\M+30000", true, 0, 40},      {"\\M+4007F", true, 0x7F, 42},   {"\\M+08140", true, 0x8140, 43},
        {"\\M+68140", false, 0, 0},      {"\\M+1814G", false, 0, 0},      {"\\M+/8140", false, 0, 0},
        {"\\M-18140", false, 0, 0},      {"\\N+18140", false, 0, 0},      {"/M+18140", false, 0, 0},
        {"\\U+18140", false, 0, 0},      {"\\M+1@140", false, 0, 0},      {"\\M+1`140", false, 0, 0},
        {"\\M+1:140", false, 0, 0},      {"\\M+181\xB1", false, 0, 0},
    };
    const auto parse = [](const char* text, wchar_t& value, code_page_id& codePage) {
        return TqCharConverter::parseMIFString(reinterpret_cast<const unsigned char*>(text), value, codePage);
    };
    for (const Row& row : rows) {
        wchar_t value = L'#';
        code_page_id codePage = id(7);
        EXPECT_EQ(parse(row.text, value, codePage), row.isEscape) << row.text;
        EXPECT_EQ(value, row.isEscape ? row.value : L'#') << row.text;
        EXPECT_EQ(codePage, row.isEscape ? row.codePage : 7) << row.text;
    }
    wchar_t value = L'#';
    code_page_id codePage = id(7);
    EXPECT_FALSE(TqCharConverter::parseMIFString<unsigned char const>(nullptr, value, codePage));
    for (std::size_t length = 0; length < 8; ++length) {
        const std::string truncated("\\M+18140", length);
        EXPECT_FALSE(parse(truncated.c_str(), value, codePage)) << truncated;
    }
    EXPECT_EQ(value, L'#');
    EXPECT_EQ(codePage, 7);
}

} // namespace
