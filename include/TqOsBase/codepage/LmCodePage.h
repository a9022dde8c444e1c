#pragma once

/// \file
/// Languages, charsets and code pages, each found from the others; line-break classes of characters.

#include <TqOsBase/Export.h>
#include <TqOsBase/codepage/LineBreak.h>
#include <TqOsBase/codepage/NlsFunctions.h>

/// Relates the four numbers that name a script: language (a Windows LCID), Windows font charset, Windows ANSI code
/// page, and code page index (0 none, 1 Japanese, 2 Traditional Chinese, 3 Korean, 4 Korean Johab, 5 Simplified
/// Chinese). Charsets 256 to 264 are the library's own for Indic scripts, which have no code page.
///
/// Nothing here fails: an unknown input gives the default named at each function, and these differ on purpose. "Looked
/// up" means in the table of 160 languages, compared as a whole 32-bit number. The system default LCID is 0 here.
/// Any thread may call anything: each slot of the user-defined table changes as a whole.
class TQ_API LmCodePage {
public:
    /// Always 14.
    static int CodePageCount();
    /// Supported code page number `index`, in the order in which they are offered; outside 0 to 13 the first, 1252.
    static int CodePageEntry(int index);

    /// 0 and 2: 1252, 128: 932, 129: 949, 134: 936, 136: 950, 161: 1253, 162: 1254, 163: 1258, 177: 1255, 178: 1256,
    /// 186: 1257, 204: 1251, 222: 874, 238: 1250; 0 for a charset without a code page (1, 130, the Indic ones).
    static int CharSetToCodePage(int charset);
    /// The inverse of CharSetToCodePage; 0 for 1252 and for any unknown code page.
    static int CodePageToCharSet(unsigned int codePage);
    /// Code page of the charset looked up; 0 for an unknown LCID or a charset without a code page.
    static int LanguageToCodePage(unsigned short lcid);
    /// The charset looked up; 1 (the default charset) for an unknown LCID.
    static int LCIDToCharSet(unsigned int lcid);
    /// The same as LCIDToCharSet.
    static int LanguageToCharSet(int lcid);

    /// The LCID that stands for a charset: 0: 0x0409, 128: 0x0411, 129: 0x0412, 134: 0x0804, 136: 0x0404, 161: 0x0408,
    /// 162: 0x041F, 163: 0x042A, 177: 0x040D, 178: 0x0401, 186: 0x0425, 204: 0x0419, 222: 0x041E, 238: 0x0405, and for
    /// 257 to 264 0x0447, 0x0449, 0x044A, 0x044B, 0x044C, 0x044E, 0x0446, 0x0448. 239 to 255 are first replaced by the
    /// charset of the system default LCID; a charset without a language (1, 2, 130, 256, negative) gives the system
    /// default LCID. Not the inverse of the lookup for Indic charsets: 257 gives 0x0447, whose charset is 258.
    static LCID CharSetToLCID(int charset);
    /// The same as CharSetToLCID.
    static LCID CharSetToLanguage(int charset);
    /// 0x0409 for 1252 and for any unknown code page.
    static LCID CodePageToLanguage(int codePage);

    /// 932, 950, 949, 936 give 1, 2, 3, 5; anything else 0.
    static int CodePageToCodePageIndex(int codePage);
    /// 128, 136, 129, 130, 134 give 1 to 5; anything else 0.
    static int CharSetToCodePageIndex(int charset);
    /// Index of the charset looked up; 0 for an unknown LCID.
    static int LanguageToCodePageIndex(short lcid);
    /// The inverse of CharSetToCodePageIndex; 0 for an index outside 1 to 5.
    static int CodePageIndexToCharSet(int index);
    /// 0 for Johab (4), which has no code page; 1252 for an index outside 1 to 5.
    static int CodePageIndexToCodePage(int index);
    /// 0x0409 for an index outside 1 to 5, the system default LCID for Johab (4).
    static LCID CodePageIndexToLCID(int index);
    /// The same as CodePageIndexToLCID.
    static LCID CodePageIndexToLanguage(int index);

