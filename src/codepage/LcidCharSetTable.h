#pragma once

#include <cstdint>
#include <optional>

namespace tq::detail {

/// The Windows font charset of a language, or nothing for an LCID that is not in the table of 160.
std::optional<int> charSetOfLcid(std::uint32_t lcid) noexcept;

} // namespace tq::detail
