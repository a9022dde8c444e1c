#pragma once

#include <string>

namespace tq::detail {

/// Writes `name` to `out` as the system is to see it, at full length and so that no name becomes another's: in the
/// encoding of the current locale where that holds the whole name exactly, else as UTF-8. In the locales "C" and
/// "POSIX" it is UTF-8 always, although a C library may have single bytes for some characters there. Returns false,
/// with `out` unspecified, when the name holds a character above U+10FFFF, which no encoding can express. `errno` and
/// the locale are left alone. Throws std::bad_alloc.
bool toFileName(const wchar_t* name, std::string& out);

/// The same for callers that report by error number: 0, EINVAL for a null name, EILSEQ for one that no encoding can
/// express, ENOMEM.
int fileNameError(const wchar_t* name, std::string& out) noexcept;

/// Both, always as UTF-8, whatever the locale.
bool toUtf8FileName(const wchar_t* name, std::string& out);
int utf8FileNameError(const wchar_t* name, std::string& out) noexcept;

/// The way back, for what the system hands out: read as UTF-8 when all of it is valid there, else in the encoding of
/// the current locale, else as UTF-8 in which a byte that fits no character becomes U+FFFD. `errno` and the locale are
/// left alone. Throws std::bad_alloc.
void fromSystemText(const char* text, std::wstring& out);

} // namespace tq::detail
