#pragma once

/// \file
/// Names of files and arguments, UTF-8 to wide text and back.

#include <TqOsBase/Export.h>

#include <string>
#include <string_view>

/// Names of files and folders, arguments of main() and environment texts between UTF-8 and wide text, over the whole of
/// Unicode. (TqCharMapper's conversions are for texts of drawings and stop at U+FFFF.) Neither way replaces or drops
/// anything, so that a name never becomes another's: what has no counterpart is refused. The locale is neither asked
/// nor changed.
namespace tq {

/// The wide form of `utf8`. Throws std::invalid_argument where it is not well-formed UTF-8 (overlong forms, surrogates
/// and values above U+10FFFF included) or holds a 0 byte, which would end the name there; and std::bad_alloc.
TQ_API std::wstring wideName(std::string_view utf8);

/// The UTF-8 form of `name`. Throws std::invalid_argument for a surrogate, a character below 0 or above U+10FFFF, and
/// a character 0; and std::bad_alloc.
TQ_API std::string utf8Name(std::wstring_view name);

} // namespace tq
