#pragma once

#include <TqOsBase/containers/TqVector.h>

#include <string>
#include <string_view>

/// Decodes escaped drawing text for one line of a terminal: control characters and lone surrogates become U+FFFD.
std::wstring decodeDrawingText(std::string_view escaped);

/// Terminal columns: 2 for East Asian wide characters, 0 for combining ones.
int displayWidth(std::wstring_view text);

/// Appends `text` to `line` and blanks up to `columns`; a longer text is cut, with an ellipsis at its end.
void appendPadded(std::wstring& line, std::wstring_view text, int columns);

/// `text` in UTF-8, after what `out` holds.
void appendUtf8(std::string& out, const std::wstring& text);
