#include "platform/FormattedText.h"

#include <cwchar>

namespace tq::platform {

namespace {

int formatInto(wchar_t* room, std::size_t size, const wchar_t* format, std::va_list arguments) noexcept {
    std::va_list copy;
    va_copy(copy, arguments);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the analyzer does not follow va_copy from a parameter
    const int length = std::vswprintf(room, size, format, copy);
    va_end(copy);
    return length;
}

} // namespace

// The small room is left as it is: only what vswprintf writes there is read.
FormattedText::FormattedText(const wchar_t* format, std::va_list arguments) noexcept : m_length(-1) {
    if (format == nullptr)
        return;
    m_length = formatInto(m_small, kFirstSize, format, arguments);
    for (std::size_t size = 2 * kFirstSize; m_length < 0 && size < kSizeLimit; size *= 2) {
        m_large.reset(static_cast<wchar_t*>(std::malloc(size * sizeof(wchar_t))));
        if (m_large == nullptr)
            return;
        m_length = formatInto(m_large.get(), size, format, arguments);
    }
}

} // namespace tq::platform
