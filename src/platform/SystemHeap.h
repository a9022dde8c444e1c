#pragma once

#include <cstddef>

namespace tq::platform {

/// The usable size of a block of the C library's heap, at least what was asked for; 0 for null.
std::size_t usableSize(void* block) noexcept;

} // namespace tq::platform
