#pragma once

#include "Report.h"

#include <TqOsBase/containers/TqVector.h>

#include <string>
#include <string_view>

/// Converts drawing text between its escaped narrow form and UTF-8, a line (or a piece of a very long line) at a time.
/// Every piece stands before a byte that ends it: a 0 or the next byte of the text; pieces never end inside an
/// escape or a UTF-8 sequence. Bytes of value 0 pass through.
class Conversion {
public:
    enum class Direction { kToUtf8, kToEscaped };

    Conversion(Direction direction, Report& report) : m_direction(direction), m_report(report) {}

    /// The converted piece, valid until the next call. Counts what it meets, and converts back to compare.
    const std::string& convert(std::string_view piece);
    /// Whether every piece so far came out the same when it was converted back.
    bool sameBack() const { return m_sameBack; }

private:
    void toUtf8(std::string_view piece, std::string& out, Report* report);
    void toEscaped(std::string_view piece, std::string& out, Report* report);
    void appendDecoded(std::string_view escaped, std::string& out);
    void appendEncoded(std::string_view utf8, std::string& out);
    void appendEscape(char32_t character, std::string& out);
    void countEscaped(std::string_view escaped);

    Direction m_direction;
    Report& m_report;
    bool m_sameBack = true;
    std::string m_out;
    std::string m_back;
    TqVector<wchar_t> m_wide;
    TqVector<char> m_narrow;
};

/// How many bytes at the end of `text`, the beginning of a longer line, must wait for what follows: those of an escape
/// or a UTF-8 sequence that may not be complete.
std::size_t incompleteTail(std::string_view text);
