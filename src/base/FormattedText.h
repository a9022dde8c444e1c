#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdlib>
#include <memory>

namespace tq::detail {

/// Wide text that the C library's vswprintf has formatted, in memory of its own. vswprintf cannot say how much room it
/// would need, so rooms of growing size are tried.
class FormattedText {
public:
    /// Works on copies of `arguments`, which stay unread. A null format cannot be formatted.
    FormattedText(const wchar_t* format, std::va_list arguments) noexcept;
    FormattedText(const FormattedText&) = delete;
    FormattedText& operator=(const FormattedText&) = delete;

    /// Characters without the terminator; -1 when there is no text: the C library refused, the text and its terminator
    /// need more than 524,288 characters, or there is no memory.
    int length() const noexcept { return m_length; }
    /// length() characters and a terminator. After a character 0 among them the C library of macOS leaves zeros for the
    /// rest.
    const wchar_t* text() const noexcept { return m_large != nullptr ? m_large.get() : m_small; }

private:
    struct Free {
        void operator()(wchar_t* room) const noexcept { std::free(room); }
    };
    static constexpr std::size_t kFirstSize = 1024;
    static constexpr std::size_t kLargestSize = 524'288; // characters, with the terminator

    wchar_t m_small[kFirstSize];
    std::unique_ptr<wchar_t, Free> m_large;
    int m_length;
};

} // namespace tq::detail
