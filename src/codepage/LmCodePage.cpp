#include "codepage/CharSetLanguage.h"
#include "codepage/EastAsianScripts.h"
#include "codepage/LcidCharSetTable.h"
#include "codepage/UnicodeClassTable.h"

#include <TqOsBase/codepage/LmCodePage.h>

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace {

using namespace tq::detail;

constexpr int kDefaultCharSet = 1;
constexpr int kSymbolCharSet = 2;
constexpr int kWesternCodePage = 1252;

constexpr unsigned kPrimaryLanguageMask = 0x3FF;
constexpr unsigned kArabic = 1;
constexpr unsigned kHebrew = 13;

// The supported code pages, in the order in which they are offered, with their charsets.
struct CodePageCharSet {
    int codePage;
    int charSet;
};
constexpr CodePageCharSet kCodePages[] = {{1252, 0},   {932, 128},  {949, 129},  {936, 134},  {950, 136},
                                          {1255, 177}, {1256, 178}, {1253, 161}, {1254, 162}, {1258, 163},
                                          {874, 222},  {1250, 238}, {1251, 204}, {1257, 186}};

// Caches; 0 is also the mark of one not filled yet. Threads that meet here fetch the same value twice.
constinit std::atomic<std::uint32_t> s_sysCodePage = 0;
constinit std::atomic<std::uint16_t> s_sysDefaultLCID = 0;

int charSetOrDefault(std::uint32_t lcid) {
    return charSetOfLcid(lcid).value_or(kDefaultCharSet);
}

} // namespace

int LmCodePage::CodePageCount() {
    return static_cast<int>(std::size(kCodePages));
}

int LmCodePage::CodePageEntry(int index) {
    return kCodePages[index >= 0 && index < CodePageCount() ? index : 0].codePage;
}

int LmCodePage::CharSetToCodePage(int charset) {
    if (charset == kSymbolCharSet)
        return kWesternCodePage;
    for (const CodePageCharSet& row : kCodePages) {
        if (row.charSet == charset)
            return row.codePage;
    }
    return 0;
}

int LmCodePage::CodePageToCharSet(unsigned int codePage) {
    for (const CodePageCharSet& row : kCodePages) {
        if (static_cast<unsigned>(row.codePage) == codePage)
            return row.charSet;
    }
    return 0;
}

int LmCodePage::LanguageToCodePage(unsigned short lcid) {
    const auto charSet = charSetOfLcid(lcid);
    return charSet ? CharSetToCodePage(*charSet) : 0;
}

int LmCodePage::LCIDToCharSet(unsigned int lcid) {
    return charSetOrDefault(lcid);
}

int LmCodePage::LanguageToCharSet(int lcid) {
    return charSetOrDefault(static_cast<std::uint32_t>(lcid));
}

LCID LmCodePage::CharSetToLCID(int charset) {
    return lcidOfCharSet(charset, static_cast<std::uint16_t>(SysDefaultLCID()));
}

LCID LmCodePage::CharSetToLanguage(int charset) {
    return CharSetToLCID(charset);
}

LCID LmCodePage::CodePageToLanguage(int codePage) {
    return CharSetToLCID(CodePageToCharSet(static_cast<unsigned>(codePage)));
}

int LmCodePage::CodePageToCodePageIndex(int codePage) {
    return indexOfCodePage(codePage);
}

int LmCodePage::CharSetToCodePageIndex(int charset) {
    return indexOfCharSet(charset);
}

int LmCodePage::LanguageToCodePageIndex(short lcid) {
    return indexOfCharSet(charSetOrDefault(static_cast<std::uint16_t>(lcid)));
}

int LmCodePage::CodePageIndexToCharSet(int index) {
    const EastAsianScript* script = scriptOfIndex(index);
    return script != nullptr ? script->charSet : 0;
}

int LmCodePage::CodePageIndexToCodePage(int index) {
    const EastAsianScript* script = scriptOfIndex(index);
    return script != nullptr ? script->codePage : kWesternCodePage;
}

LCID LmCodePage::CodePageIndexToLCID(int index) {
    return CharSetToLCID(CodePageIndexToCharSet(index));
}

LCID LmCodePage::CodePageIndexToLanguage(int index) {
    return CodePageIndexToLCID(index);
}

bool LmCodePage::CodePageIsDoubleByte(int codePage) {
    return indexOfCodePage(codePage) != 0;
}

bool LmCodePage::CharSetIsDoubleByte(int charset) {
    return indexOfCharSet(charset) != 0;
}

bool LmCodePage::LanguageIsDoubleByte(unsigned short lcid) {
    return CharSetIsDoubleByte(charSetOrDefault(lcid));
}

bool LmCodePage::LanguageIsRtoL(int lcid) {
    const unsigned language = static_cast<unsigned>(lcid) & kPrimaryLanguageMask;
    return language == kArabic || language == kHebrew;
}

int LmCodePage::SysCodePage() {
    std::uint32_t codePage = s_sysCodePage.load(std::memory_order_relaxed);
    if (codePage == 0) {
        codePage = GetACP() & 0xFFFF;
        s_sysCodePage.store(codePage, std::memory_order_relaxed);
    }
    return static_cast<int>(codePage);
}

LCID LmCodePage::SysDefaultLCID() {
    std::uint16_t lcid = s_sysDefaultLCID.load(std::memory_order_relaxed);
    if (lcid == 0) {
        lcid = static_cast<std::uint16_t>(GetSystemDefaultLCID());
        s_sysDefaultLCID.store(lcid, std::memory_order_relaxed);
    }
    return lcid;
}

int LmCodePage::CharSetFromUnicode(wchar_t ch, unsigned short lang1, unsigned short lang2) {
    const int first = charSetOrDefault(lang1);
    std::uint32_t candidates = charSetsOfClass(unicodeClass(ch));
    if (candidates == 0)
        return first;
    const int second = charSetOrDefault(lang2);
    const int fallback = charSetOfBit(std::countr_zero(candidates));
    bool secondFits = false;
    for (; candidates != 0; candidates &= candidates - 1) {
        const int candidate = charSetOfBit(std::countr_zero(candidates));
        if (candidate == first)
            return first;
        secondFits = secondFits || candidate == second;
    }
    return secondFits ? second : fallback;
}

LCID LmCodePage::LanguageFromUnicode(wchar_t ch, unsigned short lang1, unsigned short lang2) {
    return CharSetToLCID(CharSetFromUnicode(ch, lang1, lang2));
}
