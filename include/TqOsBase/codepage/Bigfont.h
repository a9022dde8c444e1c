#pragma once

#include <TqOsBase/Export.h>

#include <map>
#include <string>

/// \file
/// Which East Asian code page the text drawn with a big font is in: a built-in list of well-known big font files, then
/// the user's BIGFONT.INI, then the system's language. The lookups that callers use are TqCharMapper::getCpByBigFont
/// and TqCharMapper::getCpIndexByBigFont. The user's definitions are one map for the process, which lives to its
/// very end: the destructors of static objects may look fonts up. Names are compared by folding ASCII's letters alone,
/// whatever the locale. Any thread may look fonts up and read files; a reader is called in the thread that looks up,
/// while the map is locked for all others, so it must not wait for another thread that looks fonts up, opens a file
/// exclusively or asks for the environment.

/// How the application finds and reads the user's definitions; the library only calls it. The slots are in the order
/// that callers' objects have; the caller of a lookup owns the object.
class TQ_API CReadUserDefBigfontIni {
public:
    /// Reads the file at `path` into `map`, the library's map of font file names to code page indices. ReadBigfontIni
    /// does it for the format described there.
    virtual void ReadIni(const wchar_t* path, std::map<std::wstring, int>& map) = 0;
    /// Looks for `fileName` ("BIGFONT.INI") in the support folders of the application, writes its full path into
    /// `buffer` (`capacity` characters, 1024, all 0 before), and returns whether it is there.
    virtual bool FindIniFile(wchar_t* buffer, int capacity, const wchar_t* fileName) = 0;

protected:
    ~CReadUserDefBigfontIni() = default;
};

/// Reads a big font definition file into the library's map. A line is `name.shx;number`, for example
/// `gbcbig.shx ; 5 # Simplified Chinese`: spaces are dropped wherever they stand, a number sign begins a comment, the
/// name must end in ".shx" in any case, and the number is the decimal integer at the start of what follows the
/// semicolon. Numbers are not checked, but 0 and no number at all are ignored, and so are lines without a semicolon or
/// with another extension. Of several lines for one name the last one counts. The character right after a semicolon
/// always belongs to the number, whatever it is; a tab in a name belongs to the name. Bytes stand for the characters of
/// the same value.
///
/// A file that cannot be opened, or whose path takes 512 bytes or more, changes nothing. A line of more than 511 bytes
/// ends the reading. A line that ends with its semicolon, or has fewer than four characters before it, throws
/// std::out_of_range, with the entries read before it kept.
TQ_API void ReadBigfontIni(const wchar_t* path);

/// The code page index of `fontFile` in the user's definitions, compared without regard to case in the order of the
/// names (ordered by their characters' codes, so AB.shx is found before ab.shx), else that of the system's language if
/// that is a double-byte one, else 0 (always 0 here: the system LCID is 0). The number found is returned as it is, in
/// whatever range.
///
/// With a reader, "BIGFONT.INI" is first looked for and read, once per process. As long as it is not found, every call
/// looks again; what reading it throws (see ReadBigfontIni) leaves this and every later lookup too, until the file is
/// mended. A null reader leaves the file alone.
TQ_API int findCodepageByBigfontInUserDefined(const std::wstring& fontFile, CReadUserDefBigfontIni* reader);
