#pragma once

/// \file
/// Narrow text with escapes, wide text and UTF-8, converted to each other.

#include <TqOsBase/Export.h>
#include <TqOsBase/codepage/CodePageId.h>
#include <TqOsBase/containers/TqVector.h>

class CReadUserDefBigfontIni;

/// Converts between narrow and wide text without code page tables. Narrow text is ASCII in which other characters are
/// escapes: `\U+XXXX` for a Unicode character (four hexadecimal digits, U in either case), `\M+nXXXX` for a double-byte
/// character of an East Asian code page (see TqCharConverter). The code page argument is ignored, with the one
/// exception named at multiByteToWideChar. Escapes are recognised by looking ahead regardless of the length given,
/// stopping at the first character that does not fit, so a text that ends inside an escape must be 0-terminated.
///
/// Nothing here reports an error. The vectors' lengths count the terminator; a result beyond INT_MAX elements throws
/// std::length_error and an allocation that fails std::bad_alloc, the output unchanged. A source may lie in the
/// output's own storage. A null source is taken as empty. Appending to a vector that holds elements at least doubles
/// its slots when they do not suffice, whatever its grow length; slots made for a text that needs less than half of
/// them are given back.
class TQ_API TqCharMapper {
public:
    /// Narrow to wide, appended with a terminating 0 after what `out` holds. Converts `length` bytes or up to the
    /// first 0 byte; a length of 0 or less appends the terminator only. `\U+XXXX` becomes that character (also
    /// `\U+0000`, which puts a 0 into the text, so that only the logical length tells where it ends), `\M+nXXXX` with a
    /// value of 1 to 127 that character and otherwise stays as it stands, every other byte becomes the character of its
    /// value (0x80 to 0xFF: U+0080 to U+00FF).
    static void multiByteToWideChar(code_page_id id, const char* src, int length, TqVector<wchar_t>& out);

    /// As above, flags ignored, except for kCodePageUtf8: then the 0-terminated `src`, whatever `length`, must hold
    /// exactly one well-formed UTF-8 character, which is appended without a terminator. Anything else (empty,
    /// malformed, overlong, a surrogate, above U+10FFFF, more than one) appends one question mark instead. No locale is
    /// involved.
    static void multiByteToWideChar(code_page_id id, unsigned int flags, const char* src, int length,
                                    TqVector<wchar_t>& out);

    /// Wide to narrow, appended with a terminating 0 after what `out` holds. Converts `length` characters or up to the
    /// first 0; a length of 0 or less appends the terminator only. A character above 127 becomes `\U+XXXX` with
    /// upper-case digits of its low 16 bits (U+1F600 is written `\U+F600`), any other one its low byte. Escapes in the
    /// text stay as they are. Deliberately not the inverse of the way in: byte 0xE9 comes back as `\U+00E9`.
    static void wideCharToMultiByte(code_page_id id, const wchar_t* src, int length, TqVector<char>& out);

    /// Stores `ch` when it is at most 127, compared signed. Returns false always, also when it stored.
    static bool unicodeToCodepage(wchar_t ch, code_page_id id, wchar_t& out, bool unused);

    /// Stores `ch` and returns true when it is at most 127, compared signed; otherwise false, `out` unchanged.
    static bool codepageToUnicode(wchar_t ch, code_page_id id, wchar_t& out);
    static bool codepageToUnicode(wchar_t ch, unsigned int unused, code_page_id id, wchar_t& out);

    /// Always false.
    static bool isLeadByte(unsigned char byte, code_page_id id);

    /// The identifier of a Windows font charset's code page; kCodePageUndefined for a charset that has none.
    static code_page_id getCodepageByCharset(unsigned short charset);

    /// The Windows font charset of identifiers 28 to 44; 1 (the default charset) for those in the range that have none
    /// (31, 42, 43) and for every other identifier.
    static int getCharSetByCodepageId(code_page_id id);

    /// UTF-8 to wide; replaces what `out` holds, terminator included. A length of 0 means up to the first 0 byte; a
    /// positive one deliberately also takes the byte at index `length` when it is not 0, so the source must be
    /// 0-terminated or one byte longer than said, plus the rest of a sequence that begins there; a negative one takes
    /// nothing. Sequences of two and three bytes are decoded, overlong forms and surrogates included; a four-byte lead
    /// is read as a three-byte one, and every byte that fits no sequence becomes the character of its value.
    static void utf8ToUnicode(const char* src, int length, TqVector<wchar_t>& out);

    /// Wide to UTF-8, appended after what `out` holds. A null source or a length of 0 leaves `out` untouched, without
    /// a terminator; a negative length or an empty text appends the terminator only. Otherwise converts up to the first
    /// 0, at most length + 1 characters: the one at index `length` deliberately belongs to the text. Characters above
    /// U+FFFF are dropped, surrogates are written in three bytes, negative characters as their low byte.
    static void unicodeToUtf8(const wchar_t* src, int length, TqVector<char>& out);

    /// Sum over i of (i + 1) * x[i], ascending, of `count` 32-bit characters; each product wraps to a signed 32-bit
    /// number before it is added as a double. Stored checksums depend on both. 0.0 when count is below 1 or `data`
    /// null.
    static double getCheckSumUnicode(const void* data, int count);

    /// The same over `count` bytes, read as signed.
    static double getCheckSumAnsi(const void* data, int count);

    /// The code page that text drawn with a big font is in, by the font's file name: the part after the last slash of
    /// `fontPath`, with ".shx" added when it has no full stop, is compared without regard to case with the built-in
    /// list, else asked of findCodepageByBigfontInUserDefined (see Bigfont.h, also for `reader` and what is thrown).
    /// kCodePageUndefined for a font of no known code page and for an index outside 1 to 5. Null is taken as empty.
    static code_page_id getCpByBigFont(const wchar_t* fontPath, CReadUserDefBigfontIni* reader);

    /// The same as a code page index, but deliberately different in three ways: `fontFile` is compared as it stands, no
    /// folder is stripped and no extension added, and an index of the user's definitions is returned in any range.
    static int getCpIndexByBigFont(const wchar_t* fontFile, CReadUserDefBigfontIni* reader);
};

/// The identifier that the code page digit of a MIF escape names, from the low byte of `digit`: '0' the system ANSI
/// code page (43 here), '1' 38, '2' 41, '3' 40, '4' 42, '5' 39; any other character gives kCodePageUndefined.
TQ_API code_page_id mapCodepage(short digit);

/// The MIF digit of an identifier, '1' to '5'; '0' for every one outside the double-byte set.
TQ_API wchar_t reMapCodepage(code_page_id id);

/// True for the double-byte identifiers 22, 24, 25, 26, 31 and 38 to 42.
TQ_API bool IsMultiByteCodePage(code_page_id id);

/// The same test as IsMultiByteCodePage, under another name.
TQ_API bool isAsianCodepage(code_page_id id);
