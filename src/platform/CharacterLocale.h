#pragma once

namespace tq::platform {

/// Makes UTF-8 the encoding of the process's C locale (its character category alone), unless it is so already. On a
/// system without such a locale nothing changes. `errno` is left alone.
void useUtf8Characters() noexcept;

/// True when the process's C locale (its character category) is "C" or "POSIX".
bool isPlainLocale() noexcept;

} // namespace tq::platform
