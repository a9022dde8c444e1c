#pragma once

#include "codepage/TextKernels.h"

namespace tq::detail {

/// To be run only where platform::hasAvx2(). Null on other processors than x86-64.
const TextKernels* avx2Kernels() noexcept;

} // namespace tq::detail
