#include "fltcvt/Ieee754.h"
#include "format/ArgumentSource.h"
#include "format/IntegerText.h"
#include "format/NumberText.h"
#include "format/QModeText.h"
#include "format/TextLength.h"
#include "format/WideOutput.h"

#include <TqOsBase/format/Directive.h>
#include <TqOsBase/format/FormatUtil.h>
#include <TqOsBase/format/OutputWithFormat.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cwchar>

namespace tq::detail {

namespace {

/// The text of a directive before padding. It lies in the work buffer, or is the string argument itself.
struct Rendered {
    const wchar_t* start;
    unsigned length;
    bool numeric;     ///< zero padding goes after a sign
    bool blankPadded; ///< zero padding is done with blanks
};

/// A double with all that decides on its text.
struct ShownDouble {
    double value;
    wchar_t letter; ///< one of those for doubles
    int qMode;      ///< for drawing units, the Q mode word
    int precision;  ///< 0 or more; for drawing units the greatest length
    bool plus;      ///< a `+` before an `f`, and before the fixed form of `g`, that has no minus sign
};

/// Characters that renderDouble may write.
constexpr int kDoubleRoom = kUnitRoom;
static_assert(kUnitRoom >= kNumberRoom);

/// Writes the text to `out`, which has room for kDoubleRoom characters.
Rendered renderDouble(const ShownDouble& shown, wchar_t* out) {
    if (isUnitLetter(shown.letter)) {
        const unsigned length =
            formatQModeDoubleUtil(out, shown.value, shown.qMode, static_cast<unsigned>(shown.precision));
        // inf and nan, which a large angle becomes too, are the only texts that end so.
        const wchar_t last = length != 0 ? out[length - 1] : L'\0';
        return {out, length, length != 0, last == L'f' || last == L'n'};
    }
    const unsigned length = formatScienceDoubleUtil(shown.value, shown.letter, shown.precision, shown.plus, out);
    return {out, length, true, !isFinite(shown.value)};
}

unsigned shownLength(const wchar_t* text, bool isLimited, int limit) {
    return static_cast<unsigned>(isLimited ? std::find(text, text + std::max(limit, 0), L'\0') - text
                                           : static_cast<std::ptrdiff_t>(textLength(text)));
}

// Writes the text of one directive with its padding; false when it does not fit.
class DirectiveWriter {
public:
    DirectiveWriter(WideOutput& output, const Directive& directive, unsigned width)
        : m_output(output), m_width(width), m_flags(directive.flags) {}

    bool putInteger(IntegerText text) {
        if (text.length() >= kWorkBufferSize)
            return false;
        if (padsWithZeros()) {
            if (m_width > m_output.room() || m_width >= kWorkBufferSize) [[unlikely]]
                return putAside(*this, [text](wchar_t* out) { return renderInteger(text, out); });
            // The zeros are digits like the others.
            const int others = static_cast<int>(text.count()) - text.digits;
            text.digits = std::max(text.digits, static_cast<int>(m_width) - others);
        }
        const unsigned count = text.count();
        const auto write = [text](wchar_t* out) { text.write(out); };
        return putPadded(count, L' ', [&] { return m_output.putNumber(count, write); });
    }

    // Where nothing will stand before the number and there is room for any.
    bool takesDoubleInPlace() const { return (m_width == 0 || isLeftJustified()) && m_output.room() >= kDoubleRoom; }

    bool putDoubleAside(const ShownDouble& shown) {
        return putAside(*this, [&shown](wchar_t* out) { return renderDouble(shown, out); });
    }

    // Zeros go after a sign, blanks before it.
    bool putText(Rendered text) {
        const bool zeros = padsWithZeros() && !text.blankPadded;
        const bool hasSign = text.numeric && text.length > 0 && (*text.start == L'-' || *text.start == L'+');
        if (hasSign && zeros && m_width > text.length) {
            if (!m_output.put(text.start, 1))
                return false;
            ++text.start;
            --text.length;
            --m_width;
        }
        return putPadded(text.length, zeros ? L'0' : L' ', [&] { return m_output.put(text.start, text.length); });
    }

private:
    bool isLeftJustified() const { return (m_flags & kLeftJustify) != 0; }
    bool padsWithZeros() const { return (m_flags & (kLeftJustify | kZeroPad)) == kZeroPad; }

    static Rendered renderInteger(const IntegerText& text, wchar_t* out) {
        text.write(out);
        return {out, text.count(), true, false};
    }

    // Apart, with the writer as a copy, because it is rare and large.
    template <class Render>
    [[gnu::noinline]] static bool putAside(DirectiveWriter writer, Render render) {
        wchar_t work[kWorkBufferSize + kDigitsAtOnce];
        return writer.putText(render(work));
    }

    template <class Put>
    bool putPadded(unsigned length, wchar_t pad, Put put) {
        if (m_width <= length) [[likely]]
            return put();
        const unsigned missing = m_width - length;
        return isLeftJustified() ? put() && m_output.fill(L' ', missing) : m_output.fill(pad, missing) && put();
    }

