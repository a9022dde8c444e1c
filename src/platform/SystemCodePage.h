#pragma once

namespace tq::platform {

/// The system's ANSI code page. These systems have none, which the callers expect to be told as 0.
inline constexpr unsigned kSystemAnsiCodePage = 0;

} // namespace tq::platform
