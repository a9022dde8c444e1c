#pragma once

#include <string>

namespace tq::platform {

/// Writes `name` to `out` as the system is to see it: in the encoding of the current locale when that can express the
/// whole name, else as UTF-8, at full length. Returns false, with `out` unspecified, when the name holds a character
/// above U+10FFFF, which no encoding can express. `errno` is left alone. Throws std::bad_alloc.
bool toFileName(const wchar_t* name, std::string& out);

/// The same for callers that report by error number: 0, EINVAL for a null name, EILSEQ for one that no encoding can
/// express, ENOMEM.
int fileNameError(const wchar_t* name, std::string& out) noexcept;

/// The same always as UTF-8, whatever the locale.
bool toUtf8FileName(const wchar_t* name, std::string& out);

/// The way back, for what the system hands out: read in the encoding of the current locale when all of it is valid
/// there, else as UTF-8, where a byte that fits no character becomes U+FFFD. `errno` is left alone. Throws
/// std::bad_alloc.
void fromSystemText(const char* text, std::wstring& out);

} // namespace tq::platform
