// The tables of code pages, charsets, languages, line breaking and punctuation, and the numbers that escapes write.

#include "codepage/CharSetLanguage.h"
#include "codepage/LineBreakTable.h"
#include "codepage/UnicodeClassTable.h"
#include "platform/StaticInit.h"
#include "reference/Checksum.h"
#include "reference/Testing.h"

#include <TqOsBase/codepage/LmCodePage.h>
#include <TqOsBase/codepage/TqCharCategory.h>
#include <TqOsBase/codepage/TqCharConverter.h>
#include <TqOsBase/codepage/TqCharMapper.h>
#include <TqOsBase/codepage/TqCodePageMapper.h>

namespace {

using reference::Checksum;
using reference::checksum;

code_page_id idOf(int value) {
    return static_cast<code_page_id>(value);
}

struct CharSet {
    int charSet, codePage, index, id, lcid;
};
const CharSet kCharSets[] = {
    {0, 1252, 0, 30, 1033},   {2, 1252, 0, 30, 0},      {128, 932, 1, 38, 1041},  {129, 949, 3, 40, 1042},
    {130, 0, 4, 0, 0},        {134, 936, 5, 39, 2052},  {136, 950, 2, 41, 1028},  {161, 1253, 0, 32, 1032},
    {162, 1254, 0, 33, 1055}, {163, 1258, 0, 44, 1066}, {177, 1255, 0, 34, 1037}, {178, 1256, 0, 35, 1025},
    {186, 1257, 0, 36, 1061}, {204, 1251, 0, 29, 1049}, {222, 874, 0, 37, 1054},  {238, 1250, 0, 28, 1029},
    {257, 0, 0, 0, 1095},     {258, 0, 0, 0, 1097},     {259, 0, 0, 0, 1098},     {260, 0, 0, 0, 1099},
    {261, 0, 0, 0, 1100},     {262, 0, 0, 0, 1102},     {263, 0, 0, 0, 1094},     {264, 0, 0, 0, 1096}};

CharSet find(int CharSet::*column, int value, const CharSet& ifNone) {
    for (const CharSet& row : kCharSets) {
        if (row.*column == value)
            return row;
    }
    return ifNone;
}

TEST(LmCodePage, CharSetsCodePagesAndIndices) {
    for (int number = -300; number <= 1400; ++number) {
        SCOPED_TRACE(number);
        const CharSet row = find(&CharSet::charSet, number, {});
        EXPECT_EQ(LmCodePage::CharSetToCodePage(number), row.codePage);
        EXPECT_EQ(LmCodePage::CharSetToCodePageIndex(number), row.index);
        EXPECT_EQ(LmCodePage::CharSetIsDoubleByte(number), row.index != 0);
        EXPECT_EQ(LmCodePage::CharSetToLCID(number), static_cast<LCID>(row.lcid));
        EXPECT_EQ(LmCodePage::CharSetToLanguage(number), static_cast<LCID>(row.lcid));
        EXPECT_EQ(TqCharMapper::getCodepageByCharset(static_cast<unsigned short>(number)), row.id);

        const CharSet page = number == 0 ? kCharSets[0] : find(&CharSet::codePage, number, kCharSets[0]);
        EXPECT_EQ(LmCodePage::CodePageToCharSet(static_cast<unsigned>(number)), page.charSet);
        EXPECT_EQ(LmCodePage::CodePageToLanguage(number), static_cast<LCID>(page.lcid));
        EXPECT_EQ(LmCodePage::CodePageToCodePageIndex(number), page.index);
        EXPECT_EQ(LmCodePage::CodePageIsDoubleByte(number), page.index != 0);

        const CharSet script = find(&CharSet::index, number, kCharSets[0]);
        EXPECT_EQ(LmCodePage::CodePageIndexToCharSet(number), script.charSet);
        EXPECT_EQ(LmCodePage::CodePageIndexToCodePage(number), script.codePage);
        EXPECT_EQ(LmCodePage::CodePageIndexToLCID(number), static_cast<LCID>(script.lcid));
        EXPECT_EQ(LmCodePage::CodePageIndexToLanguage(number), static_cast<LCID>(script.lcid));

        const CharSet none{1, 0, 0, 0, 0};
        const CharSet drawn = number == 0 ? none : find(&CharSet::id, number, none);
        EXPECT_EQ(TqCharMapper::getCharSetByCodepageId(idOf(number)), drawn.charSet);
    }
    EXPECT_EQ(LmCodePage::CodePageIndexToCharSet(INT_MIN) + LmCodePage::CodePageIndexToCharSet(INT_MAX), 0);
    EXPECT_EQ(TqCharMapper::getCharSetByCodepageId(idOf(INT_MIN)), 1);

    const int offered[] = {1252, 932, 949, 936, 950, 1255, 1256, 1253, 1254, 1258, 874, 1250, 1251, 1257};
    ASSERT_EQ(LmCodePage::CodePageCount(), 14);
    for (int i = -2; i < 20; ++i)
        EXPECT_EQ(LmCodePage::CodePageEntry(i), offered[i >= 0 && i < 14 ? i : 0]);
    // A reserved charset is that of the system's language; that of Bengali, 256, has no language: the system's own.
    const struct {
        int charSet;
        std::uint16_t system, lcid;
    } rows[] = {{239, 0x0411, 0x0411}, {255, 0x0809, 0x0409}, {250, 0x0439, 0x0446}, {250, 0x0446, 0x0447},
                {250, 0x0445, 0x0445}, {250, 0x9999, 0x9999}, {238, 0x0411, 0x0405}, {1, 0x0411, 0x0411}};
    for (const auto& row : rows)
        EXPECT_EQ(tq::detail::lcidOfCharSet(row.charSet, row.system), row.lcid) << row.charSet << " " << row.system;
}

TEST(LmCodePage, Languages) {
    EXPECT_EQ(checksum(0, 0xFFFF, LmCodePage::LanguageToCharSet), 0x4BE745AA17C6AB82U);
    for (int lcid = 0; lcid <= 0xFFFF; ++lcid) {
        const int charSet = LmCodePage::LanguageToCharSet(lcid);
        const auto language = static_cast<unsigned short>(lcid);
        ASSERT_EQ(LmCodePage::LCIDToCharSet(language), charSet);
        ASSERT_EQ(LmCodePage::LCIDToCharSet(language | 0x10000U), 1) << "all 32 bits count";
        ASSERT_EQ(LmCodePage::LanguageToCodePage(language), LmCodePage::CharSetToCodePage(charSet));
        ASSERT_EQ(LmCodePage::LanguageToCodePageIndex(static_cast<short>(lcid)),
                  LmCodePage::CharSetToCodePageIndex(charSet));
        ASSERT_EQ(LmCodePage::LanguageIsDoubleByte(language), LmCodePage::CharSetIsDoubleByte(charSet));
        ASSERT_EQ(LmCodePage::LanguageIsRtoL(lcid | 0x10000), lcid % 0x400 == 1 || lcid % 0x400 == 13) << lcid;
    }
    EXPECT_EQ(LmCodePage::LanguageToCharSet(-1), 1);
    EXPECT_EQ(LmCodePage::LanguageToCharSet(0x0C1A), 204) << "Serbian in Cyrillic";
    EXPECT_EQ(LmCodePage::SysCodePage(), 0);
    EXPECT_EQ(LmCodePage::SysDefaultLCID(), 0U);
}

// The first language's charset where it has the character, else the second's, else the first charset that has it.
TEST(LmCodePage, CharSetFromUnicode) {
    using namespace tq::detail;
    EXPECT_EQ(checksum(0, 0xFFFF, [](int c) { return unicodeClass(static_cast<wchar_t>(c)); }), 0x750FD8EFBD863CFBU);
    EXPECT_EQ(checksum(0, 32, charSetsOfClass), 0x6EB64D240DA9E074U);
    for (const int outside : {-1, 0x10000, 0x1F600, INT_MIN, INT_MAX})
        EXPECT_EQ(unicodeClass(static_cast<wchar_t>(outside)), 0);
    Checksum sum;
    for (int c = 0; c <= 0xFFFF; c += 0x40) {
        for (unsigned short first = 0x0400; first < 0x0460; ++first) {
            for (unsigned short second = 0x0400; second < 0x0460; second += 7) {
                const int charSet = LmCodePage::CharSetFromUnicode(static_cast<wchar_t>(c), first, second);
                ASSERT_EQ(LmCodePage::LanguageFromUnicode(static_cast<wchar_t>(c), first, second),
                          LmCodePage::CharSetToLCID(charSet));
                sum.add(charSet);
            }
        }
    }
    EXPECT_EQ(sum.sum(), 0x68EB8C1FF68460EFU);
    EXPECT_EQ(LmCodePage::CharSetFromUnicode(L'\u4E00', 0x0409, 0x0804), 134);
    EXPECT_EQ(LmCodePage::CharSetFromUnicode(static_cast<wchar_t>(-1), 0x0419, 0), 204);
}

TEST(LmCodePage, UserDefinedCharactersHave256Slots) {
    const auto give = [](int code, int codePage) {
        wchar_t u = L'x';
        const bool isGiven = LmCodePage::UnicodeForUserDefinedDBCS(u, static_cast<short>(code), codePage);
        EXPECT_EQ(u, isGiven ? static_cast<wchar_t>(0xFFFFE800) : L'x') << "the same for every slot";
        return isGiven;
    };
    // The code and the code page of a character; those before where it has no slot.
    const auto slotOf = [](unsigned u) {
        short code = -7;
        int codePage = -7;
        const bool isFound = LmCodePage::DBCSForUserDefinedUnicode(code, static_cast<wchar_t>(u));
        EXPECT_EQ(LmCodePage::CodepageForUserDefinedUnicode(codePage, static_cast<short>(u)), isFound) << u;
        return std::pair(static_cast<int>(code), codePage);
    };
    EXPECT_TRUE(give(0x1140, 936) && give(0x7140, 932) && give(0x1140, 950)) << "a code keeps its slot";
    EXPECT_TRUE(give(0, 949)) << "finds a free slot and leaves it free";
    EXPECT_EQ(slotOf(0xE800), std::pair(0x1140, 950));
    EXPECT_EQ(slotOf(0xFFFFE801), std::pair(0x7140, 932));
    EXPECT_EQ(slotOf(0x1E802), std::pair(0, 949));
    LmCodePage::InitUserDefinedDBCSArray();
    for (int code = 1; code <= 256; ++code)
        ASSERT_TRUE(give(code * 3, code));
    EXPECT_FALSE(give(1, 932) || give(0, 932)) << "no free slot left";
    EXPECT_TRUE(give(256 * 3, 932));
    for (int slot = 0; slot < 256; ++slot)
        EXPECT_EQ(slotOf(0xE800U + static_cast<unsigned>(slot)), std::pair(slot * 3 + 3, slot < 255 ? slot + 1 : 932));
    LmCodePage::InitUserDefinedDBCSArray();
    EXPECT_EQ(slotOf(0xE8FF), std::pair(0, 0));
    for (const unsigned u : {0U, 0xE7FFU, 0xE900U, 0xFFFFE900U, 0xFFFFE7FFU, 0x100E8U, 0x41U})
        EXPECT_EQ(slotOf(u), std::pair(-7, -7));
}

TEST(LineBreaks, ClassesOfUnicode4AndThePairTable) {
    EXPECT_EQ(checksum(0, 0x10FFFF, [](int c) { return LmCodePage::LineBreakClass(static_cast<wchar_t>(c)); }),
              0x48F4BF55EAC7334DU);
    for (const int c : {-1, 0x110000, INT_MIN, INT_MAX})
        EXPECT_EQ(LmCodePage::LineBreakClass(static_cast<wchar_t>(c)), kLineBreakID) << c;
    const std::pair<wchar_t, int> spots[] = {
        {L'(', kLineBreakOP},      {L'\u3002', kLineBreakCL}, {L'\u3041', kLineBreakNS}, {L'\U0001D7CE', kLineBreakNU},
        {L'\u4DFF', kLineBreakAL}, {L'\uFA6B', kLineBreakID}, {L'\x85', kLineBreakNL},   {L'\u0E01', kLineBreakSA}};
    for (const auto& [c, lineBreakClass] : spots)
        EXPECT_EQ(LmCodePage::LineBreakClass(c), lineBreakClass) << static_cast<int>(c);
    Checksum rows;
    for (const auto& row : tq::detail::s_HighPartBreakClass) {
        for (const std::int32_t number : {row.last, row.lineBreakClass, row.next})
            rows.add(number);
    }
    EXPECT_EQ(rows.sum(), 0x334A7F3AA750CFDBU);

    const unsigned char* const pairs = LmCodePage::s_ptrAnalyzeLineBreak;
    ASSERT_EQ(pairs, LmCodePage::s_arrFullAnalyzeLineBreak);
    EXPECT_EQ(checksum(0, 447, [=](int i) { return pairs[i]; }), 0x50FC3B0AA8EDB5AAU);
    EXPECT_EQ(pairs[kLineBreakB2 * kPairTableClasses + kLineBreakB2], kBreakProhibited);
    EXPECT_EQ(pairs[kLineBreakPR * kPairTableClasses + kLineBreakNU], kBreakIndirect);
    EXPECT_EQ(pairs[kLineBreakAL * kPairTableClasses + kLineBreakCM], kBreakCombiningIndirect);
    int classes[] = {kLineBreakAL, kLineBreakSP};
    int breaks[] = {-7, -7};
    EXPECT_EQ(LmCodePage::AnalyzeLineBreaks(classes, breaks, 2), 0);
    EXPECT_EQ(breaks[0] + breaks[1], -14);
}

TEST(TqCodePageMapper, MapsIdentifiersBothWays) {
    EXPECT_EQ(checksum(-3, 300, [](int i) { return TqCodePageMapper::lumoCpToAnsiCp(idOf(i)); }), 0x1AF6C28C3804B9FFU);
    EXPECT_EQ(checksum(-1, 66000, TqCodePageMapper::ansiCpToLumoCp), 0x69A57BCB1240D107U);
    EXPECT_EQ(TqCodePageMapper::lumoCpToAnsiCp(kCodePageKorean), 949);
    EXPECT_EQ(TqCodePageMapper::ansiCpToLumoCp(949), kCodePageKorean) << "not the DOS one";
    EXPECT_EQ(TqCodePageMapper::lumoCpToAnsiCp(idOf(INT_MIN)) + TqCodePageMapper::lumoCpToAnsiCp(idOf(INT_MAX)), 6);
    EXPECT_EQ(TqCodePageMapper::currentSystemAnsiCp(), 0);
}

TEST(MifEscapes, NumbersAndExactlyTheEscape) {
    const std::pair<int, int> doubleByte[] = {{22, '1'}, {24, '2'}, {25, '3'}, {26, '4'}, {31, '5'},
                                              {38, '1'}, {39, '5'}, {40, '3'}, {41, '2'}, {42, '4'}};
    for (int i = -70; i <= 120; ++i) {
        int digit = '0';
        for (const auto& [id, character] : doubleByte)
            digit = id == i ? character : digit;
        EXPECT_EQ(IsMultiByteCodePage(idOf(i)), digit != '0') << i;
        EXPECT_EQ(isAsianCodepage(idOf(i)), digit != '0') << i;
        EXPECT_EQ(reMapCodepage(idOf(i)), digit) << i;
    }
    const int ids[] = {43, 38, 41, 40, 42, 39};
    for (int digit = SHRT_MIN; digit <= SHRT_MAX; ++digit) {
        const int number = (digit & 0xFF) - '0';
        ASSERT_EQ(mapCodepage(static_cast<short>(digit)), number >= 0 && number <= 5 ? ids[number] : 0) << digit;
    }
    // What the fuzz target for them does not try: other digits, small letters, and null.
    const std::tuple<const char*, int, int> rows[] = {
        {"\\m+5b0a1", 0xB0A1, 39}, {"\\M+2FfEeZ", 0xFFEE, 41}, {"\\M+08140", 0x8140, 43}, {"\\M+68140", -1, 7},
        {"\\M+/8140", -1, 7},      {"\\M+1:140", -1, 7},       {"\\M+1814", -1, 7},       {nullptr, -1, 7}};
    for (const auto& [text, code, id] : rows) {
        auto value = static_cast<wchar_t>(-1);
        code_page_id page = idOf(7);
        const auto* bytes = reinterpret_cast<const unsigned char*>(text);
        EXPECT_EQ(TqCharConverter::parseMIFString(bytes, value, page), code >= 0);
        EXPECT_TRUE(value == static_cast<wchar_t>(code) && page == id) << testing::PrintToString(text);
    }
}

TEST(TqCharMapper, SingleCharactersMapForAsciiOnly) {
    for (const int c : {0x41, 0, 127, -5, INT_MIN, 128, 0xE9, 0x4E2D, INT_MAX}) {
        const auto ch = static_cast<wchar_t>(c);
        const wchar_t expected = c <= 127 ? ch : L'#';
        for (const int page : {0, 30, 38, 45, 46, -1}) {
            wchar_t out[] = {L'#', L'#', L'#'};
            EXPECT_FALSE(TqCharMapper::unicodeToCodepage(ch, idOf(page), out[0], true)) << "even when it stored";
            EXPECT_EQ(TqCharMapper::codepageToUnicode(ch, idOf(page), out[1]), c <= 127);
            EXPECT_EQ(TqCharMapper::codepageToUnicode(ch, 9U, idOf(page), out[2]), c <= 127);
            EXPECT_EQ(std::wstring(out, 3), std::wstring(3, expected));
            EXPECT_FALSE(TqCharMapper::isLeadByte(static_cast<unsigned char>(c), idOf(page)));
        }
    }
}

TEST(CheckSum, KnownSums) {
    EXPECT_TRUE(TqCharMapper::getCheckSumAnsi("AB", 2) == 197 && TqCharMapper::getCheckSumAnsi("\xFF", 1) == -1);
    EXPECT_EQ(TqCharMapper::getCheckSumAnsi("AB", INT_MIN) + TqCharMapper::getCheckSumAnsi(nullptr, 3), 0.0);
    EXPECT_EQ(TqCharMapper::getCheckSumUnicode(L"AB", -1), 0.0);
    const std::int32_t wraps[] = {INT32_MIN, INT32_MAX, 0x40000000, -1};
    EXPECT_EQ(TqCharMapper::getCheckSumUnicode(wraps, 4), -2147483648.0 - 2.0 - 1073741824.0 - 4.0);
    char unaligned[9] = {0, 1, 0, 0, 0, 2, 0, 0, 0};
    EXPECT_EQ(TqCharMapper::getCheckSumUnicode(unaligned + 1, 2), 5.0);
    // Products close to the largest, odd for every other unit, so many that their sum passes 2^53 and is rounded then:
    // the order of the additions shows.
    std::vector<std::int32_t> units((std::size_t{1} << 23) + 5);
    double expected = 0.0;
    for (std::size_t i = 0; i < units.size(); ++i) {
        const auto weight = static_cast<std::int64_t>(i + 1);
        const std::int64_t unit = ((INT32_MAX - weight % 1000) / weight - 1) | 1;
        units[i] = static_cast<std::int32_t>(unit);
        expected += static_cast<double>(unit * weight);
    }
    EXPECT_EQ(TqCharMapper::getCheckSumUnicode(units.data(), static_cast<int>(units.size())), expected);
}

using Puncts = std::vector<wchar_t>;

// Among objects of the first priority this one precedes the library's own, which are linked after it.
struct EarlyReader {
    EarlyReader() : puncts(TqCharCategory::s_instance.allPuncts()) {}
    const Puncts puncts;
};
TQ_INIT_FIRST const EarlyReader g_earlyReader;

const Puncts& (TqCharCategory::*const kLists[])() const = {
    &TqCharCategory::leftPuncts, &TqCharCategory::rightPuncts, &TqCharCategory::normalPuncts,
    &TqCharCategory::quotationPuncts, &TqCharCategory::allPuncts};

TEST(TqCharCategory, SortedListsAreWrittenAnewWhateverWasInThem) {
    const auto sum = [](const Puncts& list) {
        return checksum(0, static_cast<int>(list.size()) - 1, [&](int i) { return list[static_cast<std::size_t>(i)]; });
    };
    const auto expectComplete = [&](const TqCharCategory& category) {
        const std::uint64_t sums[] = {0xD3323EF172F2B473, 0xA54E742913B4534E, 0x6A53526EC95F97E7, 0xC4671B1E08A991C7,
                                      0xB5ED157D84E879FC};
        for (std::size_t i = 0; i < 5; ++i)
            EXPECT_EQ(sum((category.*kLists[i])()), sums[i]) << i;
        EXPECT_TRUE(category.leftPuncts().front() == L'$' && category.allPuncts().size() == 97);
    };
    EXPECT_EQ(g_earlyReader.puncts, TqCharCategory::s_instance.allPuncts());
    expectComplete(TqCharCategory::s_instance);
    for (const std::size_t size : {std::size_t{0}, std::size_t{3}, std::size_t{200}}) {
        TqCharCategory category;
        expectComplete(category);
        for (std::size_t i = 0; i < 4; ++i)
            const_cast<Puncts&>((category.*kLists[i])()).assign(size, L'x');
        category.initLeftPuncts();
        category.initRightPuncts();
        category.initNormalPuncts();
        category.initQuotationPuncts();
        expectComplete(category);
        const_cast<Puncts&>(category.allPuncts()).assign(1, L'x');
        category.initLeftPuncts();
        EXPECT_EQ(category.allPuncts(), Puncts(1, L'x'));

        auto& shared = const_cast<wchar_t&>(TqCharCategory::s_instance.allPuncts().front());
        const wchar_t before = std::exchange(shared, L'x');
        const TqCharCategory taken = std::move(category);
        EXPECT_EQ(sum(taken.rightPuncts()), 0xA54E742913B4534EU);
        EXPECT_TRUE(category.allPuncts().empty()) << "what was moved from holds nothing";
        EXPECT_EQ(std::exchange(shared, before), L'x') << "and writes nothing to the shared lists";
    }
}

} // namespace
