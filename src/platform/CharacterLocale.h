#pragma once

namespace tq::platform {

/// Makes UTF-8 the encoding of the process's C locale (its character category alone), unless it is so already. On a
/// system without such a locale nothing changes.
void useUtf8Characters() noexcept;

} // namespace tq::platform
