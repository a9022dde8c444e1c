#pragma once

namespace tq::platform {

/// Whether the processor has AVX2 and the system keeps its registers. The first call asks, the others remember.
bool hasAvx2() noexcept;

} // namespace tq::platform
