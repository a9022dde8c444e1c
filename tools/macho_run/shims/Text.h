#pragma once

#include <cstdarg>
#include <cstddef>

namespace macho {

/// macOS's vswprintf: it formats multibyte text and converts that, so that a character without a form in the locale is
/// an error, and of a text with a zero only what comes before it is written, while the count is that of all.
int formatWide(wchar_t* out, std::size_t size, const wchar_t* format, std::va_list arguments);

} // namespace macho
