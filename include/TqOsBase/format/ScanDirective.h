#pragma once

#include <TqOsBase/format/Directive.h>

/// \file
/// The grammar of the input engine's directives, constexpr like that of output.

namespace tq::detail {

/// What stands between `%` and the text that follows.
struct ScanDirective {
    static constexpr unsigned kUnlimitedWidth = 65535;

    bool assign = true; ///< Not with `*`: the field is read and takes no argument.
    unsigned width = kUnlimitedWidth;
    bool widthGiven = false;
    bool isLong = false;
    bool isShort = false;
    wchar_t letter = L'\0'; ///< 0 when the format ends before it.
};

/// Reads the directive whose `%` stands before `p` and steps past its letter.
constexpr ScanDirective parseScanDirective(const wchar_t*& p) noexcept {
    ScanDirective directive;
    if (*p == L'*') {
        directive.assign = false;
        ++p;
    }
    if (isDecimalDigit(*p)) {
        directive.width = static_cast<unsigned>(readNumber(p));
        directive.widthGiven = true;
    }
    directive.isLong = *p == L'l';
    directive.isShort = *p == L'h';
    if (directive.isLong || directive.isShort)
        ++p;
    directive.letter = *p;
    if (directive.letter != L'\0')
        ++p;
    return directive;
}

} // namespace tq::detail
