#include <TqOsBase/porting/WindowsCopy.h>

#include <algorithm>
#include <cerrno>
#include <string>

namespace {

int fail(int error) {
    errno = error;
    return error;
}

// The characters of `text` before its terminator, but no more than `most`, and no character after those is read.
template <class Char>
std::size_t lengthUpTo(const Char* text, std::size_t most) {
    std::size_t length = 0;
    while (length < most && text[length] != Char())
        ++length;
    return length;
}

// Puts the first `count` characters of `src` after the `length` that stay in `dst`. A copy appends to nothing.
template <class Char>
int put(Char* dst, std::size_t length, std::size_t size, const Char* src, std::size_t count) {
    const std::size_t room = size - length - 1;
    const std::size_t wanted = lengthUpTo(src, std::min(count, room + 1));
    const bool fits = wanted <= room;
    if (!fits && count != _TRUNCATE) {
        dst[0] = Char();
        return fail(ERANGE);
    }
    std::char_traits<Char>::copy(dst + length, src, std::min(wanted, room));
    dst[length + std::min(wanted, room)] = Char();
    return fits ? 0 : STRUNCATE;
}

template <class Char>
int append(Char* dst, std::size_t size, const Char* src, std::size_t count) {
    if (dst == nullptr)
        return fail(EINVAL);
    if (size == 0)
        return fail(src == nullptr ? EINVAL : ERANGE);
    const std::size_t length = lengthUpTo(dst, size);
    if (src == nullptr || length == size) {
        dst[0] = Char();
        return fail(EINVAL);
    }
    return put(dst, length, size, src, count);
}

template <class Char>
Char* nextToken(Char* text, const Char* delimiters, Char** context) {
    if (delimiters == nullptr || context == nullptr || (text == nullptr && *context == nullptr)) {
        errno = EINVAL;
        return nullptr;
    }
    const auto isDelimiter = [&](Char c) {
        return std::char_traits<Char>::find(delimiters, std::char_traits<Char>::length(delimiters), c) != nullptr;
    };
    Char* begin = text != nullptr ? text : *context;
    while (*begin != Char() && isDelimiter(*begin))
        ++begin;
    Char* end = begin;
    while (*end != Char() && !isDelimiter(*end))
        ++end;
    *context = *end != Char() ? end + 1 : end;
    *end = Char();
    return begin != end ? begin : nullptr;
}

// Longer than any text, and not _TRUNCATE.
constexpr std::size_t kWholeText = _TRUNCATE - 1;

} // namespace

int tq::windows::strcpy_s(char* dst, std::size_t size, const char* src) {
    if (dst != nullptr && size != 0)
        return strncpy_s(dst, size, src, kWholeText);
    return fail(dst == nullptr || src == nullptr ? EINVAL : ERANGE);
}

int tq::windows::strncpy_s(char* dst, std::size_t size, const char* src, std::size_t count) {
    if (dst == nullptr || size == 0)
        return fail(EINVAL);
    dst[0] = '\0';
    return append(dst, size, src, count);
}

int tq::windows::strcat_s(char* dst, std::size_t size, const char* src) {
    return append(dst, size, src, kWholeText);
}

int tq::windows::wcscat_s(wchar_t* dst, std::size_t size, const wchar_t* src) {
    return append(dst, size, src, kWholeText);
}

int tq::windows::strncat_s(char* dst, std::size_t size, const char* src, std::size_t count) {
    return append(dst, size, src, count);
}

int tq::windows::wcsncat_s(wchar_t* dst, std::size_t size, const wchar_t* src, std::size_t count) {
    return append(dst, size, src, count);
}

char* tq::windows::strtok_s(char* text, const char* delimiters, char** context) {
    return nextToken(text, delimiters, context);
}

wchar_t* tq::windows::wcstok_s(wchar_t* text, const wchar_t* delimiters, wchar_t** context) {
    return nextToken(text, delimiters, context);
}
