#pragma once

#include "codepage/TextKernels.h"

namespace tq::detail {

extern const TextKernels kPortableKernels;

/// @{
/// Null on processors that have no such registers.
const TextKernels* sse2Kernels() noexcept;
const TextKernels* neonKernels() noexcept;
/// @}

} // namespace tq::detail
