#pragma once

/// \file
/// The library's own numbers of code pages.

#include <cstdint>

/// The library's own numbering of code pages, with the Windows code page of each value (TqCodePageMapper maps between
/// them). Values outside the list are accepted everywhere and answered with each function's default.
enum code_page_id : std::int32_t {
    kCodePageUndefined = 0,
    kCodePageAscii = 1,                  ///< 20127
    kCodePageIso8859_1 = 2,              ///< 28591
    kCodePageIso8859_2 = 3,              ///< 28592
    kCodePageIso8859_3 = 4,              ///< 28593
    kCodePageIso8859_4 = 5,              ///< 28594
    kCodePageIso8859_5 = 6,              ///< 28595
    kCodePageIso8859_6 = 7,              ///< Mapped to 28586, not 28596: callers have stored it so.
    kCodePageIso8859_7 = 8,              ///< 28597
    kCodePageIso8859_8 = 9,              ///< 28598
    kCodePageIso8859_9 = 10,             ///< 28599
    kCodePageDosUnitedStates = 11,       ///< 437
    kCodePageDosLatin1 = 12,             ///< 850
    kCodePageDosLatin2 = 13,             ///< 852
    kCodePageDosCyrillic = 14,           ///< 855
    kCodePageDosTurkish = 15,            ///< 857
    kCodePageDosPortuguese = 16,         ///< 860
    kCodePageDosIcelandic = 17,          ///< 861
    kCodePageDosCanadianFrench = 18,     ///< 863
    kCodePageDosArabic = 19,             ///< 864
    kCodePageDosNordic = 20,             ///< 865
    kCodePageDosGreek = 21,              ///< 869
    kCodePageDosJapanese = 22,           ///< 932
    kCodePageMacRoman = 23,              ///< 10000
    kCodePageMacTraditionalChinese = 24, ///< 10002
    kCodePageDosKorean = 25,             ///< 949
    kCodePageDosJohab = 26,              ///< 1361
    kCodePageDosRussian = 27,            ///< 866
    kCodePageCentralEuropean = 28,       ///< 1250
    kCodePageCyrillic = 29,              ///< 1251
    kCodePageWestern = 30,               ///< 1252
    kCodePageGb2312 = 31,                ///< 20936
    kCodePageGreek = 32,                 ///< 1253
    kCodePageTurkish = 33,               ///< 1254
    kCodePageHebrew = 34,                ///< 1255
    kCodePageArabic = 35,                ///< 1256
    kCodePageBaltic = 36,                ///< 1257
    kCodePageThai = 37,                  ///< 874
    kCodePageJapanese = 38,              ///< 932, Shift-JIS
    kCodePageSimplifiedChinese = 39,     ///< 936, GBK
    kCodePageKorean = 40,                ///< 949, Wansung
    kCodePageTraditionalChinese = 41,    ///< 950, Big5
    kCodePageJohab = 42,                 ///< 1361
    kCodePageUndefinedAnsi = 43,         ///< No code page; what a system ANSI code page of 0 maps to.
    kCodePageVietnamese = 44,            ///< 1258
    kCodePageUtf8 = 45,                  ///< 65001
    kCodePageSystemAnsi = 46,            ///< A request for the system ANSI code page; has no table entry.
};