    WideOutput& m_output;
    unsigned m_width;
    unsigned m_flags;
};

// Fetches a double and what decides on its text. False, and no argument is taken, for drawing units without a Q mode
// word.
bool fetchDouble(const Directive& directive, int precision, const wchar_t*& p, ArgumentSource& arguments,
                 ShownDouble& shown) {
    shown = {0, directive.letter, 0, precision, (directive.flags & kPlus) != 0};
    if (isUnitLetter(directive.letter)) {
        const QModeField mode = readQMode(p, arguments.positional());
        if (mode.kind == QModeField::kNone)
            return false;
        shown.qMode = mode.kind == QModeField::kWord ? mode.value : arguments.asInt(mode.value);
    }
    shown.value = arguments.asDouble(directive.position);
    return true;
}

// Writes what one directive stands for. `p` is after its letter. False when it does not fit.
bool putDirective(WideOutput& output, const Directive& directive, const wchar_t*& p, ArgumentSource& arguments) {
    // A negative width becomes an enormous one.
    const auto width = static_cast<unsigned>(getIntFromFormatStrOrValist(directive.width, arguments));
    const int precision = getIntFromFormatStrOrValist(directive.precision, arguments);
    DirectiveWriter writer(output, directive, width);
    const LetterKind& kind = *directive.kind;
    if (kind.base != 0)
        return writer.putInteger(
            formatLongUtil(kind, directive.position, arguments, (directive.flags & kHasPrecision) != 0, precision));
    wchar_t character = directive.letter;
    Rendered text{&character, 1, false, false};
    switch (kind.parameter) {
    case kParameterDouble: {
        ShownDouble shown;
        if (!fetchDouble(directive, std::max(precision, 0), p, arguments, shown)) {
            text.length = 0;
            break;
        }
        if (!writer.takesDoubleInPlace())
            return writer.putDoubleAside(shown);
        text = renderDouble(shown, output.cursor());
        break;
    }
    case kParameterString:
        text.start = arguments.asString(directive.position);
        text.length =
            text.start == nullptr ? 0 : shownLength(text.start, (directive.flags & kHasPrecision) != 0, precision);
        break;
    case kParameterCharacter:
        character = static_cast<wchar_t>(arguments.asInt(directive.position));
        break;
    default:
        break;
    }
    return writer.putText(text);
}

// The same for an integer letter right after the percent sign: no width, no precision, and the first argument where
// there are positions.
bool putLoneInteger(WideOutput& output, const LetterKind& kind, ArgumentSource& arguments) {
    const IntegerText text = formatLongUtil(kind, 1, arguments, false, 0);
    return output.putNumber(text.count(), [text](wchar_t* out) { text.write(out); });
}

} // namespace

} // namespace tq::detail

int OutputWithFormat(wchar_t** out, int capacity, const wchar_t* format, va_list args) {
    using namespace tq::detail;
    if (out == nullptr || *out == nullptr || capacity < 1)
        return -1;
    WideOutput output(*out, capacity);
    const auto finish = [&](int result) {
        *out = output.terminate();
        return result;
    };
    ArgumentSource arguments(args);
    if (format == nullptr || !arguments.collect(format, args))
        return finish(-1);

    for (const wchar_t* p = format;;) {
        if (!output.putLiteral(p))
            return finish(0);
        if (*p == L'\0')
            return finish(output.written());
        ++p;
        // "%d" takes 45 instructions less so.
        if (const LetterKind& kind = *kindOf(*p); kind.base != 0) {
            ++p;
            if (!putLoneInteger(output, kind, arguments))
                return finish(-1);
            continue;
        }
        const Directive directive = parseDirective(p, arguments.positional());
        if (directive.letter == L'\0')
            return finish(output.written());
        if (!putDirective(output, directive, p, arguments))
            return finish(-1);
    }
}

int FormatUtil::outputStringWithFormat(wchar_t* buffer, int capacity, const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    const int written = OutputWithFormat(&buffer, capacity, format, args);
    va_end(args);
    return written;
}

int FormatUtil::StringCopy(wchar_t** out, int capacity, const wchar_t* src, unsigned count) {
    if (out == nullptr || *out == nullptr || capacity < 1 || (src == nullptr && count != 0))
        return -1;
    const bool fits = count < static_cast<unsigned>(capacity);
    if (fits && count != 0) {
        std::wmemmove(*out, src, count);
        *out += count;
    }
    **out = L'\0';
    return fits ? 0 : -1;
}

int FormatUtil::fillStringWithBlankChar(wchar_t** out, int capacity, wchar_t ch, int count) {
    if (out == nullptr || *out == nullptr || capacity < 1 || count < 0)
        return -1;
    tq::detail::WideOutput output(*out, capacity);
    const bool fits = output.fill(ch, static_cast<unsigned>(count));
    *out = output.terminate();
    return fits ? 0 : -1;
}

int FormatUtil::formatLong(wchar_t* text, long value, int, int base) {
    if (text == nullptr)
        return 0;
    const bool negative = base < 0 && value < 0;
    const auto bits = static_cast<unsigned long>(value);
    const unsigned radix =
        std::clamp(base < 0 ? 0U - static_cast<unsigned>(base) : static_cast<unsigned>(base), 2U, 36U);
    const unsigned long magnitude = negative ? 0 - bits : bits;
    const int digits = tq::detail::digitsInBase(magnitude, radix);
    wchar_t* p = text;
    if (negative)
        *p++ = L'-';
    tq::detail::writeInBase(p, magnitude, digits, radix);
    p[digits] = L'\0';
    return static_cast<int>(p - text) + digits;
}
