#pragma once

#include <string>

namespace tq::detail {

/// Converts a file name, or a text of the environment, to the bytes that the system is to see, within the bound of the
/// functions here. Returns 0 or an error number; `errno` is left alone.
int systemName(const wchar_t* text, std::string& out) noexcept;

} // namespace tq::detail
