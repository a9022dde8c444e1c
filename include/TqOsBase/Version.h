#pragma once

/// \file
/// The version of these headers. The library that a program runs with may be another one: its file name says which
/// (libTqOsBase.so.0.2.0).

/// @{
/// Its parts.
#define TQ_OSBASE_VERSION_MAJOR 0
#define TQ_OSBASE_VERSION_MINOR 2
#define TQ_OSBASE_VERSION_PATCH 0
/// @}
/// For comparisons: 10000 * major + 100 * minor + patch.
#define TQ_OSBASE_VERSION (10000 * TQ_OSBASE_VERSION_MAJOR + 100 * TQ_OSBASE_VERSION_MINOR + TQ_OSBASE_VERSION_PATCH)

namespace tq {

/// "major.minor.patch".
inline constexpr char kVersion[] = "0.2.0";
static_assert(kVersion[0] == '0' + TQ_OSBASE_VERSION_MAJOR && kVersion[2] == '0' + TQ_OSBASE_VERSION_MINOR &&
              kVersion[4] == '0' + TQ_OSBASE_VERSION_PATCH);

} // namespace tq