    /// True for 932, 936, 949 and 950.
    static bool CodePageIsDoubleByte(int codePage);
    /// True for 128, 129, 130, 134 and 136.
    static bool CharSetIsDoubleByte(int charset);
    /// True when the charset looked up is double-byte; false for an unknown LCID.
    static bool LanguageIsDoubleByte(unsigned short lcid);
    /// True for the primary languages Arabic and Hebrew only; Farsi (0x0429) is deliberately not among them.
    static bool LanguageIsRtoL(int lcid);

    /// Low 16 bits of GetACP(), fetched again while it is 0: always 0 here.
    static int SysCodePage();
    /// Low 16 bits of GetSystemDefaultLCID(), likewise: always 0 here.
    static LCID SysDefaultLCID();

    /// The charset to show UTF-16 code unit `ch` with: that of lang1 if it can show ch or if ch belongs to no script,
    /// else that of lang2 if it can, else the first charset that can (Western, Central European, Cyrillic, Baltic,
    /// Greek, Turkish, Hebrew, Arabic, Vietnamese, Thai, 134, 129, 136, 128, Indic). A character below 0 or above
    /// U+FFFF belongs to no script; an unknown language has charset 1.
    static int CharSetFromUnicode(wchar_t ch, unsigned short lang1, unsigned short lang2);
    /// CharSetToLCID of that charset.
    static LCID LanguageFromUnicode(wchar_t ch, unsigned short lang1, unsigned short lang2);

    /// Stores the double-byte code in the slot numbered by the low byte of `u` (0 for a free slot) and returns true;
    /// false and unchanged when the low 16 bits of `u` are not 0xE800 to 0xE8FF. The bits above do not matter, so the
    /// characters that UnicodeForUserDefinedDBCS hands out are accepted.
    static bool DBCSForUserDefinedUnicode(short& dbcs, wchar_t u);
    /// Enters a double-byte code with its code page into the first slot, of 256, that is free or already holds the code
    /// (its code page is then overwritten), and stores the slot's character, which is 0xFFFFE800 for every slot: the
    /// 16-bit value 0xE800 sign-extended, deliberately not counted up. Code 0 is the mark of a free slot, so entering
    /// it leaves the slot free. Returns false and stores nothing when 256 other codes are entered.
    static bool UnicodeForUserDefinedDBCS(wchar_t& u, short dbcs, int codePage);
    /// Stores the code page of the slot numbered by the low byte of `u` (0 for a free slot) and returns true; false and
    /// unchanged when `u` is not 0xE800 to 0xE8FF.
    static bool CodepageForUserDefinedUnicode(int& codePage, short u);
    /// Frees all 256 slots, as they are when the library is loaded.
    static void InitUserDefinedDBCSArray();

    /// The line-break class (TqLineBreakClass) of a character, after Unicode 4.0. Code points unassigned there have 25
    /// below U+3200 and above that mostly the class of the next assigned one; characters beyond U+E01EF (the private
    /// planes too) and negative ones have 12.
    static int LineBreakClass(wchar_t c);
    /// Writes nothing and returns 0: the breaking itself is the caller's, who has the classes and the pair table.
    static int AnalyzeLineBreaks(int* classes, int* breaks, int count);

    /// The pair table of the line breaking algorithm of Unicode 4.0, for callers: what holds between a character of
    /// class b and, spaces apart, the next one of class a is the TqLineBreakAction at [b * 21 + a], b and a being
    /// kLineBreakOP to kLineBreakWJ. The seven bytes after the 21 rows are 0.
    static const unsigned char s_arrFullAnalyzeLineBreak[448];
    /// The first byte of that table.
    static const unsigned char* const s_ptrAnalyzeLineBreak;
};
