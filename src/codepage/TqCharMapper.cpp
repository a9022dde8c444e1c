#include "codepage/EastAsianScripts.h"
#include "codepage/Escapes.h"

#include <TqOsBase/codepage/LmCodePage.h>
#include <TqOsBase/codepage/TqCharMapper.h>
#include <TqOsBase/codepage/TqCodePageMapper.h>

#include <cstdint>

using namespace tq::detail;

namespace {

constexpr int kAnsiCharSet = 0;
constexpr int kDefaultCharSet = 1;

// Bit i stands for identifier 22 + i.
constexpr std::uint32_t kDoubleByteIds = 0x1F021D;

} // namespace

bool TqCharMapper::unicodeToCodepage(wchar_t ch, code_page_id, wchar_t& out, bool) {
    if (signedCodeOf(ch) <= kHighestAscii)
        out = ch;
    return false;
}

bool TqCharMapper::codepageToUnicode(wchar_t ch, code_page_id, wchar_t& out) {
    if (signedCodeOf(ch) > kHighestAscii)
        return false;
    out = ch;
    return true;
}

bool TqCharMapper::codepageToUnicode(wchar_t ch, unsigned int, code_page_id id, wchar_t& out) {
    return codepageToUnicode(ch, id, out);
}

bool TqCharMapper::isLeadByte(unsigned char, code_page_id) {
    return false;
}

code_page_id TqCharMapper::getCodepageByCharset(unsigned short charset) {
    const int codePage = LmCodePage::CharSetToCodePage(charset);
    return codePage == 0 ? kCodePageUndefined : TqCodePageMapper::ansiCpToLumoCp(codePage);
}

int TqCharMapper::getCharSetByCodepageId(code_page_id id) {
    if (id == kCodePageWestern)
        return kAnsiCharSet;
    if (id < kCodePageCentralEuropean || id > kCodePageVietnamese)
        return kDefaultCharSet;
    const int charSet = LmCodePage::CodePageToCharSet(static_cast<unsigned>(TqCodePageMapper::lumoCpToAnsiCp(id)));
    return charSet == 0 ? kDefaultCharSet : charSet;
}

code_page_id mapCodepage(short digit) {
    const auto character = static_cast<unsigned char>(digit);
    if (character == '0')
        return TqCodePageMapper::ansiCpToLumoCp(TqCodePageMapper::currentSystemAnsiCp());
    const EastAsianScript* script = scriptOfIndex(character - '0');
    return script != nullptr ? script->id : kCodePageUndefined;
}

wchar_t reMapCodepage(code_page_id id) {
    switch (id) {
    case kCodePageDosJapanese:
    case kCodePageJapanese:
        return L'1';
    case kCodePageMacTraditionalChinese:
    case kCodePageTraditionalChinese:
        return L'2';
    case kCodePageDosKorean:
    case kCodePageKorean:
        return L'3';
    case kCodePageDosJohab:
    case kCodePageJohab:
        return L'4';
    case kCodePageGb2312:
    case kCodePageSimplifiedChinese:
        return L'5';
    default:
        return L'0';
    }
}

bool IsMultiByteCodePage(code_page_id id) {
    return id >= kCodePageDosJapanese && id <= kCodePageJohab &&
           ((kDoubleByteIds >> (id - kCodePageDosJapanese)) & 1) != 0;
}

bool isAsianCodepage(code_page_id id) {
    return IsMultiByteCodePage(id);
}
