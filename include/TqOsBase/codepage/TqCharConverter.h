#pragma once

/// \file
/// The escapes of East Asian double-byte characters, read.

#include <TqOsBase/Export.h>
#include <TqOsBase/codepage/CodePageId.h>

/// Reader of the MIF escape, the form in which narrow text carries a character of an East Asian double-byte code page.
class TQ_API TqCharConverter {
public:
    /// Reads the escape `\M+nXXXX` at `p`: a backslash, M in either case, a plus sign, a code page digit 0 to 5 and
    /// four hexadecimal digits in either case. Stores the number that the four digits give (0 to 0xFFFF) and the code
    /// page that the digit names, as mapCodepage does, and returns true; what follows does not matter. Returns false
    /// with both outputs unchanged when `p` is null or the text is anything else. Reads ascending and stops at the
    /// first byte that does not fit, so never past a terminator. Only the instance for `unsigned char const` is
    /// exported.
    template <typename Char>
    static bool parseMIFString(Char* p, wchar_t& value, code_page_id& codePage);
};

extern template TQ_API bool TqCharConverter::parseMIFString<unsigned char const>(unsigned char const* p, wchar_t& value,
                                                                                 code_page_id& codePage);
