#pragma once

namespace tq::detail {

/// Says on standard error that `function` was called, so that a porter finds the call, and ends the process through
/// std::terminate.
[[noreturn, gnu::cold]] void endProcess(const char* function) noexcept;

} // namespace tq::detail
