#pragma once

/// \file
/// Case, classes and steps of characters.

#include <TqOsBase/Export.h>

/// The request for the type 1 flags: bit 0 of the info type of TqCharOp::GetStringType.
inline constexpr unsigned int kCharType1 = 0x0001;

/// @{
/// Windows character type 1 flags, as GetStringType stores them.
inline constexpr unsigned short kC1Upper = 0x0001;
inline constexpr unsigned short kC1Lower = 0x0002;
inline constexpr unsigned short kC1Digit = 0x0004;
inline constexpr unsigned short kC1Space = 0x0008;
inline constexpr unsigned short kC1Punct = 0x0010;
inline constexpr unsigned short kC1Cntrl = 0x0020;
inline constexpr unsigned short kC1Blank = 0x0040;
inline constexpr unsigned short kC1XDigit = 0x0080;
inline constexpr unsigned short kC1Alpha = 0x0100;
/// @}

/// Text functions that callers use beside the Windows ones of NlsFunctions.h.
class TQ_API TqCharOp {
public:
    /// The same as MultiByteToWideChar.
    static int tqMultiByteToWideChar(unsigned int codePage, unsigned int flags, const char* src, int srcCount,
                                     wchar_t* dst, int dstCount);

    /// Fills `dst` with dstCount zero bytes, converts the 0-terminated `src` in the current C locale into at most
    /// dstCount bytes, and returns the bytes converted plus 1 for the terminator, which is there only when it fits.
    /// Returns 0 when a character has no form in the locale (dst then holds what came before it, zeros after) or `src`
    /// is null, and writes nothing and returns 0 when dstCount is negative. A null `dst` only counts. srcCount is
    /// ignored.
    static int WideCharToMultiByteCIF(unsigned int codePage, unsigned int flags, const wchar_t* src, int srcCount,
                                      char* dst, int dstCount, unsigned int reserved);

    /// Stores the type 1 flags of `count` characters in types[0 .. count - 1] and returns true; a count of -1 means up
    /// to the terminator. Characters from 0 to 127 are classified by the ASCII table, those from 128 on by the current
    /// C locale, except that digit and hexadecimal digit are never set there; negative ones have no flag. Returns false
    /// and writes nothing when a pointer is null, bit 0 of infoType is clear (other types are not served) or no
    /// character is left to classify.
    static bool GetStringType(unsigned int infoType, const wchar_t* src, int count, unsigned short* types);
};
