#pragma once

#include <string>

namespace tq::platform {

/// Writes `name` to `out` as the system is to see it: in the encoding of the current locale when that can express the
/// whole name, else as UTF-8, at full length. Returns false, with `out` unspecified, when the name holds a character
/// above U+10FFFF, which no encoding can express. `errno` is left alone. Throws std::bad_alloc.
bool toFileName(const wchar_t* name, std::string& out);

} // namespace tq::platform
