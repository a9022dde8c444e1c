#pragma once

#include <cstdint>

namespace tq::detail {

/// The LCID that stands for a charset on a system whose default LCID is `systemLcid`. A charset of 239 to 255 stands
/// for the system's own; a charset without a language gives `systemLcid`.
std::uint16_t lcidOfCharSet(int charSet, std::uint16_t systemLcid) noexcept;

} // namespace tq::detail
