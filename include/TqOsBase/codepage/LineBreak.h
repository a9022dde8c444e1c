#pragma once

/// \file
/// The classes of the line breaking algorithm, by number.

/// The line-break classes of LmCodePage::LineBreakClass, those of the Unicode line breaking algorithm (UAX #14) in the
/// numbers that the pair table and the callers' own tables use.
enum TqLineBreakClass : int {
    kLineBreakOP = 0,  ///< Opening punctuation.
    kLineBreakCL = 1,  ///< Closing punctuation.
    kLineBreakQU = 2,  ///< Quotation mark.
    kLineBreakGL = 3,  ///< Glue: no break around it.
    kLineBreakNS = 4,  ///< Does not begin a line.
    kLineBreakEX = 5,  ///< Exclamation and question mark.
    kLineBreakSY = 6,  ///< Solidus.
    kLineBreakIS = 7,  ///< Separator inside numbers.
    kLineBreakPR = 8,  ///< Prefix of numbers.
    kLineBreakPO = 9,  ///< Postfix of numbers.
    kLineBreakNU = 10, ///< Digit.
    kLineBreakAL = 11, ///< Letter; also characters that are ambiguous by East Asian width.
    kLineBreakID = 12, ///< Ideograph; also Hangul syllables and jamo, which have no classes of their own.
    kLineBreakIN = 13, ///< Inseparable, such as leaders.
    kLineBreakHY = 14, ///< Hyphen-minus.
    kLineBreakBA = 15, ///< Break after it.
    kLineBreakBB = 16, ///< Break before it.
    kLineBreakB2 = 17, ///< Break before and after it.
    kLineBreakZW = 18, ///< Zero width space.
    kLineBreakCM = 19, ///< Combining mark; also control characters.
    kLineBreakWJ = 20, ///< Word joiner; the last class that the pair table knows.
    kLineBreakCR = 21, ///< Carriage return.
    kLineBreakLF = 22, ///< Line feed.
    kLineBreakNL = 23, ///< Next line.
    kLineBreakCB = 24, ///< Contingent break.
    kLineBreakXX = 25, ///< Private use, or unassigned in the version that the tables follow.
    kLineBreakSP = 26, ///< Space.
    kLineBreakBK = 27, ///< Mandatory break.
    kLineBreakSA = 28, ///< South East Asian script, which breaks by dictionary.
};

/// What the pair table says about the place between two characters.
enum TqLineBreakAction : int {
    kBreakDirect = 0,            ///< May break.
    kBreakIndirect = 1,          ///< May break if there are spaces between the two.
    kBreakCombiningIndirect = 2, ///< A combining mark follows: it belongs to the character before it, or to the spaces.
    kBreakProhibited = 3,        ///< Never breaks, not even with spaces between.
};

/// The classes that the pair table has rows and columns for: kLineBreakOP to kLineBreakWJ.
inline constexpr int kPairTableClasses = kLineBreakWJ + 1;
