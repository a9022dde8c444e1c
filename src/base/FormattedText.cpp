#include "base/FormattedText.h"

#include "base/CharacterLocale.h"

#include <cerrno>
#include <cwchar>
#include <optional>

namespace tq::detail {

namespace {

// The C library's vswprintf, with a count that does not fit taken for the refusal that it should be.
int formatOnce(wchar_t* room, std::size_t size, const wchar_t* format, std::va_list arguments) noexcept {
    std::va_list copy;
    va_copy(copy, arguments);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the analyzer does not follow va_copy from a parameter
    const int length = std::vswprintf(room, size, format, copy);
    va_end(copy);
    return length >= 0 && static_cast<std::size_t>(length) < size ? length : -1;
}

// The C library of macOS counts the whole text but ends writing at a character 0. So a text with one is formatted
// again, into room where only zeros can be read after it.
int formatInto(wchar_t* room, std::size_t size, const wchar_t* format, std::va_list arguments) noexcept {
    const int length = formatOnce(room, size, format, arguments);
    if (length < 0 || std::wcslen(room) == static_cast<std::size_t>(length))
        return length;
    std::wmemset(room, L'\0', static_cast<std::size_t>(length) + 1);
    return formatOnce(room, size, format, arguments);
}

} // namespace

// The rooms are left as they are: only what has been written there is read.
FormattedText::FormattedText(const wchar_t* format, std::va_list arguments) noexcept : m_length(-1) {
    if (format == nullptr)
        return;
    m_length = formatInto(m_small, kFirstSize, format, arguments);
    // The C libraries of macOS and musl form wide text by way of the locale's encoding, which may not have all of it.
    std::optional<Utf8Thread> utf8;
    if (m_length < 0 && errno == EILSEQ) {
        utf8.emplace();
        m_length = formatInto(m_small, kFirstSize, format, arguments);
    }
    for (std::size_t size = 2 * kFirstSize; m_length < 0 && size <= kLargestSize; size *= 2) {
        m_large.reset(static_cast<wchar_t*>(std::malloc(size * sizeof(wchar_t))));
        if (m_large == nullptr)
            return;
        m_length = formatInto(m_large.get(), size, format, arguments);
    }
}

} // namespace tq::detail
