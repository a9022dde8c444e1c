#pragma once

namespace reference {

#if defined(__APPLE__)
/// A locale of this system whose encoding is UTF-8, for all categories.
inline constexpr const char* kUtf8Locale = "en_US.UTF-8";
/// The one that the library makes the process's own, for characters alone.
inline constexpr const char* kUtf8Characters = "UTF-8";
#else
inline constexpr const char* kUtf8Locale = "C.UTF-8";
inline constexpr const char* kUtf8Characters = "C.UTF-8";
#endif

} // namespace reference
