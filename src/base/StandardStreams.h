#pragma once

#include <cstdarg>

namespace tq::detail {

// A C stream takes either narrow or wide text, whichever came first, and drops the other kind. These calls arrive
// whatever was written before.

/// True when wide text can go to standard output as it is: the stream is a wide one already (one that has taken no text
/// yet stays free for the narrow text of the program), and the current locale can express `text`. Throws
/// std::bad_alloc.
bool canPrintWide(const wchar_t* text);

/// printf() to standard output. Once that has become a wide stream the bytes bypass it, in order.
void printNarrow(const char* format, ...);
void vprintNarrow(const char* format, std::va_list arguments);

/// Writes `text` to standard error at once, without any stream.
void writeToStandardError(const char* text) noexcept;

} // namespace tq::detail
