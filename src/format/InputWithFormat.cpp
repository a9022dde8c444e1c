#include "base/CharacterClass.h"
#include "format/ScanFields.h"

#include <TqOsBase/format/InputWithFormat.h>
#include <TqOsBase/format/ScanDirective.h>

namespace {

using tq::detail::IntegerField;
using tq::detail::ScanDirective;
using tq::detail::StoreSize;

// The integer letters; base 1 for all others.
IntegerField integerField(const ScanDirective& directive) {
    constexpr unsigned kNoBase = 1;
    const StoreSize small = directive.isShort ? StoreSize::kShort : StoreSize::kInt;
    const StoreSize size = directive.isLong ? StoreSize::kLong : small;
    switch (directive.letter) {
    case L'd':
        return {10, false, false, size};
    case L'D':
        return {10, false, false, StoreSize::kLong};
    case L'i':
        return {0, false, false, size};
    case L'u':
        return {10, true, false, size};
    case L'o':
        return {8, false, true, size};
    case L'O':
        return {8, false, true, StoreSize::kLong};
    case L'x':
        return {16, false, true, size};
    case L'X':
        return {16, false, true, StoreSize::kLong};
    case L'b':
        return {2, false, true, size};
    case L'B':
        return {2, false, true, StoreSize::kLong};
    default:
        return {kNoBase, false, false, size};
    }
}

// Reads the field of one directive; true ends the scan.
bool scanField(const ScanDirective& directive, ScanfSourceBuf& source, tq::detail::ArgumentCursor& arguments,
               int& assigned) {
    switch (directive.letter) {
    case L'd':
    case L'D':
    case L'i':
    case L'u':
    case L'o':
    case L'O':
    case L'x':
    case L'X':
    case L'b':
    case L'B':
        source.skipSpace();
        return scanfIntegerFromBuf(integerField(directive), directive.width, source, directive.assign, arguments,
                                   assigned);
    case L'e':
    case L'f':
    case L'g':
    case L'E':
    case L'F':
    case L'G': {
        const bool isDouble = directive.isLong || directive.letter <= L'G';
        source.skipSpace();
        return scanfDoubleFromBuf(directive.width, source, directive.assign, isDouble, arguments, assigned);
    }
    case L's':
        source.skipSpace();
        return scanfStringFromBuf(directive.width, source, directive.assign, arguments, assigned);
    case L'c':
        return scanfCharFromBuf(directive.widthGiven ? directive.width : 1, source, directive.assign, arguments,
                                assigned);
    case L'n':
        if (directive.assign)
            *arguments.nextPointer<int>() = source.consumed;
        return false;
    default:
        return directive.letter == L'\0';
    }
}

bool matchOne(ScanfSourceBuf& source, wchar_t c) {
    if (source.fromStream || source.current != static_cast<std::int32_t>(c))
        return false;
    source.advance();
    return true;
}

} // namespace

int InputWithFormat(bool fromStream, const void* source, const wchar_t* format, va_list args) {
    const auto* text = static_cast<const wchar_t*>(source);
    ScanfSourceBuf buffer(text != nullptr ? text : L"", fromStream);
    tq::detail::ArgumentCursor arguments(args);
    int assigned = 0;
    bool stop = false;
    for (const wchar_t* p = format != nullptr ? format : L""; *p != L'\0' && !stop;) {
        if (tq::detail::isSpace(*p)) {
            buffer.skipSpace();
            ++p;
        } else if (*p == L'%' && p[1] != L'%') {
            ++p;
            stop = scanField(tq::detail::parseScanDirective(p), buffer, arguments, assigned);
        } else {
            stop = !matchOne(buffer, *p);
            p += *p == L'%' ? 2 : 1;
        }
    }
    // Only white space was read so far; the rest of the text may be white space too.
    if (!buffer.seenInput)
        buffer.skipSpace();
    return buffer.atEnd() && !buffer.seenInput ? -1 : assigned;
}
