#include "codepage/CharSetLanguage.h"
#include "codepage/UnicodeClassTable.h"
#include "reference/CodePageReference.h"

#include <TqOsBase/codepage/LmCodePage.h>

#include <climits>
#include <gtest/gtest.h>
#include <map>
#include <vector>

namespace {

const std::map<int, int> kCodePageOfCharSet = {{0, 1252},   {2, 1252},   {128, 932},  {129, 949},  {134, 936},
                                               {136, 950},  {161, 1253}, {162, 1254}, {163, 1258}, {177, 1255},
                                               {178, 1256}, {186, 1257}, {204, 1251}, {222, 874},  {238, 1250}};
const std::map<int, int> kIndexOfCharSet = {{128, 1}, {129, 3}, {130, 4}, {134, 5}, {136, 2}};
const std::map<int, LCID> kLcidOfCharSet = {
    {0, 1033},   {128, 1041}, {129, 1042}, {134, 2052}, {136, 1028}, {161, 1032}, {162, 1055}, {163, 1066},
    {177, 1037}, {178, 1025}, {186, 1061}, {204, 1049}, {222, 1054}, {238, 1029}, {257, 1095}, {258, 1097},
    {259, 1098}, {260, 1099}, {261, 1100}, {262, 1102}, {263, 1094}, {264, 1096}};

template <class Value>
Value valueOr(const std::map<int, Value>& map, int key, Value fallback) {
    const auto found = map.find(key);
    return found == map.end() ? fallback : found->second;
}

TEST(LmCodePage, OffersFourteenCodePages) {
    const int expected[] = {1252, 932, 949, 936, 950, 1255, 1256, 1253, 1254, 1258, 874, 1250, 1251, 1257};
    ASSERT_EQ(LmCodePage::CodePageCount(), 14);
    for (int i = 0; i < 14; ++i)
        EXPECT_EQ(LmCodePage::CodePageEntry(i), expected[i]);
    for (const int outside : {14, 1000, INT_MAX, -1, INT_MIN})
        EXPECT_EQ(LmCodePage::CodePageEntry(outside), 1252);
}

TEST(LmCodePage, CharSets) {
    for (int charSet = -300; charSet <= 600; ++charSet) {
        SCOPED_TRACE(charSet);
        EXPECT_EQ(LmCodePage::CharSetToCodePage(charSet), valueOr(kCodePageOfCharSet, charSet, 0));
        EXPECT_EQ(LmCodePage::CharSetToCodePageIndex(charSet), valueOr(kIndexOfCharSet, charSet, 0));
        EXPECT_EQ(LmCodePage::CharSetIsDoubleByte(charSet), kIndexOfCharSet.count(charSet) != 0);
        EXPECT_EQ(LmCodePage::CharSetToLCID(charSet), valueOr(kLcidOfCharSet, charSet, LCID{0}));
        EXPECT_EQ(LmCodePage::CharSetToLanguage(charSet), LmCodePage::CharSetToLCID(charSet));
    }
}

TEST(LmCodePage, CharSetsOfTheSystemFollowItsLanguage) {
    struct Row {
        int charSet;
        std::uint16_t system, lcid;
    };
    // Bengali's charset, 256, has no language: the system's own.
    const Row rows[] = {{239, 0x0411, 0x0411}, {255, 0x0809, 0x0409}, {250, 0x0439, 0x0446}, {250, 0x0446, 0x0447},
                        {250, 0x0445, 0x0445}, {250, 0x9999, 0x9999}, {238, 0x0411, 0x0405}, {1, 0x0411, 0x0411}};
    for (const Row& row : rows)
        EXPECT_EQ(tq::detail::lcidOfCharSet(row.charSet, row.system), row.lcid) << row.charSet << " " << row.system;
}

TEST(LmCodePage, CodePages) {
    std::map<int, int> charSets;
    for (const auto& [charSet, codePage] : kCodePageOfCharSet) {
        if (codePage != 1252)
            charSets[codePage] = charSet;
    }
    const std::map<int, int> indices = {{932, 1}, {950, 2}, {949, 3}, {936, 5}};
    for (int codePage = -1; codePage <= 1400; ++codePage) {
        SCOPED_TRACE(codePage);
        const int charSet = valueOr(charSets, codePage, 0);
        EXPECT_EQ(LmCodePage::CodePageToCharSet(static_cast<unsigned>(codePage)), charSet);
        EXPECT_EQ(LmCodePage::CodePageToLanguage(codePage), valueOr(kLcidOfCharSet, charSet, LCID{0}));
        EXPECT_EQ(LmCodePage::CodePageToCodePageIndex(codePage), valueOr(indices, codePage, 0));
        EXPECT_EQ(LmCodePage::CodePageIsDoubleByte(codePage), indices.count(codePage) != 0);
    }
}

TEST(LmCodePage, CodePageIndices) {
    const std::map<int, int> charSets = {{1, 128}, {2, 136}, {3, 129}, {4, 130}, {5, 134}};
    for (const int index : {1, 2, 3, 4, 5, 0, 6, -1, INT_MAX, INT_MIN}) {
        const int charSet = valueOr(charSets, index, 0);
        const LCID lcid = valueOr(kLcidOfCharSet, charSet, LCID{0});
        EXPECT_EQ(LmCodePage::CodePageIndexToCharSet(index), charSet);
        EXPECT_EQ(LmCodePage::CodePageIndexToCodePage(index), valueOr(kCodePageOfCharSet, charSet, 0));
        EXPECT_EQ(LmCodePage::CodePageIndexToLCID(index), lcid);
        EXPECT_EQ(LmCodePage::CodePageIndexToLanguage(index), lcid);
    }
}

TEST(LmCodePage, LanguagesAreLookedUpWhole) {
    std::size_t known = 0;
    for (unsigned lcid = 0; lcid <= 0xFFFF; ++lcid) {
        const auto charSet = reference::charSetOf(lcid);
        known += charSet ? 1 : 0;
        const auto shortLcid = static_cast<unsigned short>(lcid);
        ASSERT_EQ(LmCodePage::LCIDToCharSet(lcid), charSet.value_or(1)) << std::hex << lcid;
        ASSERT_EQ(LmCodePage::LanguageToCharSet(static_cast<int>(lcid)), charSet.value_or(1));
        ASSERT_EQ(LmCodePage::LCIDToCharSet(lcid | 0x10000), 1) << "all 32 bits count";
        ASSERT_EQ(LmCodePage::LanguageToCharSet(static_cast<int>(lcid | 0x10000)), 1);
        ASSERT_EQ(LmCodePage::LanguageToCodePage(shortLcid), charSet ? valueOr(kCodePageOfCharSet, *charSet, 0) : 0);
        const int index = charSet ? valueOr(kIndexOfCharSet, *charSet, 0) : 0;
        ASSERT_EQ(LmCodePage::LanguageToCodePageIndex(static_cast<short>(shortLcid)), index);
        ASSERT_EQ(LmCodePage::LanguageIsDoubleByte(shortLcid), index != 0);
    }
    EXPECT_EQ(known, 160U);
    EXPECT_EQ(LmCodePage::LanguageToCharSet(-1), 1);
}

TEST(LmCodePage, OnlyArabicAndHebrewRunRightToLeft) {
    for (const int lcid : {0x0401, 0x0C01, 0x4001, 0x040D, 1, 13, 0x1040D})
        EXPECT_TRUE(LmCodePage::LanguageIsRtoL(lcid)) << std::hex << lcid;
    for (const int lcid : {0x0429, 0x0420, 0x0409, 0x0100, 0, -1})
        EXPECT_FALSE(LmCodePage::LanguageIsRtoL(lcid)) << std::hex << lcid;
}

TEST(LmCodePage, TheSystemHasNeitherCodePageNorLanguage) {
    EXPECT_EQ(LmCodePage::SysCodePage(), 0);
    EXPECT_EQ(LmCodePage::SysDefaultLCID(), 0U);
}

TEST(UnicodeClasses, MatchTheScriptBlocksAndTheirCharSets) {
    for (int ch = 0; ch <= 0xFFFF; ++ch)
        ASSERT_EQ(tq::detail::unicodeClass(static_cast<wchar_t>(ch)), reference::classOf(ch)) << std::hex << ch;
    for (const int outside : {-1, 0x10000, 0x1F600, INT_MIN, INT_MAX})
        EXPECT_EQ(tq::detail::unicodeClass(static_cast<wchar_t>(outside)), 0);
    for (int unicodeClass = 0; unicodeClass <= 32; ++unicodeClass)
        EXPECT_EQ(tq::detail::charSetsOfClass(unicodeClass), reference::kClassMasks[unicodeClass]) << unicodeClass;
}

TEST(CharSetFromUnicode, PrefersTheFirstLanguageThenTheSecondThenTheFirstAbleCharSet) {
    // One language of each charset, and an unknown one.
    std::vector<unsigned> languages = {0x9999};
    for (const auto& row : reference::charSetLanguages())
        languages.push_back(row.lcids.front());
    // One character of each class in each block; the classes themselves are swept above.
    std::vector<int> characters = {0, 0x30, 0x2800, 0xFFFF};
    for (const auto& block : reference::scriptBlocks())
        characters.insert(characters.end(), {block.first, block.last});
    for (const int ch : characters) {
        for (const unsigned lang1 : languages) {
            for (const unsigned lang2 : languages) {
                const auto c = static_cast<wchar_t>(ch);
                const auto l1 = static_cast<unsigned short>(lang1);
                const auto l2 = static_cast<unsigned short>(lang2);
                const int expected = reference::charSetFor(reference::classOf(ch), lang1, lang2);
                ASSERT_EQ(LmCodePage::CharSetFromUnicode(c, l1, l2), expected)
                    << std::hex << ch << " " << lang1 << " " << lang2;
                ASSERT_EQ(LmCodePage::LanguageFromUnicode(c, l1, l2), valueOr(kLcidOfCharSet, expected, LCID{0}));
            }
        }
    }
    EXPECT_EQ(LmCodePage::CharSetFromUnicode(L'\u4E00', 0x0409, 0x0804), 134);
    EXPECT_EQ(LmCodePage::CharSetFromUnicode(static_cast<wchar_t>(-1), 0x0419, 0), 204);
}

constexpr auto kEverySlot = static_cast<wchar_t>(0xFFFFE800);

class UserDefinedDbcs : public testing::Test {
protected:
    void SetUp() override { LmCodePage::InitUserDefinedDBCSArray(); }
    void TearDown() override { LmCodePage::InitUserDefinedDBCSArray(); }

