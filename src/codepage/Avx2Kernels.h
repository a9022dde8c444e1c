#pragma once

#include "codepage/TextKernels.h"

namespace tq::detail {

/// To be run only where platform::hasAvx2(). Null on other processors than x86-64.
const TextKernels* avx2Kernels() noexcept;

/// @{
/// Its members for UTF-8.
wchar_t* avx2Utf8ToWide(const char* src, const char* end, wchar_t* out) noexcept;
std::size_t avx2Utf8ToWideSize(const char* src, std::size_t count) noexcept;
TextProgress avx2WideToUtf8(const wchar_t* src, std::size_t limit, char* out, std::size_t room) noexcept;
/// @}

} // namespace tq::detail
