#include "base/CharacterLocale.h"
#include "base/FormattedText.h"
#include "porting/WindowsFormat.h"

#include <TqOsBase/porting/WindowsPrintf.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <memory>
#include <string>

using namespace tq::detail;

namespace {

int fail(int error) {
    errno = error;
    return -1;
}

int formatOnce(char* dst, std::size_t size, const char* format, std::va_list arguments) {
    std::va_list copy;
    va_copy(copy, arguments);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the analyzer does not follow va_copy from a parameter
    const int length = std::vsnprintf(dst, size, format, copy);
    va_end(copy);
    return length;
}

// Both work as vsnprintf does: they write what there is room for and give the whole length, or -1. `arguments` stay
// unread.
int formatInto(char* dst, std::size_t size, const char* format, std::va_list arguments) {
    const WindowsFormat<char> translated(format);
    if (translated.text() == nullptr)
        return -1;
    const int length = formatOnce(dst, size, translated.text(), arguments);
    if (length >= 0 || errno != EILSEQ)
        return length;
    const Utf8Thread utf8;
    return formatOnce(dst, size, translated.text(), arguments);
}

int formatInto(wchar_t* dst, std::size_t size, const wchar_t* format, std::va_list arguments) {
    const WindowsFormat<wchar_t> translated(format);
    if (translated.text() == nullptr)
        return -1;
    const int before = errno;
    errno = 0;
    const FormattedText formatted(translated.text(), arguments);
    if (formatted.length() < 0) // some C libraries do not say that a text is too long, or call it otherwise
        return errno == EILSEQ || errno == ENOMEM ? -1 : fail(EOVERFLOW);
    errno = before;
    if (size != 0) {
        const std::size_t written = std::min(static_cast<std::size_t>(formatted.length()), size - 1);
        std::wmemcpy(dst, formatted.text(), written);
        dst[written] = L'\0';
    }
    return formatted.length();
}

// formatInto() uses the last of `count` characters for the terminator, which does not stand there in Windows: the text
// is formatted again, one character longer, for the character that does.
template <class Char>
int formatBounded(Char* dst, std::size_t count, const Char* format, std::va_list arguments) {
    if (dst == nullptr && count != 0)
        return fail(EINVAL);
    const int length = formatInto(dst, count, format, arguments);
    if (length < 0 && count != 0)
        dst[0] = Char();
    if (length < 0 || dst == nullptr || static_cast<std::size_t>(length) < count)
        return length;
    if (count != 0) {
        const std::unique_ptr<Char, decltype(&std::free)> room(
            static_cast<Char*>(std::malloc((count + 1) * sizeof(Char))), std::free);
        if (room == nullptr) {
            dst[0] = Char();
            return fail(ENOMEM);
        }
        formatInto(room.get(), count + 1, format, arguments);
        dst[count - 1] = room.get()[count - 1];
    }
    return static_cast<std::size_t>(length) == count ? length : -1;
}

template <class Char>
int formatSecure(Char* dst, std::size_t size, std::size_t count, const Char* format, std::va_list arguments) {
    if (dst == nullptr || size == 0) {
        const bool asksNothing = dst == nullptr && size == 0 && count == 0 && format != nullptr;
        return asksNothing ? 0 : fail(EINVAL);
    }
    const std::size_t room = count < size ? count + 1 : size;
    const int length = formatInto(dst, room, format, arguments);
    if (length >= 0 && static_cast<std::size_t>(length) < room)
        return length;
    const bool isCut = length >= 0 && (count < size || count == _TRUNCATE);
    if (!isCut)
        dst[0] = Char();
    return length < 0 || isCut ? -1 : fail(ERANGE);
}

// A count that no text reaches, and that is not _TRUNCATE.
constexpr std::size_t kWholeText = _TRUNCATE - 1;

} // namespace

int tq::windows::_vsnprintf(char* dst, std::size_t count, const char* format, std::va_list arguments) {
    return formatBounded(dst, count, format, arguments);
}

int tq::windows::_snprintf(char* dst, std::size_t count, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = formatBounded(dst, count, format, arguments);
    va_end(arguments);
    return length;
}

int tq::windows::_vsnwprintf(wchar_t* dst, std::size_t count, const wchar_t* format, std::va_list arguments) {
    return formatBounded(dst, count, format, arguments);
}

int tq::windows::_snwprintf(wchar_t* dst, std::size_t count, const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = formatBounded(dst, count, format, arguments);
    va_end(arguments);
    return length;
}

int tq::windows::sprintf_s(char* dst, std::size_t size, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = formatSecure(dst, size, kWholeText, format, arguments);
    va_end(arguments);
    return length;
}

int tq::windows::swprintf_s(wchar_t* dst, std::size_t size, const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = formatSecure(dst, size, kWholeText, format, arguments);
    va_end(arguments);
    return length;
}

int tq::windows::_vsnprintf_s(char* dst, std::size_t size, std::size_t count, const char* format,
                              std::va_list arguments) {
    return formatSecure(dst, size, count, format, arguments);
}

int tq::windows::_snprintf_s(char* dst, std::size_t size, std::size_t count, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = formatSecure(dst, size, count, format, arguments);
    va_end(arguments);
    return length;
}

int tq::windows::_vsnwprintf_s(wchar_t* dst, std::size_t size, std::size_t count, const wchar_t* format,
                               std::va_list arguments) {
    return formatSecure(dst, size, count, format, arguments);
}

int tq::windows::_snwprintf_s(wchar_t* dst, std::size_t size, std::size_t count, const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = formatSecure(dst, size, count, format, arguments);
    va_end(arguments);
    return length;
}

int tq::windows::_scprintf(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = formatInto(static_cast<char*>(nullptr), 0, format, arguments);
    va_end(arguments);
    return length;
}

int tq::windows::_scwprintf(const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = formatInto(static_cast<wchar_t*>(nullptr), 0, format, arguments);
    va_end(arguments);
    return length;
}
