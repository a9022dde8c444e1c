#include "base/CharacterClass.h"

#include <TqOsBase/crtcompat/NumberFunctions.h>

#include <algorithm>
#include <cassert>
#include <charconv>
#include <cstdlib>
#include <cwchar>

using namespace tq;

namespace {

// The longest texts are -9223372036854775808 and 18446744073709551615.
constexpr std::size_t kLongestInteger = 20;

// A number as decimal text, without a terminator.
class Digits {
public:
    template <class Integer>
    explicit Digits(Integer value) : m_end(std::to_chars(m_text, m_text + kLongestInteger, value).ptr) {}

    std::size_t length() const { return static_cast<std::size_t>(m_end - m_text); }

    // Writes the first `count` characters and a terminator; the digits and the sign have the same codes in both types.
    template <class Char>
    Char* write(Char* buf, std::size_t count) const {
        assert(count <= length());
        *std::copy_n(m_text, count, buf) = Char{};
        return buf;
    }
    template <class Char>
    Char* write(Char* buf) const {
        return buf != nullptr ? write(buf, length()) : nullptr;
    }

private:
    char m_text[kLongestInteger];
    char* m_end;
};

// The base that the length of `s` stands for: 0 and 2 to 36 as they are. A text that is longer gives 1, as one of
// length 1 does: no number can be read in that base.
int lengthAsBase(const wchar_t* s) {
    constexpr std::size_t kHighestBase = 36;
    const std::size_t length = std::wcslen(s);
    return length <= kHighestBase ? static_cast<int>(length) : 1;
}

} // namespace

char* _itoa(int value, char* buf, int) {
    return Digits(value).write(buf);
}

char* _ltoa(long value, char* buf, int) {
    return Digits(value).write(buf);
}

char* _i64toa(long long value, char* buf, int) {
    return Digits(value).write(buf);
}

char* _ui64toa(unsigned long long value, char* buf, int) {
    return Digits(value).write(buf);
}

wchar_t* _itow(int value, wchar_t* buf, int) {
    return Digits(value).write(buf);
}

wchar_t* _ltow(long value, wchar_t* buf, int) {
    return Digits(value).write(buf);
}

wchar_t* _i64tow(long long value, wchar_t* buf, int) {
    return Digits(value).write(buf);
}

wchar_t* _ui64tow(long long value, wchar_t* buf, int) {
    return Digits(static_cast<unsigned long long>(value)).write(buf);
}

int _itow_s(int value, wchar_t* buf, std::size_t size, int) {
    if (buf == nullptr || size == 0)
        return -1;
    const Digits digits(value);
    const bool fits = digits.length() < size;
    digits.write(buf, fits ? digits.length() : size - 1);
    return fits ? static_cast<int>(digits.length()) : -1;
}

int _wtoi(const wchar_t* s) {
    if (s == nullptr)
        return 0;
    // Only ASCII counts here, while wcstol() skips whatever the locale takes for white space.
    while (detail::isAscii(*s) && detail::isSpace(*s))
        ++s;
    const bool isSigned = *s == L'-' || *s == L'+';
    return detail::isDigit(s[isSigned ? 1 : 0]) ? static_cast<int>(std::wcstol(s, nullptr, 10)) : 0;
}

long _wtol(const wchar_t* s) {
    const int base = s != nullptr ? lengthAsBase(s) : 1;
    return base == 1 ? 0 : std::wcstol(s, nullptr, base);
}

long long _wtoi64(const wchar_t* s) {
    const int base = s != nullptr ? lengthAsBase(s) : 1;
    return base == 1 ? 0 : static_cast<long long>(std::wcstoull(s, nullptr, base));
}

double _wtof(const wchar_t* s) {
    return s != nullptr ? static_cast<double>(std::wcstof(s, nullptr)) : 0.0;
}
