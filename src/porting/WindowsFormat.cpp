#include "porting/WindowsFormat.h"

#include <cerrno>
#include <climits>
#include <iterator>
#include <string>
#include <string_view>

namespace tq::detail {

namespace {

struct Size {
    const char* windows; // as it stands in the format
    const char* here;    // before the letters of integers; null: no size of theirs
    enum class Text { kDefault, kNarrow, kWide, kNone } text;
};

// A size stands before those that it begins with.
constexpr Size kSizes[] = {
    {"I64", "ll", Size::Text::kNone}, {"I32", "", Size::Text::kNone},    {"I", "z", Size::Text::kNone},
    {"hh", "hh", Size::Text::kNone},  {"h", "h", Size::Text::kNarrow},   {"ll", "ll", Size::Text::kNone},
    {"l", "l", Size::Text::kWide},    {"j", "j", Size::Text::kNone},     {"z", "z", Size::Text::kNone},
    {"t", "t", Size::Text::kNone},    {"w", nullptr, Size::Text::kWide}, {"L", nullptr, Size::Text::kNone},
    {"", "", Size::Text::kDefault},
};

bool isOneOf(std::string_view set, char c) {
    return c != '\0' && set.find(c) != std::string_view::npos;
}

// A character of a directive; everything that cannot stand there is the same.
template <class Char>
char plain(Char c) {
    return c > 0 && c < 0x7F ? static_cast<char>(c) : '\0';
}

// Reads one directive after its percent sign and writes it with one.
template <class Char>
class DirectiveWriter {
public:
    DirectiveWriter(const Char* format, Char* out) : m_at(format), m_out(out) {}

    // False when there is no such directive.
    bool write() {
        put("%");
        while (isOneOf("-+ #0", current()))
            copy();
        if (!copyNumber())
            return false;
        const Char* const beforePrecision = m_at;
        Char* const outBeforePrecision = m_out;
        if (current() == '.') {
            copy();
            if (!copyNumber())
                return false;
        }
        const bool takesPrecision = m_at != beforePrecision && m_at[-1] == Char('*');
        const Size& size = readSize();
        const char letter = current();
        if (letter != '\0')
            ++m_at;
        if (letter == 'p') {
            if (!takesPrecision) {
                m_out = outBeforePrecision;
                put(".16");
            }
            put("llX");
            return true;
        }
        return writeInteger(size, letter) || writeFloating(size, letter) || writeText(size, letter);
    }

    const Char* end() const { return m_at; }
    Char* outEnd() const { return m_out; }

private:
    char current() const { return plain(*m_at); }
    void copy() { *m_out++ = *m_at++; }
    void put(const char* text) {
        while (*text != '\0')
            *m_out++ = static_cast<Char>(*text++);
    }

    // A number or an asterisk, which may be missing; false for one that is beyond int.
    bool copyNumber() {
        if (current() == '*') {
            copy();
            return true;
        }
        long long number = 0;
        while (isOneOf("0123456789", current())) {
            number = 10 * number + (current() - '0');
            if (number > INT_MAX)
                return false;
            copy();
        }
        return true;
    }

    const Size& readSize() {
        const Size* size = kSizes;
        for (;; ++size) {
            const Char* at = m_at;
            const char* expected = size->windows;
            while (*expected != '\0' && plain(*at) == *expected)
                ++at, ++expected;
            if (*expected == '\0') {
                m_at = at;
                return *size;
            }
        }
    }

    bool writeInteger(const Size& size, char letter) {
        if (!isOneOf("diouxX", letter) || size.here == nullptr)
            return false;
        put(size.here);
        *m_out++ = static_cast<Char>(letter);
        return true;
    }

    bool writeFloating(const Size& size, char letter) {
        if (!isOneOf("aAeEfFgG", letter))
            return false;
        if (*size.windows == 'L')
            put("L");
        *m_out++ = static_cast<Char>(letter);
        return true;
    }

    bool writeText(const Size& size, char letter) {
        if (!isOneOf("csCS", letter) || size.text == Size::Text::kNone)
            return false;
        const bool isOther = isOneOf("CS", letter);
        constexpr bool kIsWideFunction = sizeof(Char) > 1;
        const bool isWide =
            size.text == Size::Text::kDefault ? kIsWideFunction != isOther : size.text == Size::Text::kWide;
        put(isWide ? "l" : "");
        put(isOneOf("cC", letter) ? "c" : "s");
        return true;
    }

    const Char* m_at;
    Char* m_out;
};

// Writes the format to `out`, terminated; false when it has a directive that is none.
template <class Char>
bool translate(const Char* format, Char* out) {
    while (*format != Char()) {
        *out = *format++;
        if (*out != Char('%')) {
            ++out;
        } else if (*format == Char('%')) {
            *++out = *format++;
            ++out;
        } else {
            DirectiveWriter<Char> directive(format, out);
            if (!directive.write())
                return false;
            format = directive.end();
            out = directive.outEnd();
        }
    }
    *out = Char();
    return true;
}

} // namespace

template <class Char>
WindowsFormat<Char>::WindowsFormat(const Char* format) noexcept {
    if (format == nullptr) {
        errno = EINVAL;
        return;
    }
    // "%p", the shortest that grows, grows most: to "%.16llX".
    constexpr std::size_t kGrowth = 4;
    const std::size_t size = kGrowth * std::char_traits<Char>::length(format) + 1;
    Char* room = m_small;
    if (size > kSmallSize) {
        m_large.reset(static_cast<Char*>(std::malloc(size * sizeof(Char))));
        room = m_large.get();
        if (room == nullptr) {
            errno = ENOMEM;
            return;
        }
    }
    if (translate(format, room))
        m_text = room;
    else
        errno = EINVAL;
}

template class WindowsFormat<char>;
template class WindowsFormat<wchar_t>;

} // namespace tq::detail
