
#include "codepage/CharSetLanguage.h"
#include "codepage/LineBreakTable.h"
#include "codepage/UnicodeClassTable.h"
#include "platform/StaticInit.h"
#include "reference/Testing.h"

namespace {

using reference::Checksum;
using reference::checksum;

code_page_id idOf(int value) {
    return static_cast<code_page_id>(value);
}

// The sum of what a function gives for all numbers from the first to the last one.
using Sum = std::pair<std::uint64_t, std::function<std::int64_t(int)>>;

void expectSums(int first, int last, std::initializer_list<Sum> sums) {
    for (const Sum& row : sums)
        EXPECT_EQ(checksum(first, last, row.second), row.first) << "row " << &row - sums.begin();
}

TEST(LmCodePage, CharSetsCodePagesAndIndices) {
    using Pages = LmCodePage;
    expectSums(-300, 1400,
               {{0x597DF5CBB2DD5E04, Pages::CharSetToCodePage},
                {0x9D31F55E676BE45A, Pages::CharSetToCodePageIndex},
                {0xFC2C56682936CE3A, Pages::CharSetIsDoubleByte},
                {0x97E5ABF4B1AE9AD6, Pages::CharSetToLCID},
                {0x97E5ABF4B1AE9AD6, Pages::CharSetToLanguage},
                {0xB5F0DC4C2AF4474B, Pages::CodePageToCharSet},
                {0x39164BD8266748D4, Pages::CodePageToLanguage},
                {0xBE2AE9492FAA80F6, Pages::CodePageToCodePageIndex},
                {0x9EA76A5AC8D76A39, Pages::CodePageIsDoubleByte},
                {0x9292D5759E41771E, Pages::CodePageIndexToCharSet},
                {0xA77E9FA8453B7EB0, Pages::CodePageIndexToCodePage},
                {0xC14E8C8551C03AE6, Pages::CodePageIndexToLCID},
                {0xC14E8C8551C03AE6, Pages::CodePageIndexToLanguage},
                {0xF203914D4D988ED8, Pages::CodePageEntry}});
    const auto charSetOf = [](int i) { return TqCharMapper::getCharSetByCodepageId(idOf(i)); };
    const auto idOfCharSet = [](int i) { return TqCharMapper::getCodepageByCharset(static_cast<unsigned short>(i)); };
    expectSums(-300, 1400, {{0xF55EB424A4A220BF, idOfCharSet}, {0x12A90F810E7BE766, charSetOf}});
    expectSums(-3, 300, {{0x1AF6C28C3804B9FF, [](int i) { return TqCodePageMapper::lumoCpToAnsiCp(idOf(i)); }}});
    expectSums(-1, 66000, {{0x69A57BCB1240D107, TqCodePageMapper::ansiCpToLumoCp}});
    expectSums(-70, 120,
               {{0x2D70F39C1B5D7C2F, [](int i) { return IsMultiByteCodePage(idOf(i)); }},
                {0x2D70F39C1B5D7C2F, [](int i) { return isAsianCodepage(idOf(i)); }},
                {0xA99C649CE88073ED, [](int i) { return reMapCodepage(idOf(i)); }}});
    expectSums(SHRT_MIN, SHRT_MAX, {{0x089691B573B09325, [](int i) { return mapCodepage(static_cast<short>(i)); }}});
    EXPECT_EQ(Pages::CodePageIndexToCharSet(INT_MIN) + Pages::CodePageIndexToCharSet(INT_MAX), 0);
    EXPECT_TRUE(Pages::CharSetToCodePage(128) == 932 && TqCharMapper::getCharSetByCodepageId(idOf(INT_MIN)) == 1);
    EXPECT_EQ(TqCodePageMapper::lumoCpToAnsiCp(idOf(INT_MIN)) + TqCodePageMapper::lumoCpToAnsiCp(idOf(INT_MAX)), 6);
    EXPECT_EQ(TqCodePageMapper::ansiCpToLumoCp(949), kCodePageKorean) << "not the DOS one";
    EXPECT_EQ(Pages::CodePageCount() + TqCodePageMapper::currentSystemAnsiCp(), 14);
    // A reserved charset is that of the system's language; that of Bengali, 256, has no language: the system's own.
    const std::tuple<int, int, int> reserved[] = {{239, 0x0411, 0x0411}, {255, 0x0809, 0x0409}, {250, 0x0439, 0x0446},
                                                  {250, 0x0446, 0x0447}, {250, 0x0445, 0x0445}, {238, 0x0411, 0x0405},
                                                  {1, 0x0411, 0x0411}};
    for (const auto& [charSet, system, lcid] : reserved)
        EXPECT_EQ(tq::detail::lcidOfCharSet(charSet, static_cast<std::uint16_t>(system)), lcid) << charSet;
}

TEST(LmCodePage, Languages) {
    using Pages = LmCodePage;
    EXPECT_EQ(checksum(0, 0xFFFF, Pages::LanguageToCharSet), 0x4BE745AA17C6AB82U);
    for (int lcid = 0; lcid <= 0xFFFF; ++lcid) {
        const int charSet = Pages::LanguageToCharSet(lcid);
        const auto language = static_cast<unsigned short>(lcid);
        ASSERT_TRUE(Pages::LCIDToCharSet(language) == charSet && Pages::LCIDToCharSet(language | 0x10000U) == 1)
            << lcid;
        ASSERT_EQ(Pages::LanguageToCodePage(language), Pages::CharSetToCodePage(charSet));
        ASSERT_EQ(Pages::LanguageToCodePageIndex(static_cast<short>(lcid)), Pages::CharSetToCodePageIndex(charSet));
        ASSERT_EQ(Pages::LanguageIsDoubleByte(language), Pages::CharSetIsDoubleByte(charSet));
        ASSERT_EQ(Pages::LanguageIsRtoL(lcid | 0x10000), lcid % 0x400 == 1 || lcid % 0x400 == 13) << lcid;
    }
    EXPECT_TRUE(Pages::LanguageToCharSet(-1) == 1 && Pages::LanguageToCharSet(0x0C1A) == 204) << "Serbian in Cyrillic";
    EXPECT_EQ(Pages::SysCodePage() + static_cast<int>(Pages::SysDefaultLCID()), 0);
}

// The first language's charset where it has the character, else the second's, else the first charset that has it.
TEST(LmCodePage, CharSetFromUnicode) {
    using namespace tq::detail;
    EXPECT_EQ(checksum(0, 0x20000, [](int c) { return unicodeClass(static_cast<wchar_t>(c)); }), 0x23414BEDB61D9E81U);
    EXPECT_EQ(unicodeClass(static_cast<wchar_t>(INT_MIN)) + unicodeClass(static_cast<wchar_t>(-1)), 0);
    EXPECT_EQ(checksum(0, 32, charSetsOfClass), 0x6EB64D240DA9E074U);
    Checksum sum;
    for (int c = 0; c <= 0xFFFF; c += 0x40)
        for (unsigned short first = 0x0400; first < 0x0460; ++first)
            for (unsigned short second = 0x0400; second < 0x0460; second += 7)
                sum.add(LmCodePage::CharSetFromUnicode(static_cast<wchar_t>(c), first, second));
    EXPECT_TRUE(sum.sum() == 0x68EB8C1FF68460EFU && LmCodePage::CharSetFromUnicode(L'\u4E00', 0x0409, 0x0804) == 134);
    EXPECT_EQ(LmCodePage::LanguageFromUnicode(L'\u4E00', 0x0409, 0x0804), 0x0804U);
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
    EXPECT_TRUE(slotOf(0xE800) == std::pair(0x1140, 950) && slotOf(0xFFFFE801) == std::pair(0x7140, 932));
    LmCodePage::InitUserDefinedDBCSArray();
    for (int code = 1; code <= 256; ++code)
        ASSERT_TRUE(give(code * 3, code));
    EXPECT_FALSE(give(1, 932) || give(0, 932)) << "no free slot left";
    EXPECT_TRUE(give(256 * 3, 932));
    for (int slot = 0; slot < 256; ++slot)
        EXPECT_EQ(slotOf(0xE800U + static_cast<unsigned>(slot)), std::pair(slot * 3 + 3, slot < 255 ? slot + 1 : 932));
    LmCodePage::InitUserDefinedDBCSArray();
    EXPECT_EQ(slotOf(0xE8FF), std::pair(0, 0));
    for (const unsigned u : {0U, 0xE7FFU, 0xE900U, 0xFFFFE900U, 0x100E8U})
        EXPECT_EQ(slotOf(u), std::pair(-7, -7));
}

TEST(LineBreaks, ClassesOfUnicode4AndThePairTable) {
    const unsigned char* const pairs = LmCodePage::s_ptrAnalyzeLineBreak;
    ASSERT_EQ(pairs, LmCodePage::s_arrFullAnalyzeLineBreak);
    expectSums(0, 0x10FFFF, {{0x48F4BF55EAC7334D, LmCodePage::LineBreakClass}});
    expectSums(0, 447, {{0x50FC3B0AA8EDB5AA, [=](int i) { return pairs[i]; }}});
    for (const int c : {-1, 0x110000, INT_MIN, INT_MAX})
        EXPECT_EQ(LmCodePage::LineBreakClass(static_cast<wchar_t>(c)), kLineBreakID) << c;
    EXPECT_EQ(LmCodePage::LineBreakClass(L'\u3041'), kLineBreakNS);
    EXPECT_EQ(pairs[kLineBreakPR * kPairTableClasses + kLineBreakNU], kBreakIndirect);
    Checksum rows;
    for (const auto& row : tq::detail::s_HighPartBreakClass)
        for (const std::int32_t number : {row.last, row.lineBreakClass, row.next})
            rows.add(number);
    EXPECT_EQ(rows.sum(), 0x334A7F3AA750CFDBU);
    int classes[] = {kLineBreakAL, kLineBreakSP};
    int breaks[] = {-7, -7};
    EXPECT_TRUE(LmCodePage::AnalyzeLineBreaks(classes, breaks, 2) == 0 && breaks[0] + breaks[1] == -14);
}

TEST(MifEscapes, ExactlyTheEscape) {
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
    for (const int c : {0x41, 0, 127, -5, INT_MIN, 128, 0xE9, 0x4E2D, INT_MAX})
        for (const int page : {0, 38, -1}) {
            const auto ch = static_cast<wchar_t>(c);
            wchar_t out[] = {L'#', L'#', L'#'};
            EXPECT_FALSE(TqCharMapper::unicodeToCodepage(ch, idOf(page), out[0], true)) << "even when it stored";
            EXPECT_EQ(TqCharMapper::codepageToUnicode(ch, idOf(page), out[1]), c <= 127);
            EXPECT_EQ(TqCharMapper::codepageToUnicode(ch, 9U, idOf(page), out[2]), c <= 127);
            EXPECT_EQ(std::wstring(out, 3), std::wstring(3, c <= 127 ? ch : L'#'));
            EXPECT_FALSE(TqCharMapper::isLeadByte(static_cast<unsigned char>(c), idOf(page)));
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
    // Odd products close to the largest, so many that their sum passes 2^53 and is rounded: the order of additions
    // shows.
    std::vector<std::int32_t> units;
    double expected = 0.0;
    for (std::int64_t weight = 1; weight <= (1 << 23) + 5; ++weight) {
        const std::int64_t unit = ((INT32_MAX - weight % 1000) / weight - 1) | 1;
        units.push_back(static_cast<std::int32_t>(unit));
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
    const auto expectComplete = [](const TqCharCategory& category) {
        const std::uint64_t sums[] = {0xD3323EF172F2B473, 0xA54E742913B4534E, 0x6A53526EC95F97E7, 0xC4671B1E08A991C7,
                                      0xB5ED157D84E879FC};
        for (std::size_t i = 0; i < 5; ++i) {
            const Puncts& list = (category.*kLists[i])();
            const auto last = static_cast<int>(list.size()) - 1;
            EXPECT_EQ(checksum(0, last, [&](int k) { return list[static_cast<std::size_t>(k)]; }), sums[i]) << i;
        }
    };
    EXPECT_EQ(g_earlyReader.puncts, TqCharCategory::s_instance.allPuncts());
    expectComplete(TqCharCategory::s_instance);
    TqCharCategory category;
    for (const std::size_t size : {std::size_t{0}, std::size_t{3}, std::size_t{200}}) {
        expectComplete(category);
        for (std::size_t i = 0; i < 4; ++i)
            const_cast<Puncts&>((category.*kLists[i])()).assign(size, L'x');
        category.initLeftPuncts();
        category.initRightPuncts();
        category.initNormalPuncts();
        category.initQuotationPuncts();
    }
    expectComplete(category);
    auto& shared = const_cast<wchar_t&>(TqCharCategory::s_instance.allPuncts().front());
    const wchar_t before = std::exchange(shared, L'x');
    const TqCharCategory taken = std::move(category);
    EXPECT_TRUE(category.allPuncts().empty()) << "what was moved from holds nothing";
    EXPECT_EQ(std::exchange(shared, before), L'x') << "and writes nothing to the shared lists";
}

} // namespace
