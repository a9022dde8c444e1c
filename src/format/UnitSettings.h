#pragma once

#include <TqOsBase/format/LumoAppUnitSets.h>

/// The process-wide unit settings, set by initOsBaseUnits.
extern LumoAppUnitSets g_appUnits;

namespace tq::detail {

/// Whether the dash bit of the settings is in force under the Q mode flags.
bool isDashBitSet(int flags);

} // namespace tq::detail
