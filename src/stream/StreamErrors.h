#pragma once

namespace tq::detail {

// What the layer throws. Each text is one constant, so that a catcher may compare pointers as well as texts. The
// functions are out of line and cold, which keeps the checks that call them short.
inline constexpr const wchar_t* kNoFileName = L"No filename!";
inline constexpr const wchar_t* kFileInternalError = L"File internal error!";
inline constexpr const wchar_t* kWriteFileError = L"Write file error!";
inline constexpr const wchar_t* kOutOfFile = L"Out of file stream buffer!";
inline constexpr const wchar_t* kEndOfFile = L"End of file!";

/// Throws TqException with "Out of stream buffer!".
[[noreturn, gnu::cold]] void throwOutOfStreamBuffer();
/// Throws TqException with "End of stream buffer!".
[[noreturn, gnu::cold]] void throwEndOfStreamBuffer();
/// Throws one of the texts above as a bare pointer.
[[noreturn, gnu::cold]] void throwFileError(const wchar_t* text);

} // namespace tq::detail
