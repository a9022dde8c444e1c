#include "format/ArgumentSource.h"
#include "format/Conversions.h"
#include "format/DigitText.h"
#include "format/Directive.h"
#include "format/NumberText.h"

#include <TqOsBase/format/FormatUtil.h>
#include <TqOsBase/format/OutputWithFormat.h>

#include <algorithm>
#include <cwchar>

namespace tq::detail {

namespace {

constexpr int kFillRun = 30;
// More than any text but a string or an integer with a precision, with what the writers use behind their texts.
constexpr std::size_t kMaxRendered = 250;

// The caller's buffer. Each write is refused when it would leave no place for the 0, and is whole or nothing.
class WideOutput {
public:
    WideOutput(wchar_t* begin, int capacity) : m_begin(begin), m_cursor(begin), m_last(begin + capacity - 1) {}

    bool put(const wchar_t* text, std::size_t count) {
        if (count > room())
            return false;
        // What was rendered in place already stands there.
        if (text != m_cursor)
            std::copy_n(text, count, m_cursor);
        m_cursor += count;
        return true;
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

// An integer with a precision may be longer, and uses all of the work buffer.
bool mayOutgrow(const Directive& directive) {
    return directive.hasPrecision && directive.letter != L'f' && directive.letter != L'e' &&
           !isUnitLetter(directive.letter);
}

unsigned shownLength(const wchar_t* text, bool limited, unsigned limit) {
    return static_cast<unsigned>(limited ? std::find(text, text + limit, L'\0') - text : std::wcslen(text));
}

// The text of one directive, in `work`, which has room for any text but a string or an integer with a precision. False
// when one of the latter outgrows kWorkBufferSize.
bool render(const Directive& directive, unsigned precision, const wchar_t*& p, ArgumentSource& arguments, wchar_t* work,
            Rendered& result) {
    const int number = directive.position;
    result = {work, 1, false, false};
    switch (parameterType(directive.letter)) {
    case kParameterInt:
    case kParameterUnsigned:
    case kParameterInt64:
        return formatLongUtil(directive.letter, number, arguments, directive.hasPrecision, precision, work,
                              kWorkBufferSize, result);
    case kParameterCharacter:
        work[0] = static_cast<wchar_t>(arguments.asInt(number));
        return true;
    case kParameterString: {
        const wchar_t* text = arguments.asString(number);
        result.start = text;
        result.length = text != nullptr ? shownLength(text, directive.hasPrecision, precision) : 0;
        return true;
    }
    case kParameterDouble: {
        if (isUnitLetter(directive.letter)) {
            formatQModeDoubleUtil(readQMode(p, arguments.positional()), number, arguments, precision, work,
                                  kWorkBufferSize, result);
        } else {
            const double value = arguments.asDouble(number);
            if (directive.letter == L'f') {
                const int decimals = static_cast<int>(precision);
                result.length = static_cast<unsigned>(writeFixed(work, value, decimals, directive.plus));
            } else {
                formatScienceDoubleUtil(value, directive.letter, precision, directive.plus, work, result.length);
            }
            result.numeric = true;
        }
        const wchar_t last = result.length != 0 ? result.start[result.length - 1] : L'\0';
        // inf and nan are the only texts that end so.
        result.blankPadded = last == L'f' || last == L'n';
        return true;
    }
    default:
        work[0] = directive.letter;
        return true;
    }
}

bool putPadded(WideOutput& output, const Directive& directive, unsigned width, Rendered text) {
    const bool padLeft = width > text.length && !directive.leftJustify;
    if (padLeft) {
        const wchar_t pad = directive.zeroPad && !text.blankPadded ? L'0' : L' ';
        if (pad == L'0' && text.numeric && (*text.start == L'-' || *text.start == L'+')) {
            if (!output.put(text.start, 1))
                return false;
            ++text.start;
            --text.length;
            --width;
        }
        if (!output.fill(pad, width - text.length))
            return false;
    }
    if (!output.put(text.start, text.length))
        return false;
    return padLeft || width <= text.length || output.fill(L' ', width - text.length);
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

    wchar_t work[kWorkBufferSize];
    for (const wchar_t* p = format;;) {
        const wchar_t* literal = p;
        while (*p != L'%' && *p != L'\0')
            ++p;
        if (!output.put(literal, static_cast<std::size_t>(p - literal)))
            return finish(0);
        if (*p == L'\0')
            return finish(output.written());
        ++p;
        const Directive directive = parseDirective(p, arguments.positional());
        if (directive.letter == L'\0')
            return finish(output.written());
        // A negative width is enormous when read without its sign.
        const auto width = static_cast<unsigned>(getIntFromFormatStrOrValist(directive.width, arguments));
        const int precision = getIntFromFormatStrOrValist(directive.precision, arguments);
        Rendered text{};
        // In place where nothing will have to stand in front, otherwise in the work buffer.
        const bool inPlace =
            (width == 0 || directive.leftJustify) && output.room() >= kMaxRendered && !mayOutgrow(directive);
        if (!render(directive, static_cast<unsigned>(std::max(precision, 0)), p, arguments,
                    inPlace ? output.cursor() : work, text) ||
            !putPadded(output, directive, width, text))
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
    wchar_t digits[64];
    wchar_t* const end = digits + 64;
    const wchar_t* start = tq::detail::writeBaseBackwards(end, negative ? 0 - bits : bits, radix);
    wchar_t* p = text;
    if (negative)
        *p++ = L'-';
    p = std::copy(start, static_cast<const wchar_t*>(end), p);
    *p = L'\0';
    return static_cast<int>(p - text);
}
