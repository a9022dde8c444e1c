#pragma once

#include <string>

namespace tq::detail {

/// `text` in the encoding of the current C locale: true when converting `out` back gives the same text. A C library may
/// drop characters that it cannot express, or write one of another language for them, without saying so. The locales
/// "C" and "POSIX" express ASCII alone, although some systems have single bytes for more. `errno` is left alone. Throws
/// std::bad_alloc.
bool toLocaleText(const wchar_t* text, std::string& out);

/// The way back: true when all of `text` is valid in that encoding.
bool fromLocaleText(const char* text, std::wstring& out);

} // namespace tq::detail
