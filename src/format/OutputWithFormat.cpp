#include "format/ArgumentSource.h"
#include "format/Conversions.h"
#include "format/DigitText.h"
#include "format/Directive.h"
#include "format/NumberText.h"

#include <TqOsBase/format/FormatUtil.h>
#include <TqOsBase/format/OutputWithFormat.h>

#include <algorithm>
#include <cstdint>
#include <cwchar>
#include <new>

namespace tq::detail {

namespace {

constexpr int kFillRun = 30;
// More than the text of any double.
constexpr std::size_t kMaxRendered = 250;

// The caller's buffer. Each write is refused when it would leave no place for the 0, and is whole or nothing.
class WideOutput {
public:
    WideOutput(wchar_t* begin, int capacity) : m_begin(begin), m_cursor(begin), m_last(begin + capacity - 1) {}

    // Copies up to the first character that `ends` the text, or `limit` ones; `text` is left there.
    template <class Ends>
    bool putWhile(const wchar_t*& text, std::size_t limit, Ends ends) {
        const std::size_t most = std::min(room(), limit);
        std::size_t count = 0;
        while (count < most && !ends(text[count])) {
            m_cursor[count] = text[count];
            ++count;
        }
        text += count;
        if (count != limit && !ends(*text))
            return false;
        m_cursor += count;
        return true;
    }

    // `write` writes that many characters to the place that it is given.
    template <class Write>
    bool put(std::size_t count, Write write) {
        if (count > room())
            return false;
        write(m_cursor);
        m_cursor += count;
        return true;
    }

    bool putDecimal(std::int32_t value) {
        const auto bits = static_cast<std::uint32_t>(value);
        const std::uint32_t magnitude = value < 0 ? 0 - bits : bits;
        const int digits = decimalDigits(std::uint64_t{magnitude} | 1);
        const int sign = value < 0 ? 1 : 0;
        const int length = digits + sign;
        return put(static_cast<std::size_t>(length), [=](wchar_t* out) {
            *out = L'-';
            writeDigits(out + sign, magnitude, digits);
        });
    }

    // Runs that fit stay when a later one does not.
    bool fill(wchar_t c, unsigned count) {
        while (count > 0) {
            const unsigned run = std::min<unsigned>(count, kFillRun);
            if (run > room())
                return false;
            m_cursor = std::fill_n(m_cursor, run, c);
            count -= run;
        }
        return true;
    }

    // Without the place of the 0.
    std::size_t room() const { return static_cast<std::size_t>(m_last - m_cursor); }
    wchar_t* cursor() const { return m_cursor; }
    wchar_t* terminate() {
        *m_cursor = L'\0';
        return m_cursor;
    }
    int written() const { return static_cast<int>(m_cursor - m_begin); }

private:
    wchar_t* m_begin;
    wchar_t* m_cursor;
    wchar_t* m_last;
};

unsigned shownLength(const wchar_t* text, std::size_t limit) {
    if (limit == SIZE_MAX)
        return static_cast<unsigned>(std::wcslen(text));
    return static_cast<unsigned>(std::find(text, text + limit, L'\0') - text);
}

// Writes the parts of one directive in their order, padding included; false at the first that does not fit.
class DirectiveWriter {
public:
    DirectiveWriter(WideOutput& output, const Directive& directive, unsigned width)
        : m_output(output), m_width(width), m_leftJustify(directive.leftJustify), m_zeroPad(directive.zeroPad) {}

    bool putInteger(const IntegerText& text) {
        const std::int64_t length = text.length();
        if (length >= kWorkBufferSize)
            return false;
        const auto magnitude = static_cast<unsigned>(length) - (text.negative ? 1 : 0);
        const auto write = [&text](wchar_t* out) { text.writeMagnitude(out); };
        return putSigned(text.negative ? L'-' : L'\0', magnitude, m_zeroPad ? L'0' : L' ', write);
    }

    bool putText(const Rendered& text) {
        const wchar_t pad = m_zeroPad && !text.blankPadded ? L'0' : L' ';
        const bool hasSign = text.numeric && text.length > 0 && (*text.start == L'-' || *text.start == L'+');
        // A text in place has its sign in place too.
        if (!hasSign || text.start == m_output.cursor())
            return putUnsigned(text.length, pad, [&text](wchar_t* out) { copy(text.start, text.length, out); });
        return putSigned(*text.start, text.length - 1, pad,
                         [&text](wchar_t* out) { copy(text.start + 1, text.length - 1, out); });
    }

private:
    static void copy(const wchar_t* text, unsigned length, wchar_t* out) {
        if (text != out)
            std::copy_n(text, length, out);
    }

    bool padsLeft(unsigned length) const { return m_width > length && !m_leftJustify; }