    // Gives a code a slot; every slot has the same character.
    static bool give(int code, int codePage) {
        wchar_t u = L'x';
        const bool isGiven = LmCodePage::UnicodeForUserDefinedDBCS(u, static_cast<short>(code), codePage);
        EXPECT_EQ(u, isGiven ? kEverySlot : L'x');
        return isGiven;
    }

    static void expectSlot(int slot, int code, int codePage) {
        for (const unsigned base : {0xE800U, 0xFFFFE800U, 0x1E800U}) {
            short dbcs = 0x5555;
            const auto u = static_cast<wchar_t>(base + static_cast<unsigned>(slot));
            EXPECT_TRUE(LmCodePage::DBCSForUserDefinedUnicode(dbcs, u));
            EXPECT_EQ(dbcs, static_cast<short>(code)) << slot;
        }
        int found = 0x5555;
        EXPECT_TRUE(LmCodePage::CodepageForUserDefinedUnicode(found, static_cast<short>(0xE800 + slot)));
        EXPECT_EQ(found, codePage) << slot;
    }
};

TEST_F(UserDefinedDbcs, SlotsAreFilledInOrderAndACodeKeepsItsSlot) {
    expectSlot(0, 0, 0);
    EXPECT_TRUE(give(0x8140, 936));
    EXPECT_TRUE(give(0x7140, 932));
    EXPECT_TRUE(give(0x8140, 950));
    EXPECT_TRUE(give(0, 949)) << "finds a free slot and leaves it free";
    expectSlot(0, 0x8140, 950);
    expectSlot(1, 0x7140, 932);
    expectSlot(2, 0, 949);
    EXPECT_TRUE(give(0x1234, 932));
    expectSlot(2, 0x1234, 932);
}

TEST_F(UserDefinedDbcs, ThereAre256AndNoMore) {
    for (int code = 1; code <= 256; ++code)
        ASSERT_TRUE(give(code * 3, code));
    for (int slot = 0; slot < 256; ++slot)
        expectSlot(slot, (slot + 1) * 3, slot + 1);
    EXPECT_FALSE(give(1, 932));
    EXPECT_FALSE(give(0, 932)) << "no free slot left";
    EXPECT_TRUE(give(256 * 3, 932));
    expectSlot(255, 256 * 3, 932);
    LmCodePage::InitUserDefinedDBCSArray();
    expectSlot(0, 0, 0);
    expectSlot(255, 0, 0);
}

TEST_F(UserDefinedDbcs, OtherCharactersHaveNoSlot) {
    for (const unsigned u : {0U, 0xE7FFU, 0xE900U, 0xFFFFE900U, 0xFFFFE7FFU, 0x100E8U, 0x41U}) {
        short dbcs = 0x5555;
        EXPECT_FALSE(LmCodePage::DBCSForUserDefinedUnicode(dbcs, static_cast<wchar_t>(u))) << std::hex << u;
        EXPECT_EQ(dbcs, 0x5555);
        int codePage = 7;
        EXPECT_FALSE(LmCodePage::CodepageForUserDefinedUnicode(codePage, static_cast<short>(u)));
        EXPECT_EQ(codePage, 7);
    }
}

} // namespace
