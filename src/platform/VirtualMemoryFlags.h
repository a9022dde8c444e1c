#pragma once

#include "platform/VirtualMemory.h"

#include <span>

// What the systems name or do differently in mapping memory.
namespace tq::platform {

/// Flag that keeps a mapping at a given address from replacing what is there; 0 where an address without the fixed flag
/// is a hint, which the system follows when the range is free.
int noReplaceFlag() noexcept;

/// The advice that gives the memory of private pages back.
int giveBackAdvice() noexcept;

/// Gives the memory of all the runs back in one step of the system; false when it has none, or did not do all of it.
bool giveBackAtOnce(std::span<const PageRun> runs) noexcept;

/// What mincore writes for each page.
#if defined(__APPLE__)
using ResidenceByte = char;
#else
using ResidenceByte = unsigned char;
#endif

} // namespace tq::platform