    template <class Write>
    bool putUnsigned(unsigned length, wchar_t pad, Write write) {
        if (padsLeft(length))
            return m_output.fill(pad, m_width - length) && m_output.put(length, write);
        return m_output.put(length, write) && (m_width <= length || m_output.fill(L' ', m_width - length));
    }

    // Zeros go behind the sign, blanks before it. A sign of 0 is none.
    template <class Write>
    bool putSigned(wchar_t sign, unsigned length, wchar_t pad, Write write) {
        if (sign == L'\0')
            return putUnsigned(length, pad, write);
        const auto writeSign = [sign](wchar_t* out) { *out = sign; };
        if (pad == L'0' && padsLeft(length + 1)) {
            --m_width;
            return m_output.put(1, writeSign) && putUnsigned(length, pad, write);
        }
        return putUnsigned(length + 1, pad, [&](wchar_t* out) {
            *out = sign;
            write(out + 1);
        });
    }

    WideOutput& m_output;
    unsigned m_width;
    bool m_leftJustify;
    bool m_zeroPad;
};

// The text of a directive for a double, in `work`, which has `size` characters, more than kMaxRendered.
Rendered renderDouble(const Directive& directive, unsigned precision, const wchar_t*& p, ArgumentSource& arguments,
                      wchar_t* work, int size) {
    Rendered result{work, 0, true, false};
    if (isUnitLetter(directive.letter)) {
        formatQModeDoubleUtil(readQMode(p, arguments.positional()), directive.position, arguments, precision, work,
                              size, result);
    } else {
        const double value = arguments.asDouble(directive.position);
        if (directive.letter == L'f')
            result.length = static_cast<unsigned>(writeFixed(work, value, static_cast<int>(precision), directive.plus));
        else
            formatScienceDoubleUtil(value, directive.letter, precision, directive.plus, work, result.length);
    }
    const wchar_t last = result.length != 0 ? result.start[result.length - 1] : L'\0';
    // inf and nan are the only texts that end so.
    result.blankPadded = last == L'f' || last == L'n';
    return result;
}

// Writes what one directive stands for. `p` is behind its letter. False when it does not fit.
bool putDirective(WideOutput& output, const Directive& directive, const wchar_t*& p, ArgumentSource& arguments) {
    // A negative width is enormous when read without its sign.
    const auto width = static_cast<unsigned>(getIntFromFormatStrOrValist(directive.width, arguments));
    const int precision = std::max(getIntFromFormatStrOrValist(directive.precision, arguments), 0);
    DirectiveWriter writer(output, directive, width);
    const int number = directive.position;
    switch (parameterType(directive.letter)) {
    case kParameterInt:
    case kParameterUnsigned:
    case kParameterInt64:
        return writer.putInteger(
            formatLongUtil(directive.letter, number, arguments, directive.hasPrecision, precision));
    case kParameterString: {
        const wchar_t* text = arguments.asString(number);
        if (text == nullptr)
            text = L"";
        const std::size_t limit = directive.hasPrecision ? static_cast<std::size_t>(precision) : SIZE_MAX;
        if (width == 0)
            return output.putWhile(text, limit, [](wchar_t c) { return c == L'\0'; });
        return writer.putText({text, shownLength(text, limit), false, false});
    }
    case kParameterDouble: {
        // In place where nothing will have to stand in front.
        wchar_t work[kWorkBufferSize];
        const bool inPlace = (width == 0 || directive.leftJustify) && output.room() >= kMaxRendered;
        const std::size_t size = inPlace ? std::min<std::size_t>(output.room() + 1, kWorkBufferSize) : kWorkBufferSize;
        return writer.putText(renderDouble(directive, static_cast<unsigned>(precision), p, arguments,
                                           inPlace ? output.cursor() : work, static_cast<int>(size)));
    }
    default: {
        const bool isCharacter = directive.letter == L'c';
        const wchar_t c = isCharacter ? static_cast<wchar_t>(arguments.asInt(number)) : directive.letter;
        return writer.putText({&c, 1, false, false});
    }
    }
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

    try {
        for (const wchar_t* p = format;;) {
            if (!output.putWhile(p, SIZE_MAX, [](wchar_t c) { return c == L'%' || c == L'\0'; }))
                return finish(0);
            if (*p == L'\0')
                return finish(output.written());
            ++p;
            const Directive directive = parseDirective(p, arguments.positional());
            if (directive.letter == L'\0')
                return finish(output.written());
            const bool isPlain = directive.isBare && directive.letter == L'd';
            if (!(isPlain ? output.putDecimal(arguments.asInt(directive.position))
                          : putDirective(output, directive, p, arguments)))
                return finish(-1);
        }
    } catch (const std::bad_alloc&) {
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
    if (out == nullptr || *out == nullptr || src == nullptr || capacity < 1)
        return -1;
    const bool fits = count < static_cast<unsigned>(capacity);
    if (fits) {
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
